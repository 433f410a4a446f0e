// Devices' names, boards as folders, and identities as ipmitool shows them.
#include "boards/folder.h"

#include "boards/identity_text.h"
#include "boards/snapshot/save.h"
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

using namespace boards;

TEST(DeviceNames, AreReadAsTheyAreWritten) {
  using enum DeviceKind;
  const struct {
    const char* name;
    const char* file;
    DeviceAddress address;
  } rows[] = {
      {"0", "fru-0.bin", {}},
      {"254", "fru-254.bin", {.id = 254}},
      {"2@C0", "fru-2@C0.bin", {.controller = 0xC0, .id = 2}},
      {"2@2C", "fru-2@2C.bin", {.controller = 0x2C, .channel = 6, .id = 2}},
      {"2@2C.0", "fru-2@2C.0.bin", {.controller = 0x2C, .channel = 0, .id = 2}},
      {"AT24C02:03:A0", "AT24C02-03-A0.bin", {.kind = At24c02, .bus = 3, .slave = 0xA0}},
      {"DS1624S:05:90@C0.11",
       "DS1624S-05-90@C0.11.bin",
       {.kind = Ds1624s, .controller = 0xC0, .channel = 11, .bus = 5, .slave = 0x90}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NameOf(row.address), row.name);
    EXPECT_EQ(FileNameOf(row.address), row.file);
    EXPECT_EQ(ParseDeviceName(row.name), row.address) << row.name;
    EXPECT_EQ(ParseFileName(row.file), row.address) << row.file;
  }
  EXPECT_EQ(ParseFileName("FRU-2@c0.BIN"), rows[2].address) << "a FAT volume may show names so";
  for (const char* name : {"", "255", "-1", "0x1", "2@", "2@C1", "2@C0.", "2@C0.16", "2@C0 ", "AT24C02:03",
                           "AT24C02:03:A1", "AT24C04:03:A0", "AT24C02-03-A0"})
    EXPECT_EQ(ParseDeviceName(name), std::nullopt) << name;
}

class Folder : public BoardTest {};

TEST_F(Folder, IsReadAsItWasSaved) {
  Board saved;
  saved.description = "a \"board\" of \x07 and \xE9";
  saved.bmc = {kBmc, 0, "BMC",
               Identity{0x21, 2, true, 3, 0x61, 0x51, 0x9F, 0x0A0B0C, 0x4315, {1, 2, 3, 4}, true, true}};
  saved.controllers = {{0xC0, 0, "Hot-Swap", Identity{.deviceId = 0x31}}, {0x2C, 6, "", Identity{}}};
  saved.devices = {{.bytes = {1, 2, 3}, .isReadOnly = true},
                   {.address = *ParseDeviceName("7"), .bytes = Bytes(64, 0xAA), .isWordAccess = true},
                   {.address = *ParseDeviceName("AT24C02:03:A0"), .bytes = Bytes(128, 1)},
                   {.address = *ParseDeviceName("0@C0"), .bytes = {}},
                   {.address = *ParseDeviceName("DS1624S:05:90@2C"), .bytes = Bytes(256, 2)}};
  saved.records = {{1, 0, 0x51, 0xC0, 2, 8, 9}, {4, 0, 0x51, 0xC0, 0}};
  saved.sensors = {{0x30, 0, {0x10, 0xC0}}, {0x31, 0xCD, {}}};
  std::string error;
  ASSERT_TRUE(SaveFolder(folder / "b", saved, error)) << error;
  Board read;
  ASSERT_TRUE(LoadFolder(folder / "b", read, error)) << error;
  EXPECT_EQ(BoardJson(saved).substr(4, 49), "\"description\": \"a \\\"board\\\" of \\u0007 and \\u00E9\"");
  EXPECT_EQ(read.bmc.identity, saved.bmc.identity);
  ASSERT_EQ(read.controllers.size(), 2u);
  EXPECT_EQ(read.FindController(0xC0, 0)->name, "Hot-Swap");
  EXPECT_EQ(read.FindController(0x2C, 6)->identity, saved.controllers[1].identity);
  ASSERT_EQ(read.devices.size(), saved.devices.size());
  for (const Device& device : saved.devices) {
    const Device* same = read.Find(device.address);
    ASSERT_NE(same, nullptr) << NameOf(device.address);
    EXPECT_EQ(same->bytes, device.bytes);
    EXPECT_EQ(same->isWordAccess, device.isWordAccess);
    EXPECT_EQ(same->isReadOnly, device.isReadOnly);
  }
  EXPECT_EQ(read.records, saved.records);
  EXPECT_EQ(read.sensors, saved.sensors);
  EXPECT_TRUE(read.smbios.empty());
  EXPECT_FALSE(SaveFolder(folder / "b", saved, error));
  EXPECT_EQ(error, (folder / "b").string() + ": holds a board already; name a new folder");

  saved.hasRepository = false;
  ASSERT_TRUE(SaveFolder(folder / "c", saved, error)) << error;
  ASSERT_TRUE(LoadFolder(folder / "c", read, error)) << error;
  EXPECT_FALSE(read.hasRepository);
}

TEST(IdentityText, IsWhatIpmitoolShows) {
  const std::string text =
      "Device ID                 : 33\nDevice Revision           : 2\nFirmware Revision         : 2.61\n"
      "IPMI Version              : 1.5\nManufacturer ID           : 123456\nManufacturer Name         : Unknown (0x1E240)\n"
      "Product ID                : 17170 (0x4312)\nProduct Name              : Unknown (0x4312)\n"
      "Device Available          : yes\nProvides Device SDRs      : yes\nAdditional Device Support :\n"
      "    Sensor Device\n    FRU Inventory Device\n    Chassis Device\nAux Firmware Rev Info     : \n"
      "    0x01\n    0x12\n    0x02\n    0x07\n";
  Identity identity;
  std::string error;
  ASSERT_TRUE(ReadIdentityText(text, identity, error)) << error;
  const Identity expected{33, 2, true, 2, 0x61, 0x51, 0x89, 123456, 0x4312, {1, 0x12, 2, 7}, true, false};
  EXPECT_EQ(identity, expected);

  auto without = [&](std::string_view line) {
    std::string rest = text;
    return rest.erase(rest.find(line), rest.find('\n', rest.find(line)) + 1 - rest.find(line));
  };
  EXPECT_FALSE(ReadIdentityText(without("Product ID"), identity, error));
  EXPECT_EQ(error, "lacks the device ID, the manufacturer ID or the product ID");
  EXPECT_TRUE(ReadIdentityText(without("    0x07"), identity, error)) << "a BMC may give fewer";
  EXPECT_FALSE(identity.hasAuxiliary);
  for (const auto& [good, bad, line] : {std::tuple("2.61", "2", 3),
                                        {": 123456", ": 16777216", 5},
                                        {"0x07\n", "0x107\n", 19},
                                        {"0x07\n", "0x07\n    0x08\n", 20}}) {
    std::string wrong = text;
    wrong.replace(wrong.find(good), std::string_view(good).size(), bad);
    EXPECT_FALSE(ReadIdentityText(wrong, identity, error)) << bad;
    EXPECT_TRUE(error.starts_with("line " + std::to_string(line) + ": \"")) << error;
  }
}

}  // namespace
}  // namespace varnok::testing
