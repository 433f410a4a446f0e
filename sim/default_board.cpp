#include "sim/default_board.h"

#include <chrono>
#include <string_view>

#include "sim/fru_builder.h"

namespace varnok::sim {
namespace {

constexpr std::string_view kConfig = R"({
  "description": "Hearth S2, a two-socket server board of Varnok Works",
  "clock": {"start": "2026-01-01T08:00:00", "exchangeMicroseconds": 1000},
  "bmc": {
    "identity": {
      "deviceId": "0x20",
      "deviceRevision": 1,
      "firmwareMajor": 1,
      "firmwareMinor": "0x05",
      "ipmiVersion": "2.0",
      "additionalSupport": "0xBF",
      "manufacturerId": "0x01E240",
      "productId": "0x4311",
      "auxiliary": ["0x01", "0x12", "0x02", "0x07"]
    },
    "transferMode": {"active": false, "key": "OKAPI"},
    "coldResetMilliseconds": 12000,
    "sdrs": {"file": "sdr.bin", "capacity": 32768, "eraseMilliseconds": 500},
    "frus": [
      {"id": 0, "file": "board.bin", "size": 1024},
      {"id": 1, "file": "spare.bin", "size": 256},
      {"id": 2, "file": "riser.bin", "size": 2048}
    ],
    "eeproms": [
      {"kind": "AT24C02", "bus": "0x03", "address": "0xA0", "file": "supply.bin", "size": 256},
      {"kind": "DS1624S", "bus": "0x05", "address": "0x90", "file": "panel.bin", "size": 256}
    ],
    "sensors": [
      {"number": "0x30", "reading": ["0xBE", "0xC0", "0xC0"]},
      {"number": "0x40", "reading": ["0x64", "0xC0", "0xC0"]},
      {"number": "0x60", "reading": ["0x00", "0xC0", "0x80", "0x80"]},
      {"number": "0x61", "reading": ["0x00", "0xC0", "0x80", "0x80"]},
      {"number": "0x62", "reading": ["0x00", "0xC0", "0x01", "0x80"]},
      {"number": "0x63", "reading": ["0x00", "0xC0", "0x01", "0x80"]},
      {"number": "0x66", "reading": ["0x00", "0xC0", "0x00", "0x80"]},
      {"number": "0x6B", "reading": ["0x00", "0xE0", "0x00", "0x80"]}
    ],
    "lanParameters": [
      {"channel": 1, "parameter": 3, "data": [192, 0, 2, 20]},
      {"channel": 1, "parameter": 5, "data": ["0x02", "0x56", "0x57", "0x10", "0x20", "0x30"]},
      {"channel": 3, "parameter": "0xC3", "data": ["0x00", "0x01"]}
    ],
    "oem": [
      {"command": "0x14", "data": ["0x0F", 1], "answer": ["0x03"]},
      {"command": "0x14", "data": ["0x0F", 2], "answer": ["0x01"]},
      {"command": "0x93", "answer": ["0x2E"]},
      {"command": "0x94", "answer": ["0x03"]},
      {"command": "0x97", "data": [1], "answer": ["0x5A"]},
      {"command": "0x97", "data": [2], "answer": ["0x5A"]}
    ],
    "keyValues": [
      {"key": "Chassis", "value": "2U-12"},
      {"key": "Region", "value": "EU"}
    ]
  },
  "controllers": [
    {
      "name": "hot-swap controller",
      "address": "0xC0",
      "channel": 0,
      "identity": {"deviceId": "0x31", "firmwareMajor": 2, "firmwareMinor": "0x10", "productId": "0x0C01"},
      "coldResetMilliseconds": 3000,
      "frus": [{"id": 0, "file": "backplane.bin", "size": 256}]
    },
    {
      "name": "power controller",
      "address": "0x2C",
      "channel": 6,
      "identity": {"deviceId": "0x50", "firmwareMajor": 4, "firmwareMinor": "0x01", "productId": "0x0B01"},
      "coldResetMilliseconds": 5000
    }
  ],
  "smbios": "smbios.bin"
}
)";

/// The board area's manufacturing time: minutes since 1996-01-01 00:00.
constexpr std::uint32_t Minutes(int year, int month, int day, int hour, int minute) {
  using namespace std::chrono;
  const auto days =
      sys_days(std::chrono::year(year) / month / day) - sys_days(std::chrono::year(1996) / 1 / 1);
  return static_cast<std::uint32_t>(minutes(days + hours(hour) + minutes(minute)).count());
}

void AppendWord(Bytes& bytes, unsigned value) {
  bytes.push_back(static_cast<std::uint8_t>(value));
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

/// DC Load record (definition section 18.3): voltages in 10 mV, ripple in mV, currents in mA.
FruRecord DcLoad(std::uint8_t output, unsigned nominal, unsigned low, unsigned high, unsigned current) {
  Bytes data = {output};
  for (unsigned value : {nominal, low, high, 120u, 0u, current}) AppendWord(data, value);
  return {0x02, data};
}

/// OEM record: manufacturer ID, least significant byte first, then text.
FruRecord OemText(std::string_view text) {
  Bytes data = {0x40, 0xE2, 0x01};
  data.insert(data.end(), text.begin(), text.end());
  return {0xC0, data};
}

Bytes SystemBoard() {
  FruLayout layout;
  layout.internalUse = {0x53, 0x32, 0x00, 0x03, 0x10, 0x27, 0x00, 0x00,
                        0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
  layout.chassis = {"VW-CH2U-12", "VWCH25060417", "2U rack, 12 bays", "Rail kit VW-RK2"};
  layout.boardMinutes = Minutes(2025, 6, 10, 8, 30);
  layout.board = {"Varnok Works",     "Hearth S2 Server Board", "VWSB25061234",  "VW-S2-MB-R3",
                  "hearth_s2_r3.fru", "MAC 02:56:57:10:20:30",  "Line 4 Shift 2"};
  layout.product = {"Varnok Works", "Hearth S2-2U", "VW-S2-2U-12LFF",   "R3",
                    "VWS225060417", "ASSET-000417", "hearth_s2_r3.fru", "Configuration B"};
  layout.records = {DcLoad(1, 1200, 1140, 1260, 40000), OemText("Hearth S2 factory test passed")};
  return BuildFruImage(layout, 1024);
}

Bytes Riser() {
  FruLayout layout;
  layout.boardMinutes = Minutes(2025, 5, 22, 14, 5);
  layout.board = {"Varnok Works", "Hearth S2 Riser Card", "VWRC25052201", "VW-S2-RC-R1", "riser_r1.fru"};
  layout.product = {"Varnok Works", "Hearth S2 Riser", "VW-S2-RC", "R1", "VWRC25052201", "", "riser_r1.fru"};
  for (int slot = 1; slot <= 6; ++slot) {
    layout.product.emplace_back("Slot " + std::to_string(slot) + " PCIe x8, 75 W, full height");
  }
  // Records fill the device well past its first KiB.
  for (int slot = 1; slot <= 24; ++slot) {
    layout.records.push_back(OemText("Lane map of slot " + std::to_string(slot) + ": 0-7 to socket " +
                                     std::to_string(1 + slot % 2)));
  }
  return BuildFruImage(layout, 2048);
}

Bytes Backplane() {
  FruLayout layout;
  layout.boardMinutes = Minutes(2025, 4, 2, 9, 0);
  layout.board = {"Varnok Works",  "Hearth S2 Backplane", "VWBP25040277",
                  "VW-S2-BP12-R2", "bp12_r2.fru",         "12 x SAS"};
  return BuildFruImage(layout, 256);
}

Bytes PowerSupply() {
  FruLayout layout;
  layout.product = {"Varnok Works", "800 W Supply", "VW-PS800-R4", "R4", "VWPS25033121", "", "ps800_r4.fru"};
  layout.records = {DcLoad(1, 1200, 1176, 1224, 66600)};
  return BuildFruImage(layout, 256);
}

Bytes FrontPanel() {
  FruLayout layout;
  layout.boardMinutes = Minutes(2025, 3, 14, 16, 45);
  layout.board = {"Varnok Works", "Hearth Front Panel", "VWFP25031402", "VW-FP-R1", "fp_r1.fru"};
  return BuildFruImage(layout, 256);
}

}  // namespace

std::vector<DefaultFile> DefaultBoardImages() {
  return {{"board.bin", SystemBoard()},   {"spare.bin", Bytes(256, 0xFF)},    {"riser.bin", Riser()},
          {"backplane.bin", Backplane()}, {"supply.bin", PowerSupply()},      {"panel.bin", FrontPanel()},
          {"sdr.bin", DefaultSdrs()},     {"smbios.bin", DefaultSmbiosDump()}};
}

Bytes DefaultBoardConfig() {
  return {kConfig.begin(), kConfig.end()};
}

}  // namespace varnok::sim
