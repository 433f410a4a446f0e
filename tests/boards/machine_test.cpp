// Machines that are read and written back: a board with devices of every kind, and the faults that BMCs have.
#include "boards/machine.h"

#include "boards/folder.h"
#include "boards/snapshot/restore.h"
#include "boards/snapshot/snapshot.h"
#include "boards/snapshot/snapshot_text.h"
#include "firmware/lasting.h"
#include "sim/sdr_builder.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

using boards::Board;

struct Silence : boards::Observer {
  void Step(std::string_view, std::size_t, std::size_t) override {}
};

/// One fault of all requests of a net function and command.
std::string Fault(const char* request, const std::string& which, const std::string& fault) {
  return std::string(R"({"netFunction": "0x)") + std::string(request, 2) + R"(", "command": "0x)" +
         (request + 3) + R"(", )" + which + R"("fault": )" + fault + "}";
}

class MachineTest : public BoardTest {
 protected:
  void SetUp() override {
    sim::SdrBuilder sdrs;
    sdrs.AddNamed(0x02,
                  {0x20, 0, 0x30, 7, 1, 0, 0, 1, 0x6F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0},
                  "Three");
    sdrs.AddNamed(0x02,
                  {0xC0, 0, 0x40, 7, 1, 0, 0, 1, 0x6F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0},
                  "Other's");
    sdrs.AddNamed(0x10, {0x20, 0xA0, 0x01, 0, 0, 0x09, 2, 7, 1, 0}, "EEPROM");
    sdrs.AddNamed(0x10, {0x20, 0xA2, 0x01, 0, 0, 0x09, 1, 7, 1, 0}, "memory's");
    sdrs.AddNamed(0x11, {0x20, 0x90, 0x02, 0, 0, 0x02, 0, 7, 1, 0}, "DS1624");
    sdrs.AddNamed(0x11, {0x20, 0x02, 0x80, 0, 0, 0x10, 0, 7, 1, 0}, "Words");
    sdrs.AddNamed(0x12, {0xC0, 0x00, 0, 0x08, 0, 0, 0, 7, 1, 0}, "Hot-Swap");
    sdrs.AddPlain(0xC0, {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20,
                         21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40});
    Write("sdr.bin", sdrs.Records());
    unsigned seed = 1;
    for (const char* name : {"a.bin", "w.bin", "e.bin", "d.bin", "c.bin"}) {
      Bytes image(name[0] == 'w' ? 128 : 256);
      for (std::uint8_t& byte : image)
        byte = static_cast<std::uint8_t>((seed = seed * 1103515245 + 12345) >> 16);
      Write(name, image);
    }
  }

  void Write(const std::string& name, const Bytes& bytes) {
    WriteFile(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }

  /// Writes board.json with these keys of the BMC and these faults.
  void Describe(const std::string& faults = "", const std::string& keys = "",
                const std::string& access = "") {
    WriteFile("board.json", R"({"smbios": "", "faults": [)" + faults + R"(], "bmc": {)" + keys + R"(
      "frus": [{"id": 0, "file": "a.bin")" +
                                access + R"(}, {"id": 2, "file": "w.bin", "access": "word"}],
      "eeproms": [{"kind": "AT24C02", "bus": 3, "address": "0xA0", "file": "e.bin"},
                  {"kind": "DS1624S", "bus": 5, "address": "0x90", "file": "d.bin"}],
      "sensors": [{"number": "0x30", "reading": [1, 2]}, {"number": "0x32", "completionCode": "0xCD"}]},
      "controllers": [{"address": "0xC0", "frus": [{"id": 0, "file": "c.bin"}]}]})");
  }

  boards::Snapshot Take(std::vector<boards::DeviceAddress> named = {}) {
    boards::Snapshot snapshot;
    std::string error;
    auto machine = boards::OpenMachine::Open(folder.string(), error);
    EXPECT_TRUE(machine != nullptr && TakeSnapshot(named, silence, snapshot, error)) << error;
    return snapshot;
  }

  static std::vector<std::string> UnreadOf(const boards::Snapshot& snapshot) {
    std::vector<std::string> lines;
    for (const auto& row : snapshot.unread) lines.push_back(row.what + ": " + row.outcome.Text());
    return lines;
  }

  /// What the folder holds, devices in the order of their names.
  Board Wanted() {
    Board held;
    std::string error;
    EXPECT_TRUE(boards::LoadFolder(folder, held, error)) << error;
    return held;
  }

  static void ExpectSame(const Board& read, const Board& wanted, const std::string& what) {
    EXPECT_EQ(read.devices.size(), wanted.devices.size()) << what;
    for (const auto& device : wanted.devices) {
      const auto* same = read.Find(device.address);
      ASSERT_NE(same, nullptr) << what << NameOf(device.address);
      EXPECT_EQ(same->bytes, device.bytes) << what << NameOf(device.address);
      EXPECT_EQ(same->isWordAccess, device.isWordAccess) << what;
    }
    EXPECT_EQ(read.records, wanted.records) << what;
    EXPECT_EQ(read.sensors, wanted.sensors) << what;
    EXPECT_EQ(read.bmc.identity, wanted.bmc.identity) << what;
  }

  /// Restores `wanted` and gives what it says in the end, one line for each device and for the repository.
  std::vector<std::string> Restore(const Board& wanted, const std::string& log = "") {
    std::string error;
    auto opened = sim::Board::Open(folder, error);
    EXPECT_NE(opened, nullptr) << error;
    if (!log.empty()) opened->OpenTrafficLog(log);
    host::HostFirmware firmware(*opened);
    Firmware* previous = InstallFirmware(&firmware);
    boards::Identity identity;
    EXPECT_TRUE(boards::ReachBmc(identity, error)) << error;
    std::vector<const boards::Device*> devices;
    for (const auto& device : wanted.devices) devices.push_back(&device);
    auto work = PlanRestore(devices, &wanted.records, silence);
    std::vector<std::string> lines;
    for (auto& device : work.devices) {
      lines.push_back(device.Text());
      if (device.IsNeeded()) lines.push_back(RestoreDevice(device, silence).Text());
    }
    lines.push_back(work.repository.Text());
    if (work.repository.IsNeeded()) lines.push_back(RestoreRecords(work.repository, silence).Text());
    ForgetProgramState();
    InstallFirmware(previous);
    return lines;
  }

  Silence silence;
};

// Rows that an ordinary BMC may show, under which nothing is lost.
const std::pair<const char*, std::string> kBearable[] = {
    {"", ""},
    {R"("fruLimits": {"read": 6, "write": 5},)", ""},
    {R"("fruLimits": {"read": 2, "write": 2, "readCode": "0xC7", "writeCode": "0xCC"},)", ""},
    {R"("sdrs": {"file": "sdr.bin", "readLimit": 5, "eraseMilliseconds": 3000},)", ""},
    {"", Fault("0A 11", R"("every": 3, )", R"("completion-code", "code": "0xC0")")},
    {"", Fault("0A 12", R"("every": 2, )", R"("completion-code", "code": "0x81")")},
    {"", R"({"every": 7, "fault": "no-answer"})"},
    {"", Fault("0A 11", R"("every": 4, )", R"("short", "bytes": 3)")},
    {"", Fault("0A 23", R"("every": 6, )", R"("short", "bytes": 60)")},
    {"", Fault("0A 23", R"("every": 6, )", R"("lost-reservation")")},
    {"", Fault("06 52", R"("every": 5, )", R"("completion-code", "code": "0xC3")")},
    {"", Fault("0A 25", "", R"("completion-code", "code": "0xC1")")},
    {"", Fault("0A 20", "", R"("record-count", "records": 0)")},
};

TEST_F(MachineTest, IsReadWholeUnderWhatCanBeBorne) {
  for (const auto& [keys, faults] : kBearable) {
    Describe(faults, keys);
    const auto snapshot = Take();
    EXPECT_EQ(UnreadOf(snapshot), std::vector<std::string>{}) << keys << faults;
    ExpectSame(snapshot.board, Wanted(), keys + faults);
    EXPECT_EQ(snapshot.board.controllers.at(0).name, "Hot-Swap");
  }
}

TEST_F(MachineTest, KeepsTheRestOfWhatCannotBeRead) {
  using Lines = std::vector<std::string>;
  const std::pair<std::string, Lines> rows[] = {
      {Fault("0A 11", R"("data": [0, 64], )", R"("completion-code", "code": "0xC9")"),
       {"0: only 64 of 256 bytes, then completion code C9h"}},
      {Fault("0A 11", R"("data": [2, 0], )", R"("no-answer")"), {"2: no answer"}},
      {Fault("0A 10", R"("data": [2], )", R"("completion-code", "code": "0xCB")"),
       {"2: completion code CBh"}},
      {Fault("0A 10", R"("data": [9], )", R"("completion-code", "code": "0xFF")"),
       {"9: completion code FFh"}},
      {R"({"controller": "0xC0", "fault": "nak"})", {"controller C0h: completion code 83h"}},
      {Fault("0A 23", R"("data": [1, 0, 3, 0, 5], )", R"("completion-code", "code": "0xFF")"),
       {"SDR record 0003h: completion code FFh"}},
      {Fault("0A 22", "", R"("no-answer")"), {"SDR repository: no answer"}},
      {Fault("04 2D", R"("data": [48], )", R"("no-answer")"), {"sensor 30h: no answer"}},
  };
  for (const auto& [faults, unread] : rows) {
    Describe(faults);
    const auto snapshot = Take();
    EXPECT_EQ(UnreadOf(snapshot), unread) << faults;
    EXPECT_NE(snapshot.board.Find(*boards::ParseDeviceName("0")), nullptr) << faults;
  }
  Describe("", R"("sdrs": {"file": "sdr.bin", "endId": 3},)");
  EXPECT_EQ(UnreadOf(Take()), Lines{"SDR repository: record ID 0003h comes round again"});
  Describe("", R"("sdrs": {"file": ""},)");
  const auto named = Take({*boards::ParseDeviceName("0@C0"), *boards::ParseDeviceName("1@B4")});
  EXPECT_EQ(UnreadOf(named), Lines{"controller B4h: completion code 83h"});
  EXPECT_FALSE(named.board.hasRepository);
  EXPECT_NE(named.board.Find(*boards::ParseDeviceName("0@C0")), nullptr);
}

TEST_F(MachineTest, IsRestoredUnderWhatCanBeBorne) {
  Describe();
  const Board wanted = Take().board;
  const Bytes records = ReadFile("sdr.bin");
  for (const auto& [keys, faults] : kBearable) {
    for (const char* name : {"a.bin", "w.bin", "e.bin", "d.bin", "c.bin"}) {
      Bytes image = ReadFile(name);
      image[3] ^= 1;
      for (std::size_t i = 60; i < 100; ++i) image[i] ^= 0xFF;
      Write(name, image);
    }
    Write("sdr.bin", Bytes(records.begin(), records.begin() + 5 + records[4]));
    Describe(faults, keys);
    const auto lines = Restore(wanted);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "done"), 6)
        << keys << faults << ::testing::PrintToString(lines);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "0: 41 of 256 bytes differ, from offset 3 on"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "2: 42 of 128 bytes differ, from offset 2 on"), 1);
    Describe();
    ExpectSame(Wanted(), wanted, keys + faults);
  }
}

TEST_F(MachineTest, OnlyWhatDiffersIsWritten) {
  Describe();
  const Board wanted = Wanted();
  Bytes image = ReadFile("a.bin");
  image[3] ^= 1;
  image[200] ^= 1;
  Write("a.bin", image);
  const std::string log = (folder / "log").string();
  Restore(wanted, log);
  std::string writes;
  std::istringstream lines(TextOf("log"));
  for (std::string line; std::getline(lines, line);)
    if (line.find(" > 20 0A/0 12 ") != std::string::npos || line.find(" > 20 0A/0 27 ") != std::string::npos)
      writes += line.substr(14) + "\n";
  char expected[100];
  std::snprintf(expected, sizeof(expected), "> 20 0A/0 12 00 03 00 %02X\n> 20 0A/0 12 00 C8 00 %02X\n",
                wanted.devices[0].bytes[3], wanted.devices[0].bytes[200]);
  EXPECT_EQ(writes, expected);
}

TEST_F(MachineTest, SaysWhatCannotBeRestored) {
  Describe();
  Board wanted = Wanted();
  wanted.devices.resize(1);
  wanted.devices[0].bytes[10] ^= 0x10;
  const std::string differs = "0: 1 of 256 bytes differ, from offset 10 on";
  const std::string same = "SDR repository: equal";
  using Lines = std::vector<std::string>;
  Describe("", "", R"(, "readOnly": true)");
  EXPECT_EQ(Restore(wanted), (Lines{differs, "completion code 80h", same}));
  Describe(Fault("0A 12", "", R"("no-answer")"));
  EXPECT_EQ(Restore(wanted), (Lines{differs, "no answer", same}));
  wanted.devices[0].bytes[10] ^= 0x10;  // the write got through, its answer did not
  const Bytes before = ReadFile("a.bin");
  Describe(Fault("0A 12", "", R"("flip", "file": "a.bin", "offset": 99, "mask": 255)"));
  char text[60];
  std::snprintf(text, sizeof(text), "byte 99 reads back as %02Xh, not %02Xh", before[99] ^ 0xFF, before[99]);
  EXPECT_EQ(Restore(wanted), (Lines{differs, text, same}));
  Describe();
  wanted.devices[0].bytes = Bytes(257, 0);
  EXPECT_EQ(Restore(wanted).front(), "0: cannot be restored: the image has 257 bytes, the device 256");
  wanted.devices[0].address.id = 1;
  EXPECT_EQ(Restore(wanted).front(), "1: cannot be restored: completion code CBh");

  wanted.devices.clear();
  wanted.records.pop_back();
  const Bytes records = ReadFile("sdr.bin");
  Describe(Fault("0A 27", "", R"("completion-code", "code": "0xFF")"));
  EXPECT_EQ(Restore(wanted), (Lines{"SDR repository: its 8 records are erased, 7 are written",
                                    "the repository could not be erased: completion code FFh"}));
  EXPECT_EQ(ReadFile("sdr.bin"), records);
  Describe(Fault("0A 25", R"("from": 4, )", R"("completion-code", "code": "0xC4")"));
  EXPECT_EQ(Restore(wanted).back(), "record 2 of 7 could not be added: completion code C4h");
  Describe(Fault("0A 25", R"("nth": 4, )", R"("flip", "file": "sdr.bin", "offset": 8)"));
  EXPECT_EQ(Restore(wanted).back(), "reads back as something else");
}

}  // namespace
}  // namespace varnok::testing
