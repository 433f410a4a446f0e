// Device locator records (IPMI v2.0, sections 43.7 to 43.9).
#include "sdr/record_types.h"

namespace varnok {
namespace {

constexpr std::uint8_t kDeviceType = TableIndex(SdrTable::DeviceType);
constexpr std::uint8_t kModifier = TableIndex(SdrTable::DeviceTypeModifier);
constexpr std::size_t kDeviceTypeField = 9;
constexpr std::size_t kControllerEntityField = 11;

/// Fields 8 to 15 of the generic and the FRU device locator.
constexpr std::array<SdrFieldRow, 8> DeviceRows(const char16_t* entity, const char16_t* instance,
                                                const char16_t* idString) {
  return {{
      {u"Reserved", u"10", ByteAt(10), SdrShow::Reserved},
      {u"Device Type", u"11", ByteAt(11), SdrShow::Code, kDeviceType},
      {u"Device Type Modifier", u"12", ByteAt(12), SdrShow::Code, kModifier},
      {entity, u"13", ByteAt(13), SdrShow::Entity},
      {instance, u"14", ByteAt(14)},
      {u"OEM", u"15", ByteAt(15)},
      {u"Device ID String Type / Length", u"16", ByteAt(16)},
      {idString, u"17 + N", ByteAt(17), SdrShow::IdString},
  }};
}

constexpr std::array<SdrFieldRow, 4> kGenericRows{{
    {u"Device Access Address", u"6", ByteAt(6)},
    {u"Device Slave Address", u"7", ByteAt(7)},
    {u"Access LUN / Bus ID", u"8", ByteAt(8)},
    {u"Address Span", u"9", ByteAt(9)},
}};

constexpr std::array<SdrFieldRow, 4> kFruRows{{
    {u"Device Access Address", u"6", ByteAt(6)},
    {u"FRU Device ID / Device Slave Address", u"7", ByteAt(7)},
    {u"Access LUN / Bus ID", u"8", ByteAt(8)},
    {u"Channel Number", u"9", ByteAt(9)},
}};

constexpr std::array<SdrFieldRow, 12> kControllerRows{{
    {u"Device Slave Address", u"6", ByteAt(6)},
    {u"Channel Number", u"7", ByteAt(7)},
    {u"Power State Notification / Global Initialization", u"8", ByteAt(8)},
    {u"Device Capabilities", u"9", ByteAt(9)},
    {u"Reserved", u"10", ByteAt(10), SdrShow::Reserved},
    {u"Reserved", u"11", ByteAt(11), SdrShow::Reserved},
    {u"Reserved", u"12", ByteAt(12), SdrShow::Reserved},
    {u"Entity ID", u"13", ByteAt(13), SdrShow::Entity},
    {u"Entity Instance", u"14", ByteAt(14)},
    {u"OEM", u"15", ByteAt(15)},
    {u"Device ID String Type / Length", u"16", ByteAt(16)},
    {u"Device ID String", u"17 + N", ByteAt(17), SdrShow::IdString},
}};

constexpr auto kType10Rows =
    JoinRows(kHeaderRows, kGenericRows, DeviceRows(u"Entity ID", u"Entity Instance", u"Device ID String"));
constexpr auto kType11Rows =
    JoinRows(kHeaderRows, kFruRows, DeviceRows(u"FRU Entity ID", u"FRU Entity Instance", u"Device String"));
constexpr auto kType12Rows = JoinRows(kHeaderRows, kControllerRows);
static_assert(kType10Rows.size() == 16 && kType11Rows.size() == 16 && kType12Rows.size() == 16);

}  // namespace

constexpr SdrTypeRows kSdrType10{.className = "CSdrType10",
                                 .make = MakeSdr<CSdrType10>,
                                 .rows = kType10Rows,
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
                                 .rows = kType11Rows,
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
                                 .rows = kType12Rows,
                                 .lengthRule = SdrLength::WithIdString,
                                 .size = 16,
                                 .lastKeyByte = 7,
                                 .nameForm = SdrNameForm::Locator,
                                 .namedField = kControllerEntityField,
                                 .nameFormat = {},
                                 .titleForm = SdrTitleForm::IdString,
                                 .title = "SDR Type12h"};

}  // namespace varnok
