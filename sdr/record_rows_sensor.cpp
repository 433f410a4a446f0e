// Full, compact and event-only sensor records (IPMI v2.0, sections 43.1 to 43.3).
#include "sdr/record_types.h"

namespace varnok {
namespace {

constexpr const char* kPositiveHysteresis = "Positive - going threshold Hysteresis value";
constexpr const char* kNegativeHysteresis = "Negative - going threshold Hysteresis value";
constexpr const char* kIdLength = "ID String Type / Length Code";
constexpr const char* kIdBytes = "ID String Bytes";
constexpr const char* kSharing = "Sensor Record Sharing";
constexpr std::uint8_t kSensorType = TableIndex(SdrTable::SensorType);
constexpr std::uint8_t kEventType = TableIndex(SdrTable::EventType);
constexpr std::uint8_t kUnit = TableIndex(SdrTable::Unit);

/// Fields 4 to 8. `unspecifiedNumber` is what sensor number FFh shows.
constexpr std::array<SdrField, 5> IdentityRows(const char* unspecifiedNumber) {
  return {{
      {"Sensor Owner ID", "6", ByteAt(6), SdrShow::EvenByte},
      {"Sensor Owner LUN", "7", BitsAt(7, 1, 0)},
      {"Sensor Number", "8", ByteAt(8), SdrShow::SensorNumber, 0, unspecifiedNumber},
      {"Entity ID", "9", ByteAt(9), SdrShow::Entity},
      {"Entity Instance", "10", ByteAt(10)},
  }};
}

// Kept: sensor number FFh shows the format itself in types 01h and 03h; people's notes know it so.
constexpr const char* kUnformattedNumber = "%04xh";

/// Fields 9 to 18 of the full and the compact record.
constexpr std::array<SdrField, 10> kReadingRows{{
    {"Sensor Initialization", "11", BitsAt(11, 6, 0)},
    {"Sensor Capabilities", "12", ByteAt(12)},
    {"Sensor Type", "13", ByteAt(13), SdrShow::Code, kSensorType},
    {"Event / Reading Type", "14", ByteAt(14), SdrShow::Code, kEventType},
    {"Lower Threshold Reading Mask", "15:16", WordAt(15), SdrShow::Mask, 0, "Assertion Event Mask"},
    {"Upper Threshold Reading Mask", "17:18", WordAt(17), SdrShow::Mask, 0, "Deassertion Event Mask"},
    {"Settable / Readable Threshold Mask", "19:20", WordAt(19), SdrShow::SettableMask, 0,
     "Discrete Reading Mask"},
    {"Sensor Units 1", "21", ByteAt(21)},
    {"Sensor Units 2 - Base Unit", "22", ByteAt(22), SdrShow::DecimalCode, kUnit},
    {"Sensor Units 3 - Modifier Unit", "23", ByteAt(23), SdrShow::DecimalCode, kUnit},
}};

constexpr std::array<SdrField, 28> kFullRows{{
    {"Linearization", "24", BitsAt(24, 5, 0)},
    {"M", "25(7:0):26(7:6)", Joined({26, 7, 6}, {25}), SdrShow::Binary, 10},
    {"Tolerance", "26(5:0)", BitsAt(26, 5, 0), SdrShow::Binary, 6},
    {"B", "27:28(7:6)", Joined({28, 7, 6}, {27}), SdrShow::Binary, 10},
    {"Accuracy", "28(5:0):29(7:4)", Joined({29, 7, 4}, {28, 5, 0}), SdrShow::Binary, 10},
    {"Accuracy exponent", "29(3:2)", BitsAt(29, 3, 2), SdrShow::Binary, 2},
    {"Reserved", "29(1:0)", BitsAt(29, 1, 0), SdrShow::Reserved},
    {"R exponent", "30(7:4)", BitsAt(30, 7, 4), SdrShow::Binary, 4},
    {"B exponent", "30(3:0)", BitsAt(30, 3, 0), SdrShow::Binary, 4},
    {"Analog Characteristics Flags", "31", ByteAt(31)},
    {"Nominal Reading", "32", ByteAt(32)},
    {"Normal Maximum", "33", ByteAt(33)},
    {"Normal Minimum", "34", ByteAt(34)},
    {"Sensor Maximum Reading", "35", ByteAt(35)},
    {"Sensor Minimum Reading", "36", ByteAt(36)},
    {"Upper Non-Recoverable Threshold", "37", ByteAt(37), SdrShow::Threshold},
    {"Upper Critical Threshold", "38", ByteAt(38), SdrShow::Threshold},
    {"Upper Non-Critical Threshold", "39", ByteAt(39), SdrShow::Threshold},
    {"Lower Non-Recoverable Threshold", "40", ByteAt(40), SdrShow::Threshold},
    {"Lower Critical Threshold", "41", ByteAt(41), SdrShow::Threshold},
    {"Lower Non-Critical Threshold", "42", ByteAt(42), SdrShow::Threshold},
    {kPositiveHysteresis, "43", ByteAt(43)},
    {kNegativeHysteresis, "44", ByteAt(44)},
    {"Reserved", "45", ByteAt(45), SdrShow::Reserved},
    {"Reserved", "46", ByteAt(46), SdrShow::Reserved},
    {"OEM", "47", ByteAt(47)},
    {kIdLength, "48", ByteAt(48)},
    {kIdBytes, "49 + N", ByteAt(49), SdrShow::IdString},
}};

constexpr std::array<SdrField, 9> kCompactRows{{
    {kSharing, "24:25", WordAt(24), SdrShow::Word},
    {kPositiveHysteresis, "26", ByteAt(26)},
    {kNegativeHysteresis, "27", ByteAt(27)},
    {"Reserved", "28", ByteAt(28), SdrShow::Reserved},
    {"Reserved", "29", ByteAt(29), SdrShow::Reserved},
    {"Reserved", "30", ByteAt(30), SdrShow::Reserved},
    {"OEM", "31", ByteAt(31)},
    {kIdLength, "32", ByteAt(32)},
    {kIdBytes, "33 + N", ByteAt(33), SdrShow::IdString},
}};

// Kept: the list names type and event type twice and places what follows two bytes too late; the values are
// taken from where they stand. The last two rows are not among the fields and only written.
constexpr std::array<SdrField, 9> kEventOnlyRows{{
    {"Sensor Type", "11", ByteAt(11), SdrShow::Code, kSensorType},
    {"Event / Reading Type", "12", ByteAt(12), SdrShow::Code, kEventType},
    {"Sensor Type", "13", ByteAt(11), SdrShow::Code, kSensorType},
    {"Event / Reading Type", "14", ByteAt(12), SdrShow::Code, kEventType},
    {kSharing, "15:16", WordAt(13), SdrShow::Word},
    {"Reserved", "17", ByteAt(15), SdrShow::Reserved},
    {"OEM", "18", ByteAt(16)},
    {kIdLength, "17", ByteAt(17)},
    {kIdBytes, "18 + N", ByteAt(18), SdrShow::IdString},
}};

constexpr auto kType01Rows = JoinRows(kHeaderRows, IdentityRows(kUnformattedNumber), kReadingRows, kFullRows);
constexpr auto kType02Rows = JoinRows(kHeaderRows, IdentityRows("Reserved"), kReadingRows, kCompactRows);
constexpr auto kType03Rows = JoinRows(kHeaderRows, IdentityRows(kUnformattedNumber), kEventOnlyRows);
static_assert(kType01Rows.size() == 47 && kType02Rows.size() == 28 && kType03Rows.size() == 16 + 2);

}  // namespace

constexpr SdrTypeRows kSdrType01{.className = "CSdrType01",
                                 .make = MakeSdr<CSdrType01>,
                                 .rows = PackRows<kType01Rows>(),
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
                                 .rows = PackRows<kType02Rows>(),
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
                                 .rows = PackRows<kType03Rows>(),
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
