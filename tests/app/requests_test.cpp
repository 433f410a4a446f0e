// How many requests each run mode and each step of a script sends, and that the time of a run is theirs.
#include <gtest/gtest.h>

#include "tests/app/arguments.h"
#include "tests/support/board_machine.h"
#include "tests/support/host_files.h"

namespace varnok::testing {
namespace {

int Pieces(int bytes, int most) {
  return (bytes + most - 1) / most;
}

/// A FRU by the lengths of its parts, moved 8 bytes a request.
struct Fru {
  int internal;
  std::vector<int> areas, records;

  /// The header; of an area its two first bytes, of a record its three first, and then the whole.
  int Read() const {
    int requests = 1 + Pieces(internal, 8);
    for (int length : areas) requests += 1 + Pieces(length, 8);
    for (int length : records) requests += 1 + Pieces(5 + length, 8);
    return requests;
  }
  /// The five bytes before a record's data go one by one; then everything is read back.
  int Program() const {
    int requests = 1 + Pieces(internal, 8);
    for (int length : areas) requests += Pieces(length, 8);
    for (int length : records) requests += 5 + Pieces(length, 8);
    return requests + Read();
  }
};

/// Repository Info; of a record the reservation, its five first bytes, and the rest 16 bytes a request.
int ReadSdrs(std::span<const int> lengths) {
  int requests = 1;
  for (int length : lengths) requests += 2 + Pieces(length - 5, 16);
  return requests;
}
/// Info at the loading; the erasure; of a record the reservation and 16 bytes a request; Info; the read-back.
int ProgramSdrs(std::span<const int> lengths, int erasure) {
  int requests = 1 + erasure + 1;
  for (int length : lengths) requests += 1 + Pieces(length, 16);
  return requests + ReadSdrs(lengths);
}

/// The lengths of records that stand one behind the other.
std::vector<int> Lengths(const std::string& records) {
  std::vector<int> lengths;
  for (std::size_t at = 0; at + 5 <= records.size(); at += lengths.back())
    lengths.push_back(5 + static_cast<unsigned char>(records[at + 4]));
  return lengths;
}

TEST(Requests, AreThoseOfTheWorkAndTakeItsTimeAlone) {
  const Fru board{16, {64, 128, 112}, {13, 32}}, boardFile{16, {64, 128, 112}, {13, 23}}, riser{0, {64}, {}},
      riserBefore{0, {80, 280}, {}};
  const int start = 4;  // Clear Message Flags; Get Device ID for the type, the version and the transfer mode
  const int erasure = 3;  // Reserve, Clear, and one question after a second
  const int tries = 11;   // of a request that the BMC refuses
  const int second = 1'000'000, exchange = 1'000, lost = 4 * 5'000;  // microseconds
  // Those without tags.
  const std::vector<int> fileRecords{58, 43, 29, 16, 28, 19, 14};
  TemporaryFolder folder;
  std::string error;
  ASSERT_TRUE(sim::Board::CreateDefault(folder.Path() / "board", error)) << error;
  const std::vector<int> boardRecords = Lengths(ContentOf(folder.Path() / "board/sdr.bin"));

  struct Row {
    std::string line, script;
    int requests;
    /// What it waits beyond 60 ms a request and the exchange.
    int waits = 0;
  };
  // clang-format off
  const Row rows[] = {
      {"/?", "", 0},
      {"/d smb", "", 0},
      {"/d fru", "", board.Read()},
      {"/d sdr", "", ReadSdrs(boardRecords)},
      {"/fru minimal", "", riser.Program()},
      {"/fru server-board", "", boardFile.Program()},
      {"/sdr server-board", "", ProgramSdrs(fileRecords, erasure), second},
      {"/cfg t", "DISPLAY \"x\"\nSET a\nIFSET a\nENDIF\n", 0},
      {"/cfg t", "PROBE SYSTEM x\n", 0},
      {"/cfg t", "PROBE BMC_TYPE\n", 0},
      {"/cfg t", "PROBE BMCVER 1.0+\n", 1},
      {"/cfg t", "PROBE DEVICE_ID 20 0\n", 1},
      // Send Message and Get Message, which takes no 10 ms; the controller's own exchange.
      {"/cfg t", "PROBE DEVICE_ID 2C 0\n", 2, exchange - 10'000},
      {"/cfg t", "PROBE IMBDEVICE 00\n", 1},
      {"/cfg t", "PROBE FAN_SIGNAL 1 1\n", 1},
      {"/cfg t", "PROBE PROCESSOR_TDC 1 5\n", 1},
      {"/cfg t", "PROBE BASEBOARD_PRODID 1\n", 1},
      {"/cfg t", "PROBE QRX_TYPE\n", 1},
      {"/cfg t", "PROBE BMCCONFIG a b\n", tries},
      {"/cfg t", "PROBE PING FF 20\n", 10 * tries},
      {"/cfg t", "FRUNAME SYSTEM\n", board.Read()},
      {"/cfg t", "FRUNAME SYSTEM\nFRUAREA Product\nFRUFIELD AT X1\n", board.Read() + board.Program()},
      {"/cfg t", "FRUNAME server-board.fru\n", board.Read()},
      {"/cfg t", "FRUNAME server-board.fru\nFRUAREA Product\nFRUFIELD AT X1\n", board.Read() + board.Program()},
      {"/cfg t", "SDRNAME server-board.sdr\n", ProgramSdrs(fileRecords, erasure), second},
      // Compared only: Info at the loading and before the read-back.
      {"/cfg t", "SDRNAME server-board.sdr COMPARE\n", 2 + ReadSdrs(boardRecords)},
      {"/cfg t", "CLEARSDR\n", erasure, second},
      // The version, Cold Reset, and three looks after 5 s each; the first two find a BMC that is in reset.
      {"/cfg t", "BMC_REFRESH\n", 2 + 2 * tries + 1, 3 * 5 * second + 2 * tries * lost - 10'000},
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line + " " + row.script);
    const std::filesystem::path copy = folder.Path() / "copy", log = folder.Path() / "log";
    std::filesystem::remove_all(copy);
    std::filesystem::copy(folder.Path() / "board", copy);
    BoardMachine machine;
    for (const char* name : {"minimal.FRU", "server-board.FRU", "server-board.SDR"}) {
      std::string lower(name);
      for (char& each : lower) each = static_cast<char>(std::tolower(each));
      machine.files[name] = machine.files[".\\" + lower] =
          ContentOf(std::filesystem::path(VARNOK_SAMPLES) / lower);
    }
    machine.files[".\\t.CFG"] = machine.files["t.CFG"] = row.script;
    machine.keys = u"y";
    machine.Install(sim::Board::Open(copy, error));
    ASSERT_TRUE(machine.board->OpenTrafficLog(log));
    RunMain(row.line);
    const std::string traffic = ContentOf(log);
    int requests = 0;
    for (std::size_t at = 0; (at = traffic.find(" > ", at)) != traffic.npos; ++at) ++requests;
    EXPECT_EQ(requests, start + row.requests);
    EXPECT_EQ(machine.board->Clock().Elapsed(), requests * (60'000 + exchange) + row.waits);
  }
}

}  // namespace
}  // namespace varnok::testing
