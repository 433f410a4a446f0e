// Full, compact and event-only sensor records (IPMI v2.0, sections 43.1 to 43.3).
#include "sdr/record_types.h"

namespace varnok {
namespace {

constexpr const char16_t* kPositiveHysteresis = u"Positive - going threshold Hysteresis value";
constexpr const char16_t* kNegativeHysteresis = u"Negative - going threshold Hysteresis value";
constexpr const char16_t* kIdLength = u"ID String Type / Length Code";
constexpr const char16_t* kIdBytes = u"ID String Bytes";
constexpr const char16_t* kSharing = u"Sensor Record Sharing";
constexpr std::uint8_t kSensorType = TableIndex(SdrTable::SensorType);
constexpr std::uint8_t kEventType = TableIndex(SdrTable::EventType);
constexpr std::uint8_t kUnit = TableIndex(SdrTable::Unit);

/// Fields 4 to 8. `unspecifiedNumber` is what sensor number FFh shows.
constexpr std::array<SdrFieldRow, 5> IdentityRows(const char16_t* unspecifiedNumber) {
  return {{
      {u"Sensor Owner ID", u"6", ByteAt(6), SdrShow::EvenByte},
      {u"Sensor Owner LUN", u"7", BitsAt(7, 1, 0)},
      {u"Sensor Number", u"8", ByteAt(8), SdrShow::SensorNumber, 0, unspecifiedNumber},
      {u"Entity ID", u"9", ByteAt(9), SdrShow::Entity},
      {u"Entity Instance", u"10", ByteAt(10)},
  }};
}

// Kept: sensor number FFh shows the format itself in types 01h and 03h; people's notes know it so.
constexpr const char16_t* kUnformattedNumber = u"%04xh";

/// Fields 9 to 18 of the full and the compact record.
constexpr std::array<SdrFieldRow, 10> kReadingRows{{
    {u"Sensor Initialization", u"11", BitsAt(11, 6, 0)},
    {u"Sensor Capabilities", u"12", ByteAt(12)},
    {u"Sensor Type", u"13", ByteAt(13), SdrShow::Code, kSensorType},
    {u"Event / Reading Type", u"14", ByteAt(14), SdrShow::Code, kEventType},
    {u"Lower Threshold Reading Mask", u"15:16", WordAt(15), SdrShow::Mask, 0, u"Assertion Event Mask"},
    {u"Upper Threshold Reading Mask", u"17:18", WordAt(17), SdrShow::Mask, 0, u"Deassertion Event Mask"},
    {u"Settable / Readable Threshold Mask", u"19:20", WordAt(19), SdrShow::SettableMask, 0,
     u"Discrete Reading Mask"},
    {u"Sensor Units 1", u"21", ByteAt(21)},
    {u"Sensor Units 2 - Base Unit", u"22", ByteAt(22), SdrShow::DecimalCode, kUnit},
    {u"Sensor Units 3 - Modifier Unit", u"23", ByteAt(23), SdrShow::DecimalCode, kUnit},
}};

constexpr std::array<SdrFieldRow, 28> kFullRows{{
    {u"Linearization", u"24", BitsAt(24, 5, 0)},
    {u"M", u"25(7:0):26(7:6)", Joined({26, 7, 6}, {25}), SdrShow::Binary, 10},
    {u"Tolerance", u"26(5:0)", BitsAt(26, 5, 0), SdrShow::Binary, 6},
    {u"B", u"27:28(7:6)", Joined({28, 7, 6}, {27}), SdrShow::Binary, 10},
    {u"Accuracy", u"28(5:0):29(7:4)", Joined({29, 7, 4}, {28, 5, 0}), SdrShow::Binary, 10},
    {u"Accuracy exponent", u"29(3:2)", BitsAt(29, 3, 2), SdrShow::Binary, 2},
    {u"Reserved", u"29(1:0)", BitsAt(29, 1, 0), SdrShow::Reserved},
    {u"R exponent", u"30(7:4)", BitsAt(30, 7, 4), SdrShow::Binary, 4},
    {u"B exponent", u"30(3:0)", BitsAt(30, 3, 0), SdrShow::Binary, 4},
    {u"Analog Characteristics Flags", u"31", ByteAt(31)},
    {u"Nominal Reading", u"32", ByteAt(32)},
    {u"Normal Maximum", u"33", ByteAt(33)},
    {u"Normal Minimum", u"34", ByteAt(34)},
    {u"Sensor Maximum Reading", u"35", ByteAt(35)},
    {u"Sensor Minimum Reading", u"36", ByteAt(36)},
    {u"Upper Non-Recoverable Threshold", u"37", ByteAt(37), SdrShow::Threshold},
    {u"Upper Critical Threshold", u"38", ByteAt(38), SdrShow::Threshold},
    {u"Upper Non-Critical Threshold", u"39", ByteAt(39), SdrShow::Threshold},
    {u"Lower Non-Recoverable Threshold", u"40", ByteAt(40), SdrShow::Threshold},
    {u"Lower Critical Threshold", u"41", ByteAt(41), SdrShow::Threshold},
    {u"Lower Non-Critical Threshold", u"42", ByteAt(42), SdrShow::Threshold},
    {kPositiveHysteresis, u"43", ByteAt(43)},
    {kNegativeHysteresis, u"44", ByteAt(44)},
    {u"Reserved", u"45", ByteAt(45), SdrShow::Reserved},
    {u"Reserved", u"46", ByteAt(46), SdrShow::Reserved},
    {u"OEM", u"47", ByteAt(47)},
    {kIdLength, u"48", ByteAt(48)},
    {kIdBytes, u"49 + N", ByteAt(49), SdrShow::IdString},
}};

constexpr std::array<SdrFieldRow, 9> kCompactRows{{
    {kSharing, u"24:25", WordAt(24), SdrShow::Word},
    {kPositiveHysteresis, u"26", ByteAt(26)},
    {kNegativeHysteresis, u"27", ByteAt(27)},
    {u"Reserved", u"28", ByteAt(28), SdrShow::Reserved},
    {u"Reserved", u"29", ByteAt(29), SdrShow::Reserved},
    {u"Reserved", u"30", ByteAt(30), SdrShow::Reserved},
    {u"OEM", u"31", ByteAt(31)},
    {kIdLength, u"32", ByteAt(32)},
    {kIdBytes, u"33 + N", ByteAt(33), SdrShow::IdString},
}};

// Kept: the list names type and event type twice and places what follows two bytes too late; the values are
// taken from where they stand. The last two rows are not among the fields and only written.
constexpr std::array<SdrFieldRow, 9> kEventOnlyRows{{
    {u"Sensor Type", u"11", ByteAt(11), SdrShow::Code, kSensorType},
    {u"Event / Reading Type", u"12", ByteAt(12), SdrShow::Code, kEventType},
    {u"Sensor Type", u"13", ByteAt(11), SdrShow::Code, kSensorType},
    {u"Event / Reading Type", u"14", ByteAt(12), SdrShow::Code, kEventType},
    {kSharing, u"15:16", WordAt(13), SdrShow::Word},
    {u"Reserved", u"17", ByteAt(15), SdrShow::Reserved},
    {u"OEM", u"18", ByteAt(16)},
    {kIdLength, u"17", ByteAt(17)},
    {kIdBytes, u"18 + N", ByteAt(18), SdrShow::IdString},
}};

constexpr auto kType01Rows = JoinRows(kHeaderRows, IdentityRows(kUnformattedNumber), kReadingRows, kFullRows);
constexpr auto kType02Rows = JoinRows(kHeaderRows, IdentityRows(u"Reserved"), kReadingRows, kCompactRows);
constexpr auto kType03Rows = JoinRows(kHeaderRows, IdentityRows(kUnformattedNumber), kEventOnlyRows);
static_assert(kType01Rows.size() == 47 && kType02Rows.size() == 28 && kType03Rows.size() == 16 + 2);

}  // namespace

constexpr SdrTypeRows kSdrType01{.className = "CSdrType01",
                                 .make = MakeSdr<CSdrType01>,
                                 .rows = kType01Rows,
                                 .lengthRule = SdrLength::WithIdString,
                                 .size = 48,
                                 .lastKeyByte = 8,
                                 .nameForm = SdrNameForm::Sensor,
                                 .namedField = 11,
                                 .nameFormat = {},
                                 .titleForm = SdrTitleForm::IdStringIfAny,
                                 .title = "SDR Type01h"};

constexpr SdrTypeRows kSdrType02{.className = "CSdrType02",
                                 .make = MakeSdr<CSdrType02>,
                                 .rows = kType02Rows,
                                 .lengthRule = SdrLength::WithIdString,
                                 .size = 32,
                                 .lastKeyByte = 8,
                                 .nameForm = SdrNameForm::Sensor,
                                 .namedField = 11,
                                 .nameFormat = {},
                                 .titleForm = SdrTitleForm::IdStringIfAny,
                                 .title = "SDR Type02h"};

constexpr SdrTypeRows kSdrType03{.className = "CSdrType03",
                                 .make = MakeSdr<CSdrType03>,
                                 .rows = kType03Rows,
                                 .fileOnlyRows = 2,
                                 .lengthRule = SdrLength::WithIdString,
                                 .size = 17,
                                 .lastKeyByte = 8,
                                 .nameForm = SdrNameForm::Sensor,
                                 .namedField = 9,
                                 .nameFormat = {},
                                 .titleForm = SdrTitleForm::IdStringIfAny,
                                 // Kept: the event-only record goes under the compact record's title.
                                 .title = "SDR Type02h"};

}  // namespace varnok
