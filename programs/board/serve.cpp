// varnok-board serve: the simulated board as the BMC of a virtual machine.
#include <signal.h>
#include <sys/signalfd.h>

#include <fstream>
#include <memory>
#include <optional>

#include "firmware/bytes.h"
#include "firmware/smbios_layout.h"
#include "programs/board/command.h"
#include "programs/board/output.h"
#include "sim/board_server.h"
#include "sim/board_source.h"

namespace varnok::companion {
namespace {

constexpr Option kServeOptions[] = {
    {"FOLDER", "", "The board; the one that varnok uses when none is named"},
    {"--listen", "ADDRESS:PORT", "Where to listen, such as 127.0.0.1:9002; port 0 takes a free one",
     Option::Required},
    {"--smbios", "FOLDER",
     "Write the board's SMBIOS structures there, one file each, for QEMU's -smbios file="},
    {"--allow-remote", "",
     "Take an address that other computers reach: there is no authentication, whoever connects "
     "can write to the board"},
};

/// The board in `folder`, or for an empty one that which the environment names.
std::unique_ptr<sim::Board> Open(const std::string& folder, std::string& error) {
  std::string notice;
  auto environment = [&folder](const char* name) {
    if (!folder.empty() && std::string_view(name) == "VARNOK_BOARD")
      return std::optional<std::string>(folder);
    return sim::ProcessEnvironment(name);
  };
  auto board = sim::OpenBoard(environment, notice, error);
  if (!notice.empty()) Note(notice);
  return board;
}

/// All structures but those that a virtual machine makes itself: where its own BMC is, and the end.
bool WriteSmbios(sim::Board& board, const std::string& folder, std::string& error) {
  constexpr std::uint8_t kIpmiDevice = 38;
  const auto entryPoint = board.SmbiosEntryPoint();
  auto table = board.PhysicalMemory(DwordAt(entryPoint, 24), WordAt(entryPoint, 22));
  std::size_t size = 0;
  for (int number = 100; (size = smbios::StructureSize(table)) != 0; ++number) {
    const std::uint8_t type = table[0];
    if (type == smbios::kEndOfTable) break;
    const auto structure = table.first(size);
    table = table.subspan(size);
    if (type == kIpmiDevice) continue;
    const std::string name = folder + "/" + std::to_string(number) + "-type" + std::to_string(type) + ".bin";
    std::ofstream file(name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(structure.data()), static_cast<std::streamsize>(size));
    if (!file.flush()) return error = name + ": cannot be written", false;
  }
  return true;
}

int RunServe(const Arguments& arguments) {
  // Blocked from the start, so that a signal at any time ends the program in good order.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  sim::Descriptor stop(signalfd(-1, &signals, SFD_CLOEXEC));
  if (!stop.IsOpen()) return Fail("no signal descriptor can be had");

  std::string error;
  std::unique_ptr<sim::Board> board = Open(arguments.Value("FOLDER"), error);
  if (board == nullptr) return Fail(error);
  if (arguments.Has("--smbios") && !WriteSmbios(*board, arguments.Value("--smbios"), error))
    return Fail(error);
  sim::BoardServer server(*board);
  if (!server.Listen(arguments.Value("--listen"), error, arguments.Has("--allow-remote"))) return Fail(error);
  PrintLine("Serving " + board->Images().Folder().string() + " on " + server.Address());
  std::fflush(stdout);
  server.Run(stop.Number());
  return kDone;
}

}  // namespace

const Command kServe = {"serve", "Answer a virtual machine as the BMC of a board", kServeOptions,
                        "  varnok-board serve myboard --listen 127.0.0.1:9002", RunServe};

}  // namespace varnok::companion
