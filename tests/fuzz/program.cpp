#include "tests/fuzz/program.h"

#include <cstdlib>
#include <fstream>
#include <system_error>
#include <vector>

#include "app/services/text.h"
#include "boards/board_data.h"
#include "firmware/entry.h"
#include "firmware/host/argument_list.h"
#include "tests/fuzz/hostile_bmc.h"
#include "tests/support/board_machine.h"
#include "tests/support/host_files.h"
#include "tests/support/smbios_builder.h"
#include "tests/support/split.h"

namespace varnok::fuzz {
namespace {

namespace fs = std::filesystem;

/// The default board, made once.
struct DefaultBoard {
  DefaultBoard() {
    std::string error;
    if (!sim::Board::CreateDefault(root.Path() / "default", error)) std::abort();
  }
  testing::TemporaryFolder root;
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
    if (memory.empty()) return BoardMachine::PhysicalMemory(address, length);
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the input's table, not the board's
    return TestFirmware::PhysicalMemory(address, length);
  }
  /// The keys of the input, then ones that answer every question in the end: a menu's first item, a chassis
  /// type, an empty field, each with a yes.
  char16_t ReadKey() override {
    if (keys.empty()) keys = u"1\ry\r11\ry\r\ryy\r";
    return BoardMachine::ReadKey();
  }
};

void Write(const fs::path& path, std::string_view content) {
  std::ofstream(path, std::ios::binary) << content;
}

void ChangeBoard(const ProgramInput& input, const fs::path& folder) {
  if (std::string image = input.image; !image.empty()) {
    image.resize(fs::file_size(folder / "board.bin"), '\xFF');
    Write(folder / "board.bin", image);
  }
  if (const std::string& dump = input.repository; !dump.empty()) {
    std::vector<boards::Bytes> records;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(dump.data());
    const std::size_t rest = boards::SplitRecords({bytes, dump.size()}, records).size();
    Write(folder / "sdr.bin", std::string_view(dump).substr(0, dump.size() - rest));
  }
  if (!input.description.empty()) Write(folder / "board.json", input.description);
}

}  // namespace

fs::path FreshBoard() {
  static DefaultBoard made;
  fs::path folder = made.root.Path() / "board";
  // The fuzzer's clock interrupts a copy now and then.
  std::error_code error;
  do {
    fs::remove_all(folder);
    fs::copy(made.root.Path() / "default", folder, error);
  } while (error == std::errc::interrupted);
  if (error) throw fs::filesystem_error("the board of a run", folder, error);
  return folder;
}

void Run(const ProgramInput& input) {
  const fs::path folder = FreshBoard();
  ChangeBoard(input, folder);
  std::string error;
  std::unique_ptr<sim::Board> board = sim::Board::Open(folder, error);
  if (board == nullptr) return;
  FuzzMachine machine;
  machine.Install(std::move(board));
  HostileBmc bmc(*machine.protocol, input.answers);
  machine.protocol = &bmc;
  testing::SmbiosBuilder table;
  if (const std::string& bytes = input.smbios; !bytes.empty()) {
    table.table.assign(bytes.begin(), bytes.end());
    table.length = static_cast<std::uint16_t>(bytes.size());
    table.count = 0xFFFF;
    table.Install(machine);
  }
  machine.fileText = input.file;
  machine.keys = Widen(input.keys);

  host::ArgumentList arguments(testing::Split("VARNOK " + input.commandLine, " "));
  Main(arguments.Count(), arguments.Pointers());
}

}  // namespace varnok::fuzz
