// varnok-board fru-text and sdr-text: load files that program what a board holds.
#include "boards/load_text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "boards/source.h"
#include "programs/board/command.h"
#include "programs/board/output.h"

namespace varnok::companion {
namespace {

constexpr Option kFruOptions[] = {
    {"IMAGE", "", "A FRU image, or a device of a board folder: FOLDER#0, FOLDER#2@C0", Option::Required},
    {"--device", "NAME",
     "The device that an image's file programs: 0, 2@C0, AT24C02:03:A0 (0 when not given)"},
    {"--output", "FILE", "Write the load file there, not to the standard output"},
};
constexpr Option kSdrOptions[] = {
    {"DUMP", "", "An SDR dump, or a board folder", Option::Required},
    {"--output", "FILE", "Write the load file there, not to the standard output"},
};

std::string BaseName(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path.substr(path.rfind('/') + 1);
}

/// Gives the file away and says what it does not hold.
int Finish(const Arguments& arguments, const std::string& source, const boards::LoadText& made) {
  for (const std::string& remark : made.remarks) Note(source + ": " + remark);
  for (const std::string& loss : made.losses) Note(source + ": not in the load file: " + loss);
  if (made.text.empty()) return Fail(source + ": no load file can be made of it");
  const std::string output = arguments.Value("--output");
  if (output.empty()) {
    std::fwrite(made.text.data(), 1, made.text.size(), stdout);
  } else {
    errno = 0;
    std::ofstream file(output, std::ios::binary);
    file << made.text;
    file.close();
    if (!file)
      return Fail(output + ": cannot be written" +
                  (errno == 0 ? "" : ": " + std::string(std::strerror(errno))));
  }
  return made.losses.empty() ? kDone : kFound;
}

int RunFru(const Arguments& arguments) {
  const std::string argument = arguments.Value("IMAGE");
  boards::Source source;
  std::string error;
  if (!boards::LoadSource(argument, boards::SourceKind::FruImage, source, error)) return Fail(error);
  if (!source.IsOneDevice() && source.board.devices.size() != 1)
    return Fail(argument + ": name one device of the folder, such as " + argument + "#0", kWrongUse);
  boards::Device& device = source.board.devices.front();
  if (arguments.Has("--device")) {
    const auto address = boards::ParseDeviceName(arguments.Value("--device"));
    if (!address) return Fail("--device: \"" + arguments.Value("--device") + "\" names no device", kWrongUse);
    device.address = *address;
  }
  return Finish(arguments, argument, boards::FruLoadText(device.bytes, device.address, BaseName(argument)));
}

int RunSdr(const Arguments& arguments) {
  const std::string argument = arguments.Value("DUMP");
  boards::Source source;
  std::string error;
  if (!boards::LoadSource(argument, boards::SourceKind::SdrDump, source, error)) return Fail(error);
  if (!source.board.hasRepository) return Fail(argument + ": the board has no SDR repository");
  return Finish(arguments, argument,
                boards::SdrLoadText(source.board.records, source.rest, BaseName(argument)));
}

}  // namespace

const Command kFruText = {"fru-text", "Make a FRU file that programs what a FRU device holds", kFruOptions,
                          "  varnok-board fru-text board.bin --output board.fru", RunFru};
const Command kSdrText = {"sdr-text", "Make an SDR file that programs what an SDR repository holds",
                          kSdrOptions, "  varnok-board sdr-text sdr.bin --output board.sdr", RunSdr};

}  // namespace varnok::companion
