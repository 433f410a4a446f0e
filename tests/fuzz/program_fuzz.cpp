// The whole program over hostile input, for libFuzzer: a command line, the file that it names, a BMC that
// lies, an FRU image, a broken SMBIOS table, keys. The input is six parts with a byte 1Eh between them, any
// of which may be missing:
//
//   command line, split at blanks | file | one byte a BMC answer, see HostileBmc | system board's FRU image
//   | SMBIOS table | keys
//
// A file of the samples keeps its content, any other name that is read has the second part. What counts as a
// fault is what the sanitizers find, and a run that does not end.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "app/services/text.h"
#include "firmware/entry.h"
#include "platform/ipmi.h"
#include "tests/support/board_machine.h"
#include "tests/support/host_files.h"
#include "tests/support/smbios_builder.h"
#include "tests/support/split.h"

namespace {

using namespace varnok;
namespace fs = std::filesystem;

constexpr std::string_view kSeparator = "\x1E";
enum Part : std::size_t { CommandLine, FileText, Answers, FruImage, SmbiosTable, Keys, PartCount };

/// The default board, made once; each run works on a copy. Kept in memory where there is room for that.
struct Folders {
  Folders() {
    std::string error;
    if (!sim::Board::CreateDefault(root.Path() / "default", error)) std::abort();
  }

  testing::TemporaryFolder root{fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path()};
};

/// A simulated BMC whose answers are changed on their way: byte b of the script stands for the next answer.
/// Below 80h: as it is. 80h to 9Fh: completion code C0h + (b & 1Fh). A0h to BFh: cut to b & 1Fh bytes. C0h to
/// DFh: as many bytes more. E0h to EFh: byte b & 0Fh is turned over. F0h to FFh: no answer. Behind the script
/// the BMC is honest.
class HostileBmc : public IpmiProtocol {
 public:
  HostileBmc(IpmiProtocol& honest, std::string script) : honest_(honest), script_(std::move(script)) {
    revision = kIpmiProtocolRevision;
    Send = [](IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
              const std::uint8_t* data, std::uint32_t length) {
      IpmiProtocol& next = static_cast<HostileBmc*>(self)->honest_;
      return next.Send(&next, netFunction, lun, command, data, length);
    };
    Receive = [](IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun, std::uint8_t* command,
                 std::uint8_t* completionCode, std::uint8_t* data, std::uint32_t* length) {
      return static_cast<HostileBmc*>(self)->Answer(netFunction, lun, command, completionCode, data, length);
    };
  }

 private:
  Status Answer(std::uint8_t* netFunction, std::uint8_t* lun, std::uint8_t* command,
                std::uint8_t* completionCode, std::uint8_t* data, std::uint32_t* length) {
    std::uint32_t room = *length;
    Status status = honest_.Receive(&honest_, netFunction, lun, command, completionCode, data, length);
    if (status != kSuccess || answered_ >= script_.size()) return status;
    auto change = static_cast<std::uint8_t>(script_[answered_++]);
    std::uint32_t number = change & 0x1F;
    switch (change >> 5) {
      case 4:
        *completionCode = static_cast<std::uint8_t>(0xC0 + number);
        break;
      case 5:
        *length = std::min(*length, number);
        break;
      case 6:
        std::fill(data + std::min(*length, room), data + std::min(*length + number, room), change);
        *length = std::min(*length + number, room);
        break;
      case 7:
        if (number > 15) return uefi_status::kTimeout;
        if (number < *length) data[number] = static_cast<std::uint8_t>(~data[number]);
        break;
      default:
        break;
    }
    return kSuccess;
  }

  IpmiProtocol& honest_;
  std::string script_;
  std::size_t answered_ = 0;
};

class FuzzMachine : public testing::BoardMachine {
 public:
  std::string fileText;

  Status OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) override {
    std::string name = Narrow(path);
    if (mode == FileMode::Read && !files.contains(name)) {
      fs::path sample = fs::path(VARNOK_SAMPLES) / name.substr(name.find_last_of("\\/") + 1);
      std::error_code error;
      files[name] = fs::is_regular_file(sample, error) ? testing::ContentOf(sample) : fileText;
    }
    return BoardMachine::OpenFile(path, mode, file);
  }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t address, std::size_t length) override {
    return memory.empty()
               ? BoardMachine::PhysicalMemory(address, length)
               : TestFirmware::PhysicalMemory(address, length);  // NOLINT(bugprone-parent-virtual-call)
  }
  /// The keys of the input, then ones that answer every question in the end: a menu's first item, a chassis
  /// type, an empty field, each with a yes.
  char16_t ReadKey() override {
    if (keys.empty()) keys = u"1\ry\r11\ry\r\ryy\r";
    return BoardMachine::ReadKey();
  }
};

void Run(const std::vector<std::string>& parts, const fs::path& folder) {
  if (std::string image = parts[FruImage]; !image.empty()) {
    image.resize(fs::file_size(folder / "board.bin"), '\xFF');
    std::ofstream(folder / "board.bin", std::ios::binary) << image;
  }
  FuzzMachine machine;
  std::string error;
  machine.Install(sim::Board::Open(folder, error));
  HostileBmc bmc(*machine.protocol, parts[Answers]);
  machine.protocol = &bmc;
  testing::SmbiosBuilder table;
  if (const std::string& bytes = parts[SmbiosTable]; !bytes.empty()) {
    table.table.assign(bytes.begin(), bytes.end());
    table.length = static_cast<std::uint16_t>(bytes.size());
    table.count = 0xFFFF;
    table.Install(machine);
  }
  machine.fileText = parts[FileText];
  machine.keys = Widen(parts[Keys]);

  std::vector<std::string> arguments = testing::Split("VARNOK " + parts[CommandLine], " ");
  std::vector<char*> vector;
  vector.reserve(arguments.size());
  for (std::string& argument : arguments) vector.push_back(argument.data());
  vector.push_back(nullptr);
  Main(static_cast<int>(arguments.size()), vector.data());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Folders folders;
  std::vector<std::string> parts = testing::Split({reinterpret_cast<const char*>(data), size}, kSeparator);
  parts.resize(PartCount);
  fs::path folder = folders.root.Path() / "board";
  fs::remove_all(folder);
  fs::copy(folders.root.Path() / "default", folder);
  Run(parts, folder);
  return 0;
}
