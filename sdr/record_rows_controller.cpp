// Management controller confirmation, message channel info and OEM records (IPMI v2.0, sections 43.10
// to 43.12).
#include "sdr/record_types.h"

namespace varnok {
namespace {

constexpr std::uint8_t kInterrupt = TableIndex(SdrTable::InterruptType);

constexpr std::array<SdrField, 9> kConfirmationRows{{
    {"Device Slave Address", "6", ByteAt(6)},
    {"Device ID", "7", ByteAt(7)},
    {"Device Revision", "8", ByteAt(8)},
    {"Firmware Revision 1", "9", ByteAt(9)},
    {"Firmware Revision 2", "10", ByteAt(10)},
    {"IPMI Version", "11", ByteAt(11)},
    {"Manufacturer ID", "12:14", TripleAt(12), SdrShow::Triple},
    // Shown as the bytes stand, unlike every other number of a record.
    {"Product ID", "15:16", WordAt(15), SdrShow::SwappedWord},
    {"Device GUID", "17:32", ByteAt(17), SdrShow::Guid},
}};

constexpr std::array<SdrField, 11> kChannelRows{{
    {"Message Channel 0 info", "6", ByteAt(6)},
    {"Message Channel 1 info", "7", ByteAt(7)},
    {"Message Channel 2 info", "8", ByteAt(8)},
    {"Message Channel 3 info", "9", ByteAt(9)},
    {"Message Channel 4 info", "10", ByteAt(10)},
    {"Message Channel 5 info", "11", ByteAt(11)},
    {"Message Channel 6 info", "12", ByteAt(12)},
    {"Message Channel 7 info", "13", ByteAt(13)},
    {"Messaging Interrupt Type", "14", ByteAt(14), SdrShow::CodeText, kInterrupt},
    {"Event Message Buffer Interrupt Type", "15", ByteAt(15), SdrShow::CodeText, kInterrupt},
    {"Reserved", "16", ByteAt(16), SdrShow::Reserved},
}};

constexpr std::array<SdrField, 2> kOemRows{{
    {"Manufacturer ID", "6:8", TripleAt(6), SdrShow::Triple},
    {"OEM Data", "9:2+N", ByteAt(9), SdrShow::OemData},
}};

constexpr auto kType13Rows = JoinRows(kHeaderRows, kConfirmationRows);
constexpr auto kType14Rows = JoinRows(kHeaderRows, kChannelRows);
constexpr auto kTypeC0Rows = JoinRows(kHeaderRows, kOemRows);
static_assert(kType13Rows.size() == 13 && kType14Rows.size() == 15 && kTypeC0Rows.size() == 6);

}  // namespace

constexpr SdrTypeRows kSdrType13{.className = "CSdrType13",
                                 .make = MakeSdr<CSdrType13>,
                                 .rows = PackRows<kType13Rows>(),
                                 .lengthRule = SdrLength::Exactly,
                                 .size = 32,
                                 .lastKeyByte = 8,
                                 .nameForm = SdrNameForm::Guid,
                                 .namedField = 12,
                                 .nameFormat = {},
                                 .titleForm = SdrTitleForm::Guid,
                                 .title = "SDR Type13h"};

constexpr SdrTypeRows kSdrType14{.className = "CSdrType14",
                                 .make = MakeSdr<CSdrType14>,
                                 .rows = PackRows<kType14Rows>(),
                                 .lengthRule = SdrLength::Exactly,
                                 .size = 16,
                                 .lastKeyByte = 0,
                                 .nameForm = SdrNameForm::RecordId,
                                 .namedField = 0,
                                 .nameFormat = " BMC Message Channel Info (%04xh)",
                                 .titleForm = SdrTitleForm::Fixed,
                                 .title = "SDR Type14h"};

constexpr SdrTypeRows kSdrTypeC0{.className = "CSdrTypeC0",
                                 .make = MakeSdr<CSdrTypeC0>,
                                 .rows = PackRows<kTypeC0Rows>(),
                                 .lengthRule = SdrLength::AtMost,
                                 .size = 64,
                                 .lastKeyByte = 8,
                                 .nameForm = SdrNameForm::RecordId,
                                 .namedField = 0,
                                 .nameFormat = " OEM SDR Record (%04xh)",
                                 .titleForm = SdrTitleForm::Fixed,
                                 .title = "SDR TypeC0h"};

}  // namespace varnok
