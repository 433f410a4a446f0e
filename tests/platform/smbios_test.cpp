#include "platform/smbios.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include "tests/support/smbios_builder.h"
#include "tests/support/split.h"

namespace varnok {
namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

using TableBytes = SmbiosBuilder::Bytes;

struct Smbios : ::testing::Test {
  TestFirmware machine;
  SmbiosBuilder table;
  SmbiosRecord record;
  std::size_t size = 0;
  std::uint32_t cursor = 0;

  /// Puts the table into the machine and starts at its first structure.
  void Install() {
    cursor = 0;
    machine.memory.clear();
    table.Install(machine);
    ASSERT_EQ(SmbiosInitialize(), kSuccess);
  }
  Status Get(std::uint32_t type, std::uint32_t handle = kSmbiosAny) {
    return SmbiosGetStructure(type, handle, record, size, cursor);
  }
  template <class Record>
  Record First(std::uint32_t type) {
    cursor = 0;
    EXPECT_EQ(Get(type), kSuccess) << type;
    auto* found = std::get_if<Record>(&record);
    return found != nullptr ? *found : Record{};
  }
  /// The system, board and chassis that the display shows.
  void AddSystem() { table.Add(1, {1, 2, 3, 4}, {"Sysmaker", "Rack 9", "A1", "S-1"}); }
  void AddBoard() { table.Add(2, {1, 2, 3, 4, 0}, {"Boardmaker", "B2600XY", "D10", "B-7"}); }
  void AddChassis(std::uint8_t type = 0x17) {
    table.Add(3, {1, type, 2, 3, 4, 3, 3, 3, 2}, {"Casemaker", "C3", "C-5", "T-1"});
  }
  void AddAll() {
    AddSystem();
    AddBoard();
    AddChassis();
  }
};

TEST_F(Smbios, MissingTableAndMissingImageHandle) {
  EXPECT_EQ(SmbiosInitialize(), uefi_status::kNotFound);
  EXPECT_EQ(Get(1), smbios_status::kNotFound);
  EXPECT_EQ(machine.console, "");
  machine.hasImageHandle = false;
  Install();
  EXPECT_EQ(machine.console, "smbiosapi.cpp - in Initialize ImageHandle returned null \n");
}

TEST_F(Smbios, DisplayOfSystemBoardAndChassis) {
  AddAll();
  Install();
  EXPECT_EQ(SmbiosDisplay(), kSuccess);
  EXPECT_EQ(machine.console,
            "Displaying SMBIOS Area...\n"
            "\n\nSystem Information (Type 1)\n\n\n"
            " Manufacturer      = Sysmaker\n"
            " Product Name      = Rack 9\n"
            " Version           = A1\n"
            " Serial Number     = S-1\n"
            "\n\nBoard Information (Type 2)\n\n\n"
            " Manufacturer      = Boardmaker\n"
            " Product           = B2600XY\n"
            " Version           = D10\n"
            " Serial Number     = B-7\n"
            "\n\nChassis Information (Type 3)\n\n\n"
            " Manufacturer      = Casemaker\n"
            " Type              = Rack Mount Chassis\n"
            " Version           = C3\n"
            " Serial Number     = C-5\n"
            " Asset Tag Number  = T-1\n");
}

TEST_F(Smbios, ChassisTypesHaveTheirNames) {
  std::vector<std::string> names = Split(
      "Unknown; Other; Unknown; Desktop; Low Profile Desktop; Pizza Box; Mini Tower; Tower; Portable; LapTop; "
      "Notebook; Hand Held; Docking Station; All in One; Sub Notebook; Space-Saving; Lunch Box; "
      "Main Server Chassis; Expansion Chassis; SubChassis; Bus Expansion Chassis; Peripheral Chassis; "
      "RAID Chassis; Rack Mount Chassis; Sealed-case PC; Multi-system chassis; CompactPCI Chassis; AdvancedTCA; "
      "Blade; BladeEnclosure");
  names.resize(0x98, "Unknown");  // 97h is a lockable rack
  for (std::size_t type = 0; type < names.size(); ++type) {
    machine.console.clear();
    table = {};
    AddSystem();
    AddBoard();
    AddChassis(static_cast<std::uint8_t>(type));
    Install();
    EXPECT_EQ(SmbiosDisplay(), kSuccess);
    EXPECT_THAT(machine.console, HasSubstr(" Type              = " + names[type] + "\n")) << type;
  }
}

TEST_F(Smbios, DisplayStopsAtTheMissingStructure) {
  const char* lastLines[] = {"Area...\n", "S-1\n", "B-7\n"};
  for (int missing = 1; missing <= 3; ++missing) {
    table = {};
    if (missing != 1) AddSystem();
    if (missing != 2) AddBoard();
    if (missing != 3) AddChassis();
    Install();
    machine.files.clear();
    EXPECT_EQ(SmbiosDisplay(), smbios_status::kNotFound);
    EXPECT_THAT(machine.TraceLines(), ElementsAre("SmbiosGetStructure - Structure not found",
                                                  "SmbiosDisplay - SMBIOS structure not found"));
    EXPECT_TRUE(machine.console.ends_with(lastLines[missing - 1])) << machine.console;
  }
  const char16_t* message = nullptr;
  EXPECT_EQ(SmbiosGetLastErrorMessage(message), kSuccess);
  EXPECT_EQ(std::u16string(message), u"The requested SMBIOS structure was not found.");
}

TEST_F(Smbios, OutputFileReceivesTheDisplay) {
  AddAll();
  Install();
  SmbiosSetOutputFile(u"SMB.TMP");
  machine.files["SMB.TMP"] = std::string("!\0", 2);
  EXPECT_EQ(SmbiosDisplay(), kSuccess);
  EXPECT_EQ("Displaying SMBIOS Area...\n" + machine.TextOf("SMB.TMP").substr(1), machine.console);
  std::size_t written = machine.files["SMB.TMP"].size();
  SmbiosPrint("after the display\n");
  EXPECT_EQ(machine.files["SMB.TMP"].size(), written);

  machine.console.clear();
  machine.fileFailures["SMB.TMP"] = uefi_status::kWriteProtected;
  EXPECT_EQ(SmbiosDisplay(), smbios_status::kNoOutputFile);
  EXPECT_EQ(machine.console, "Displaying SMBIOS Area...\n");
  SmbiosSetOutputFile(u"");
}

TEST_F(Smbios, WalkByTypeHandleAndCursor) {
  table.Add(17, {}).Add(11, {1}, {"OEM"}).Add(17, {}).Add(4, {1}, {"CPU0"});
  Install();
  ASSERT_EQ(Get(17), kSuccess);
  EXPECT_EQ(cursor, 6u);
  ASSERT_EQ(Get(17), kSuccess);
  EXPECT_EQ(cursor, 6u + 10 + 6);
  EXPECT_EQ(Get(17), smbios_status::kNotFound);
  EXPECT_EQ(cursor, 65535u);
  EXPECT_EQ(size, 0u);
  EXPECT_TRUE(std::holds_alternative<std::monostate>(record));

  // A handle is looked for from the start, wherever the cursor stands.
  ASSERT_EQ(Get(kSmbiosAny, 0x0103), kSuccess);
  EXPECT_EQ(std::get<SmbiosProcessor>(record).socketDesignation, "CPU0");
  EXPECT_EQ(Get(17, 0x0103), smbios_status::kNotFound);

  cursor = 0;
  for (int i = 0; i < 4; ++i) EXPECT_EQ(Get(kSmbiosAny, 70000), kSuccess);
  EXPECT_EQ(Get(kSmbiosAny), smbios_status::kNotFound);
}

TEST_F(Smbios, OtherTypesAreCopiedWhole) {
  table.Add(11, {1}, {"OEM"});
  Install();
  ASSERT_EQ(Get(kSmbiosAny), kSuccess);
  EXPECT_EQ(size, 10u);
  EXPECT_TRUE(std::ranges::equal(std::get<PoolBuffer>(record).Bytes(), table.table));

  cursor = 0;
  EXPECT_EQ(Get(11), smbios_status::kUnknownType);
  EXPECT_TRUE(std::holds_alternative<PoolBuffer>(record));
  cursor = 0;
  EXPECT_EQ(Get(12), smbios_status::kNotFound);

  cursor = 0;
  machine.FailPoolAllocation(1);
  EXPECT_EQ(Get(kSmbiosAny), smbios_status::kNoMemory);
  record = {};
  EXPECT_EQ(machine.poolBlocks, 0u);
}

TEST_F(Smbios, EntryPointDecidesWhatIsRead) {
  struct Case {
    const char* name;
    const char* anchor;
    std::uint8_t entryLength;
    std::uint16_t tableLength, count;
    Status ofSystem, ofBoard;
  } const cases[] = {
      {"other anchor", "_SM3", 0x1F, 0xFFFF, 2, smbios_status::kNotFound, smbios_status::kNotFound},
      {"cut entry point", "_SM_", 6, 0xFFFF, 2, smbios_status::kNotFound, smbios_status::kNotFound},
      {"long entry point", "_SM_", 0xFF, 0xFFFF, 2, kSuccess, kSuccess},
      {"long table", "_SM_", 0x1F, 0xFFFF, 0xFFFF, kSuccess, kSuccess},
      {"one structure", "_SM_", 0x1F, 0xFFFF, 1, kSuccess, smbios_status::kNotFound},
      {"table inside its structure", "_SM_", 0x1F, 8, 2, kSuccess, smbios_status::kNotFound},
  };
  AddSystem();
  AddBoard();
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    table.anchor = one.anchor;
    table.entryLength = one.entryLength;
    table.length = one.tableLength;
    table.count = one.count;
    Install();
    EXPECT_EQ(Get(1), one.ofSystem);
    cursor = 0;
    EXPECT_EQ(Get(2), one.ofBoard);
    EXPECT_EQ(Get(3), smbios_status::kNotFound);
  }
  machine.memory.clear();
  EXPECT_EQ(SmbiosDisplay(), smbios_status::kNotFound);
}

TEST_F(Smbios, BrokenLengthOrStringsEndTheTable) {
  for (std::uint8_t length : TableBytes{0, 3, 255}) {
    table = {};
    AddSystem();
    std::size_t second = table.table.size();
    AddAll();
    table.table[second + 1] = length;
    Install();
    EXPECT_EQ(Get(1), kSuccess);
    cursor = 0;
    EXPECT_EQ(Get(3), smbios_status::kNotFound) << "length " << +length;
  }
  table = {};
  AddSystem();
  table.table.resize(table.table.size() - 4);  // both NULs and "-1"
  Install();
  EXPECT_EQ(First<SmbiosSystem>(1).version, "A1");
  EXPECT_EQ(First<SmbiosSystem>(1).serialNumber, "S") << "a missing double NUL ends with the table";
}

TEST_F(Smbios, StringNumberPastTheSetIsEmpty) {
  table.Add(1, {1, 9, 0, 255}, {"Sysmaker"}).Add(2, {1, 2, 3, 4});
  Install();
  const auto system = First<SmbiosSystem>(1);
  EXPECT_EQ(system.manufacturer, "Sysmaker");
  EXPECT_EQ(system.productName + system.version + system.serialNumber, "");
  EXPECT_EQ(system.uuid, (std::array<std::uint8_t, 16>{})) << "the record ends before it; strings follow";
  EXPECT_EQ(First<SmbiosBoard>(2).product, "") << "no strings at all";
}

TEST_F(Smbios, DamagedByteOrCutTableIsReadWithinItsBounds) {
  AddAll();
  table.Add(4, {1, 3, 0, 2}, {"CPU 1", "Maker"}).Add(16, {3, 3, 6, 0, 0, 0, 0, 0, 0, 1, 0}).Add(17, {0, 0});
  const TableBytes whole = table.table;
  auto readAll = [&] {
    Install();
    Discard(SmbiosDisplay());
    SmbiosProcessor processor;
    std::string text;
    std::uint32_t number = 0;
    Discard(SmbiosGetBiosVersion(text));
    Discard(SmbiosGetMemoryDeviceSize(number));
    Discard(SmbiosGetProcessorByIndex(0, number, processor));
    cursor = 0;
    for (std::size_t i = 0; Get(kSmbiosAny) == kSuccess; ++i) ASSERT_LT(i, whole.size() / 4);
    EXPECT_EQ(cursor, kSmbiosAny);
  };
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (std::uint8_t value : TableBytes{0x00, 0x04, 0x41, 0xFF}) {
      table.table = whole;
      table.table[at] = value;
      readAll();
    }
    table.table.assign(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at));
    readAll();
  }
}

TEST_F(Smbios, LookUpsOfBiosAndBoard) {
  table.Add(0, {1, 2}, {"Maker", "SE5C.86B.0X.02.0001.051420" + std::string(39, 'x')});
  AddBoard();
  Install();
  std::string text;
  EXPECT_EQ(SmbiosGetBiosVersion(text), kSuccess);
  EXPECT_EQ(text, "SE5C.86B.0X.02.0001.051420" + std::string(38, 'x')) << "cut at 64 characters";
  EXPECT_EQ(SmbiosGetBoardProductName(text), kSuccess);
  EXPECT_EQ(text, "B2600XY");
  table = {};
  Install();
  EXPECT_EQ(SmbiosGetBiosVersion(text), uefi_status::kNotFound);
  EXPECT_EQ(machine.TraceLines().back(), "SmbiosGetBiosVersion - SMBIOS structure not found");
  EXPECT_EQ(SmbiosGetBoardProductName(text), uefi_status::kNotFound);
  EXPECT_EQ(text, "B2600XY");
}

TEST_F(Smbios, LargestMemoryDeviceOfTheCountedOnes) {
  struct Case {
    TableBytes devices;  // their sizes in units of 256 MiB
    TableBytes arrays;   // their numbers of devices
    Status status;
    std::uint32_t largest;
  } const cases[] = {
      {{16, 64, 32, 127}, {3}, kSuccess, 64 * 256},
      {{16}, {2}, uefi_status::kNotFound, 1},
      {{16}, {}, uefi_status::kNotFound, 1},
  };
  for (const Case& one : cases) {
    table = {};
    for (std::uint8_t units : one.devices) table.Add(17, {0, 0, 0xFE, 0xFF, 72, 0, 64, 0, 0, units});
    for (std::uint8_t count : one.arrays) table.Add(16, {3, 3, 6, 0, 0, 0, 0, 0xFE, 0xFF, count, 0});
    Install();
    std::uint32_t largest = 1;
    EXPECT_EQ(SmbiosGetMemoryDeviceSize(largest), one.status);
    EXPECT_EQ(largest, one.largest);
  }
}

TEST_F(Smbios, ProcessorsBySocketAndIndex) {
  TableBytes recent(0x30 - 4);
  const TableBytes signature = {0x54, 0x06, 0x05, 0x80};
  recent[0x04 - 4] = 1;
  std::copy(signature.begin(), signature.end(), recent.begin() + 0x08 - 4);
  recent[0x18 - 4] = 0x41;
  recent[0x23 - 4] = 18;
  TableBytes old(recent.begin(), recent.begin() + 0x23 - 4);
  old[0x18 - 4] = 0;
  table.Add(4, recent, {"CPU 4294967297"})
      .Add(4, recent, {"CPU 1"})
      .Add(4, old, {"CPU02B7"})
      .Add(4, old, {"CPU"});
  Install();
  SmbiosProcessor processor;
  ASSERT_EQ(SmbiosGetProcessorBySocket(1, processor), kSuccess);
  EXPECT_EQ(processor.socketDesignation, "CPU 1");
  EXPECT_EQ(processor.Signature(), 0x80050654u);
  EXPECT_TRUE(processor.IsPopulated());
  EXPECT_TRUE(processor.hasCoreCount);
  EXPECT_EQ(processor.coreCount, 18);
  ASSERT_EQ(SmbiosGetProcessorBySocket(2, processor), kSuccess);
  EXPECT_EQ(processor.socketDesignation, "CPU02B7");
  EXPECT_FALSE(processor.IsPopulated());
  EXPECT_FALSE(processor.hasCoreCount) << "a record of SMBIOS 2.3";
  ASSERT_EQ(SmbiosGetProcessorBySocket(65535, processor), kSuccess);
  EXPECT_EQ(processor.socketDesignation, "CPU");
  EXPECT_EQ(SmbiosGetProcessorBySocket(7, processor), uefi_status::kNotFound);

  std::uint32_t count = 0;
  EXPECT_EQ(SmbiosGetProcessorByIndex(1, count, processor), kSuccess);
  EXPECT_EQ(processor.socketDesignation, "CPU 1");
  EXPECT_EQ(SmbiosGetProcessorByIndex(4, count, processor), uefi_status::kNotFound);
  EXPECT_EQ(count, 4u);
}

TEST_F(Smbios, FieldsStandAtTheStandardsOffsets) {
  TableBytes fields(0x40 - 4);
  std::iota(fields.begin(), fields.end(), std::uint8_t{4});
  for (std::uint8_t type : TableBytes{0, 1, 2, 3, 4, 16, 17}) table.Add(type, fields);
  Install();
  EXPECT_EQ(First<SmbiosBios>(0).extendedRomSize, 0x1918);
  EXPECT_EQ(First<SmbiosSystem>(1).uuid[15], 0x17);
  EXPECT_EQ(First<SmbiosBoard>(2).boardType, 0x0D);
  EXPECT_EQ(First<SmbiosChassis>(3).oemDefined, 0x100F0E0Du);
  EXPECT_EQ(First<SmbiosProcessor>(4).threadCount2, 0x2F2E);
  EXPECT_EQ(First<SmbiosMemoryArray>(16).extendedMaximumCapacity, 0x161514131211100Fu);
  EXPECT_EQ(First<SmbiosMemoryDevice>(17).configuredVoltage, 0x2726);
}

TEST(SmbiosText, FormatIsBounded) {
  char16_t buffer[] = u"--------";
  SmbiosFormat(std::span(buffer, 6), "%d:%s", 12, "abcdef");
  EXPECT_EQ(std::u16string_view(buffer, 8), std::u16string_view(u"12:ab\0--", 8));
  SmbiosFormat(std::span(buffer, 0), "x");
  EXPECT_EQ(buffer[0], u'1');
}

}  // namespace
}  // namespace varnok
