// Device locator records (IPMI v2.0, sections 43.7 to 43.9).
#include "sdr/record_types.h"

namespace varnok {
namespace {

constexpr std::uint8_t kDeviceType = TableIndex(SdrTable::DeviceType);
constexpr std::uint8_t kModifier = TableIndex(SdrTable::DeviceTypeModifier);
constexpr std::size_t kDeviceTypeField = 9;
constexpr std::size_t kControllerEntityField = 11;

/// Fields 8 to 15 of the generic and the FRU device locator.
constexpr std::array<SdrField, 8> DeviceRows(const char* entity, const char* instance, const char* idString) {
  return {{
      {"Reserved", "10", ByteAt(10), SdrShow::Reserved},
      {"Device Type", "11", ByteAt(11), SdrShow::Code, kDeviceType},
      {"Device Type Modifier", "12", ByteAt(12), SdrShow::Code, kModifier},
      {entity, "13", ByteAt(13), SdrShow::Entity},
      {instance, "14", ByteAt(14)},
      {"OEM", "15", ByteAt(15)},
      {"Device ID String Type / Length", "16", ByteAt(16)},
      {idString, "17 + N", ByteAt(17), SdrShow::IdString},
  }};
}

constexpr std::array<SdrField, 4> kGenericRows{{
    {"Device Access Address", "6", ByteAt(6)},
    {"Device Slave Address", "7", ByteAt(7)},
    {"Access LUN / Bus ID", "8", ByteAt(8)},
    {"Address Span", "9", ByteAt(9)},
}};

constexpr std::array<SdrField, 4> kFruRows{{
    {"Device Access Address", "6", ByteAt(6)},
    {"FRU Device ID / Device Slave Address", "7", ByteAt(7)},
    {"Access LUN / Bus ID", "8", ByteAt(8)},
    {"Channel Number", "9", ByteAt(9)},
}};

constexpr std::array<SdrField, 12> kControllerRows{{
    {"Device Slave Address", "6", ByteAt(6)},
    {"Channel Number", "7", ByteAt(7)},
    {"Power State Notification / Global Initialization", "8", ByteAt(8)},
    {"Device Capabilities", "9", ByteAt(9)},
    {"Reserved", "10", ByteAt(10), SdrShow::Reserved},
    {"Reserved", "11", ByteAt(11), SdrShow::Reserved},
    {"Reserved", "12", ByteAt(12), SdrShow::Reserved},
    {"Entity ID", "13", ByteAt(13), SdrShow::Entity},
    {"Entity Instance", "14", ByteAt(14)},
    {"OEM", "15", ByteAt(15)},
    {"Device ID String Type / Length", "16", ByteAt(16)},
    {"Device ID String", "17 + N", ByteAt(17), SdrShow::IdString},
}};

constexpr auto kType10Rows =
    JoinRows(kHeaderRows, kGenericRows, DeviceRows("Entity ID", "Entity Instance", "Device ID String"));
constexpr auto kType11Rows =
    JoinRows(kHeaderRows, kFruRows, DeviceRows("FRU Entity ID", "FRU Entity Instance", "Device String"));
constexpr auto kType12Rows = JoinRows(kHeaderRows, kControllerRows);
static_assert(kType10Rows.size() == 16 && kType11Rows.size() == 16 && kType12Rows.size() == 16);

}  // namespace

constexpr SdrTypeRows kSdrType10{.className = "CSdrType10",
                                 .make = MakeSdr<CSdrType10>,
                                 .rows = PackRows<kType10Rows>(),
                                 .lengthRule = SdrLength::WithIdString,
                                 .size = 16,
                                 .lastKeyByte = 8,
                                 .nameForm = SdrNameForm::Locator,
                                 .namedField = kDeviceTypeField,
                                 .nameFormat = {},
                                 .titleForm = SdrTitleForm::IdString,
                                 .title = "SDR Type10h"};

constexpr SdrTypeRows kSdrType11{.className = "CSdrType11",
                                 .make = MakeSdr<CSdrType11>,
                                 .rows = PackRows<kType11Rows>(),
                                 .lengthRule = SdrLength::WithIdString,
                                 .size = 16,
                                 .lastKeyByte = 9,
                                 .nameForm = SdrNameForm::Locator,
                                 .namedField = kDeviceTypeField,
                                 .nameFormat = {},
                                 .titleForm = SdrTitleForm::IdString,
                                 .title = "SDR Type11h"};

// A controller has no device type: its entity is what it is named after.
constexpr SdrTypeRows kSdrType12{.className = "CSdrType12",
                                 .make = MakeSdr<CSdrType12>,
                                 .rows = PackRows<kType12Rows>(),
                                 .lengthRule = SdrLength::WithIdString,
                                 .size = 16,
                                 .lastKeyByte = 7,
                                 .nameForm = SdrNameForm::Locator,
                                 .namedField = kControllerEntityField,
                                 .nameFormat = {},
                                 .titleForm = SdrTitleForm::IdString,
                                 .title = "SDR Type12h"};

}  // namespace varnok
