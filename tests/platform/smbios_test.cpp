#include "platform/smbios.h"

#include <gtest/gtest.h>

#include "app/services/trace.h"
#include "tests/support/smbios_builder.h"

namespace varnok {
namespace {

using testing::SmbiosBuilder;
using testing::TestFirmware;

SmbiosBuilder::Bytes ChassisOfType(std::uint8_t type) {
  return {1, type, 2, 3, 4, 3, 3, 3, 2};
}

struct Smbios : ::testing::Test {
  TestFirmware machine;
  SmbiosBuilder table;
  SmbiosRecord record;
  std::size_t size = 0;
  std::uint32_t cursor = 0;

  void Install() {
    table.Install(machine);
    ASSERT_EQ(SmbiosInitialize(), kSuccess);
  }
  Status Get(std::uint32_t type, std::uint32_t handle = kSmbiosAny) {
    return SmbiosGetStructure(type, handle, record, size, cursor);
  }
  void AddSystem() { table.Add(1, {1, 2, 3, 4}, {"Sysmaker", "Rack 9", "A1", "S-1"}); }
  void AddBoard() { table.Add(2, {1, 2, 3, 4, 0}, {"Boardmaker", "B2600XY", "D10", "B-7"}); }
  void AddChassis(std::uint8_t type = 0x17) {
    table.Add(3, ChassisOfType(type), {"Casemaker", "C3", "C-5", "T-1"});
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
  AddSystem();
  AddBoard();
  AddChassis();
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

TEST_F(Smbios, ChassisTypeWithoutNameIsUnknown) {
  const std::pair<std::uint8_t, const char*> cases[] = {
      {0x00, "Unknown"}, {0x01, "Other"}, {0x1D, "BladeEnclosure"}, {0x1E, "Unknown"}, {0x97, "Unknown"}};
  for (const auto& [type, name] : cases) {
    machine.console.clear();
    table = {};
    AddSystem();
    AddBoard();
    AddChassis(type);
    Install();
    EXPECT_EQ(SmbiosDisplay(), kSuccess);
    EXPECT_NE(machine.console.find(std::string(" Type              = ") + name + "\n"), std::string::npos)
        << +type;
  }
}

TEST_F(Smbios, DisplayStopsAtTheMissingStructure) {
  AddSystem();
  AddBoard();
  Install();
  EXPECT_EQ(SmbiosDisplay(), smbios_status::kNotFound);
  EXPECT_NE(machine.console.find("B-7\n"), std::string::npos);
  EXPECT_EQ(machine.console.find("Chassis"), std::string::npos);
  EXPECT_EQ(std::u16string(SmbiosGetLastErrorMessage()), u"The requested SMBIOS structure was not found.");
}

TEST_F(Smbios, OperationsAndFailuresAreTraced) {
  Install();
  const char* arguments[] = {"varnok", "-debug3"};
  TraceSelectLevel(2, arguments);
  SmbiosSetOutputFile(u"");
  EXPECT_EQ(SmbiosDisplay(), smbios_status::kNotFound);
  SmbiosGetLastErrorMessage();
  std::string text;
  EXPECT_EQ(SmbiosGetBiosVersion(text), uefi_status::kNotFound);
  TraceSelectLevel(0, nullptr);
  EXPECT_EQ(
      machine.TraceLines(),
      (std::vector<std::string>{
          "SmbiosSetOutputFile [ENTRY]", "SmbiosSetOutputFile [EXIT]", "SmbiosDisplay [ENTRY]",
          "SmbiosGetStructure [ENTRY]", "SmbiosGetStructure - Structure not found",
          "SmbiosGetStructure [EXIT]", "SmbiosDisplay - SMBIOS structure not found", "SmbiosDisplay [EXIT]",
          "SmbiosGetLastErrorMessage [ENTRY]", "SmbiosGetLastErrorMessage [EXIT]",
          "SmbiosGetBiosVersion [ENTRY]", "SmbiosGetStructure [ENTRY]",
          "SmbiosGetStructure - Structure not found", "SmbiosGetStructure [EXIT]",
          "SmbiosGetBiosVersion - SMBIOS structure not found", "SmbiosGetBiosVersion [EXIT]"}));
}

TEST_F(Smbios, OutputFileReceivesTheDisplay) {
  AddSystem();
  AddBoard();
  AddChassis();
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

TEST_F(Smbios, WrongAnchorOrEmptyEntryPoint) {
  AddSystem();
  table.anchor = "_SM3";
  Install();
  EXPECT_EQ(Get(1), smbios_status::kNotFound);
  table.anchor = "_SM_";
  table.entryLength = 6;
  Install();
  EXPECT_EQ(Get(1), smbios_status::kNotFound);
  table.entryLength = 0xFF;
  cursor = 0;
  Install();
  EXPECT_EQ(Get(1), kSuccess);
}

TEST_F(Smbios, BrokenStructureLengthEndsTheTable) {
  for (std::uint8_t length : SmbiosBuilder::Bytes{0, 3, 255}) {
    table = {};
    AddSystem();
    std::size_t second = table.table.size();
    AddBoard();
    AddChassis();
    table.table[second + 1] = length;
    Install();
    cursor = 0;
    EXPECT_EQ(Get(1), kSuccess);
    cursor = 0;
    EXPECT_EQ(Get(3), smbios_status::kNotFound) << "length " << +length;
  }
}

TEST_F(Smbios, MissingDoubleNulEndsWithTheTable) {
  AddSystem();
  table.table.resize(table.table.size() - 4);  // both NULs and "-1"
  Install();
  ASSERT_EQ(Get(1), kSuccess);
  EXPECT_EQ(std::get<SmbiosSystem>(record).version, "A1");
  EXPECT_EQ(std::get<SmbiosSystem>(record).serialNumber, "S");
}

TEST_F(Smbios, StringNumberPastTheSetIsEmpty) {
  table.Add(1, {1, 9, 0, 255}, {"Sysmaker"}).Add(2, {1, 2, 3, 4});
  Install();
  ASSERT_EQ(Get(1), kSuccess);
  const auto& system = std::get<SmbiosSystem>(record);
  EXPECT_EQ(system.manufacturer, "Sysmaker");
  EXPECT_EQ(system.productName + system.version + system.serialNumber, "");
  EXPECT_EQ(system.uuid, (std::array<std::uint8_t, 16>{})) << "the record ends before it; strings follow";
  ASSERT_EQ(Get(2), kSuccess) << "no strings at all";
  EXPECT_EQ(std::get<SmbiosBoard>(record).product, "");
}

TEST_F(Smbios, LongStringIsCutAt64) {
  table.Add(0, {1, 2}, {"Maker", std::string(70, 'x')});
  Install();
  std::string text;
  EXPECT_EQ(SmbiosGetBiosVersion(text), kSuccess);
  EXPECT_EQ(text, std::string(64, 'x'));
}

TEST_F(Smbios, TableShorterOrLongerThanSaid) {
  AddSystem();
  AddBoard();
  table.length = 0xFFFF;
  table.count = 0xFFFF;
  Install();
  EXPECT_EQ(Get(3), smbios_status::kNotFound);
  table.length = 8;  // inside the first structure's formatted area
  Install();
  cursor = 0;
  EXPECT_EQ(Get(2), smbios_status::kNotFound);
  machine.memory.clear();
  EXPECT_EQ(SmbiosDisplay(), smbios_status::kNotFound);
}

TEST_F(Smbios, DamagedByteOrCutTableIsReadWithinItsBounds) {
  AddSystem();
  AddBoard();
  AddChassis();
  table.Add(4, {1, 3, 0, 2}, {"CPU 1", "Maker"}).Add(16, {3, 3, 6, 0, 0, 0, 0, 0, 0, 1, 0}).Add(17, {0, 0});
  const SmbiosBuilder::Bytes whole = table.table;
  auto readAll = [&] {
    machine.memory.clear();  // so that the new table's memory ends where the table does
    Install();
    SmbiosDisplay();
    SmbiosProcessor processor;
    std::string text;
    std::uint32_t number = 0;
    SmbiosGetBiosVersion(text);
    SmbiosGetMemoryDeviceSize(number);
    SmbiosGetProcessorByIndex(0, number, processor);
    cursor = 0;
    for (std::size_t i = 0; Get(kSmbiosAny) == kSuccess; ++i) ASSERT_LT(i, whole.size() / 4);
    EXPECT_EQ(cursor, kSmbiosAny);
  };
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (std::uint8_t value : SmbiosBuilder::Bytes{0x00, 0x04, 0x41, 0xFF}) {
      table.table = whole;
      table.table[at] = value;
      readAll();
    }
    table.table.assign(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at));
    readAll();
  }
}

TEST_F(Smbios, CountEndsTheWalkBeforeTheTable) {
  AddSystem();
  AddBoard();
  table.count = 1;
  Install();
  EXPECT_EQ(Get(2), smbios_status::kNotFound);
}

TEST_F(Smbios, LookUpsOfBiosAndBoard) {
  table.Add(0, {1, 2, 0, 0xE0, 3}, {"Maker", "SE5C.86B.0X.02.0001.051420", "05/14/2020"});
  AddBoard();
  Install();
  std::string text;
  EXPECT_EQ(SmbiosGetBiosVersion(text), kSuccess);
  EXPECT_EQ(text, "SE5C.86B.0X.02.0001.051420");
  EXPECT_EQ(SmbiosGetBoardProductName(text), kSuccess);
  EXPECT_EQ(text, "B2600XY");
  table = {};
  Install();
  EXPECT_EQ(SmbiosGetBiosVersion(text), uefi_status::kNotFound);
  EXPECT_EQ(SmbiosGetBoardProductName(text), uefi_status::kNotFound);
  EXPECT_EQ(text, "B2600XY");
}

TEST_F(Smbios, LargestMemoryDeviceOfTheCountedOnes) {
  auto array = [](std::uint8_t devices) {
    return SmbiosBuilder::Bytes{3, 3, 6, 0, 0, 0, 0, 0xFE, 0xFF, devices, 0};
  };
  auto device = [](std::uint16_t mib) {
    return SmbiosBuilder::Bytes{0,
                                0,
                                0xFE,
                                0xFF,
                                72,
                                0,
                                64,
                                0,
                                static_cast<std::uint8_t>(mib & 0xFF),
                                static_cast<std::uint8_t>(mib >> 8)};
  };
  std::uint32_t largest = 1;
  table.Add(17, device(4096))
      .Add(17, device(16384))
      .Add(17, device(8192))
      .Add(17, device(32767))
      .Add(16, array(3));
  Install();
  EXPECT_EQ(SmbiosGetMemoryDeviceSize(largest), kSuccess);
  EXPECT_EQ(largest, 16384u);

  table = {};
  table.Add(17, device(4096)).Add(16, array(2));
  Install();
  EXPECT_EQ(SmbiosGetMemoryDeviceSize(largest), uefi_status::kNotFound) << "one device is missing";
  table = {};
  table.Add(17, device(4096));
  Install();
  EXPECT_EQ(SmbiosGetMemoryDeviceSize(largest), uefi_status::kNotFound) << "no array";
}

SmbiosBuilder::Bytes Processor(std::uint32_t signature, std::uint8_t status, std::size_t length) {
  SmbiosBuilder::Bytes fields(length - 4, 0);
  fields[0] = 1;
  for (std::size_t i = 0; i < 4; ++i) fields[4 + i] = static_cast<std::uint8_t>(signature >> (8 * i));
  fields[0x18 - 4] = status;
  if (length > 0x23) fields[0x23 - 4] = 18;
  return fields;
}

TEST_F(Smbios, ProcessorsBySocketAndIndex) {
  table.Add(4, Processor(0x00050654, 0x41, 0x30), {"CPU 1"})
      .Add(4, Processor(0x000306F2, 0x00, 0x23), {"CPU02B7"});
  Install();
  SmbiosProcessor processor;
  ASSERT_EQ(SmbiosGetProcessorBySocket(1, processor), kSuccess);
  EXPECT_EQ(processor.Signature(), 0x00050654u);
  EXPECT_TRUE(processor.IsPopulated());
  EXPECT_TRUE(processor.hasCoreCount);
  EXPECT_EQ(processor.coreCount, 18);
  ASSERT_EQ(SmbiosGetProcessorBySocket(2, processor), kSuccess);
  EXPECT_EQ(processor.socketDesignation, "CPU02B7");
  EXPECT_FALSE(processor.IsPopulated());
  EXPECT_FALSE(processor.hasCoreCount) << "a record of SMBIOS 2.3";
  EXPECT_EQ(SmbiosGetProcessorBySocket(7, processor), uefi_status::kNotFound);

  std::uint32_t count = 0;
  EXPECT_EQ(SmbiosGetProcessorByIndex(0, count, processor), kSuccess);
  EXPECT_EQ(processor.socketDesignation, "CPU 1");
  EXPECT_EQ(SmbiosGetProcessorByIndex(2, count, processor), uefi_status::kNotFound);
  EXPECT_EQ(count, 2u);
}

TEST_F(Smbios, SocketWithoutOrWithTooManyDigits) {
  table.Add(4, Processor(1, 0x41, 0x30), {"CPU 4294967298"}).Add(4, Processor(2, 0x41, 0x30), {"CPU"});
  Install();
  SmbiosProcessor processor;
  EXPECT_EQ(SmbiosGetProcessorBySocket(2, processor), uefi_status::kNotFound);
  ASSERT_EQ(SmbiosGetProcessorBySocket(65535, processor), kSuccess);
  EXPECT_EQ(processor.Signature(), 2u);
}

TEST_F(Smbios, FieldsStandAtTheStandardsOffsets) {
  SmbiosBuilder::Bytes fields(0x40 - 4, 0);
  for (std::size_t i = 0; i < fields.size(); ++i) fields[i] = static_cast<std::uint8_t>(i + 4);
  for (std::uint8_t type : SmbiosBuilder::Bytes{0, 1, 2, 3, 4, 16, 17}) table.Add(type, fields);
  Install();
  auto next = [&](std::uint32_t type) { return cursor = 0, Get(type) == kSuccess; };
  ASSERT_TRUE(next(0));
  EXPECT_EQ(std::get<SmbiosBios>(record).extendedRomSize, 0x1918);
  ASSERT_TRUE(next(1));
  EXPECT_EQ(std::get<SmbiosSystem>(record).uuid[15], 0x17);
  ASSERT_TRUE(next(2));
  EXPECT_EQ(std::get<SmbiosBoard>(record).boardType, 0x0D);
  ASSERT_TRUE(next(3));
  EXPECT_EQ(std::get<SmbiosChassis>(record).oemDefined, 0x100F0E0Du);
  ASSERT_TRUE(next(4));
  EXPECT_EQ(std::get<SmbiosProcessor>(record).threadCount2, 0x2F2E);
  ASSERT_TRUE(next(16));
  EXPECT_EQ(std::get<SmbiosMemoryArray>(record).extendedMaximumCapacity, 0x161514131211100Fu);
  ASSERT_TRUE(next(17));
  EXPECT_EQ(std::get<SmbiosMemoryDevice>(record).configuredVoltage, 0x2726);
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
