// varnok-board show: what a board, an image or a dump says, by the standards.
#include "boards/fru_image.h"
#include "boards/sdr_record.h"
#include "boards/show_text.h"
#include "boards/smbios_tables.h"
#include "boards/source.h"
#include "programs/board/command.h"
#include "programs/board/decoded_json.h"
#include "programs/board/output.h"

namespace varnok::companion {
namespace {

constexpr Option kShowOptions[] = {
    {"BOARD", "",
     "A board folder, one device of it (FOLDER#0, FOLDER#2@C0), a FRU image, an SDR or SMBIOS dump",
     Option::Required},
    {"--as", "KIND", "Read a file as fru, sdr or smbios, whatever its content looks like"},
    {"--details", "", "Every field of every record, and the layout of FRU areas"},
    {"--hex", "", "The bytes of FRU devices, with the areas marked"},
    {"--json", "", "Everything as JSON"},
};

/// The whole as JSON; `findings` counts what is wrong.
Json AsJson(const boards::Source& source, std::size_t& findings) {
  const boards::Board& board = source.board;
  Json root = Json::Object();
  root.Set("version", 1).Set("name", source.name);
  Json controllers = Json::Array();
  if (board.bmc.identity) controllers.Add(ControllerJson(board.bmc));
  for (const boards::Controller& controller : board.controllers) controllers.Add(ControllerJson(controller));
  Json devices = Json::Array();
  for (const boards::Device& device : board.devices) {
    const boards::Decoded decoded = boards::DecodeFru(device.bytes);
    const bool isErased = boards::IsFill(device.bytes);
    findings += isErased ? 0 : decoded.problems.size();
    Json json = Json::Object();
    json.Set("id", boards::NameOf(device.address)).Set("size", device.bytes.size()).Set("file", device.file);
    json.Set("erased", isErased);
    json.Set("areas", isErased ? Json::Array() : SectionsJson(decoded));
    json.Set("problems", isErased ? Json::Array() : ProblemsJson(decoded));
    devices.Add(json);
  }
  Json records = Json::Array();
  for (const boards::Bytes& record : board.records) {
    const boards::Decoded decoded = boards::DecodeSdr(record);
    findings += decoded.problems.size();
    records.Add(RecordJson(record, decoded));
  }
  root.Set("controllers", controllers).Set("devices", devices).Set("records", records);
  if (!source.rest.empty()) {
    root.Set("bytesBehindRecords", source.rest.size());
    ++findings;
  }
  if (board.smbios.empty()) return root;
  const boards::Decoded smbios = boards::DecodeSmbios(board.smbios);
  findings += smbios.problems.size();
  return root.Set("smbios", SectionsJson(smbios)).Set("smbiosProblems", ProblemsJson(smbios));
}

int RunShow(const Arguments& arguments) {
  std::optional<boards::SourceKind> kind;
  if (arguments.Has("--as")) {
    kind = boards::KindByWord(arguments.Value("--as"));
    if (!kind) return Fail("--as: \"" + arguments.Value("--as") + "\" is not fru, sdr or smbios", kWrongUse);
  }
  boards::Source source;
  std::string error;
  if (!boards::LoadSource(arguments.Value("BOARD"), kind, source, error)) return Fail(error);
  std::size_t findings = 0;
  if (arguments.Has("--json")) {
    PrintLine(AsJson(source, findings).Text());
  } else {
    const boards::ShowOptions options{arguments.Has("--details"), arguments.Has("--hex")};
    for (const std::string& line : boards::ShowSource(source, options, findings)) PrintLine(line);
  }
  return findings == 0 ? kDone : kFound;
}

}  // namespace

const Command kShow = {"show", "Show what a board, an image or a dump says, and what is wrong with it",
                       kShowOptions, "  varnok-board show myboard\n  varnok-board show board.bin --hex",
                       RunShow};

}  // namespace varnok::companion
