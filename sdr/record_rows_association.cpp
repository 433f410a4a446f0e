// Entity association records (IPMI v2.0, sections 43.4 and 43.5).
#include "sdr/record_types.h"

namespace varnok {
namespace {

constexpr const char16_t* kEntity1 = u"Contained Entity 1 / Range 1 entity";
constexpr const char16_t* kInstance1 = u"Contained Entity 1 Instance / Range 1 first entity instance";
constexpr const char16_t* kEntity2 = u"Contained Entity 2 / Range 1 entity";
constexpr const char16_t* kInstance2 = u"Contained Entity 2 Instance / Range 1 last entity instance";
constexpr const char16_t* kEntity3 = u"Contained Entity 3 / Range 2 entity";
constexpr const char16_t* kInstance3 = u"Contained Entity 3 Instance / Range 2 first entity instance";
constexpr const char16_t* kEntity4 = u"Contained Entity 4 / Range 2 entity";
constexpr const char16_t* kInstance4 = u"Contained Entity 4 Instance / Range 2 last entity instance";

constexpr std::array<SdrFieldRow, 11> kAssociationRows{{
    {u"Container Entity ID", u"6", ByteAt(6), SdrShow::Entity},
    {u"Container Entity Instance", u"7", ByteAt(7)},
    {u"Flags", u"8", ByteAt(8)},
    {kEntity1, u"9", ByteAt(9), SdrShow::Entity},
    {kInstance1, u"10", ByteAt(10)},
    {kEntity2, u"11", ByteAt(11), SdrShow::Entity},
    {kInstance2, u"12", ByteAt(12)},
    {kEntity3, u"13", ByteAt(13), SdrShow::Entity},
    {kInstance3, u"14", ByteAt(14)},
    {kEntity4, u"15", ByteAt(15), SdrShow::Entity},
    {kInstance4, u"16", ByteAt(16)},
}};

constexpr std::array<SdrFieldRow, 27> kDeviceRelativeRows{{
    {u"Container Entity ID", u"6", ByteAt(6), SdrShow::Entity},
    {u"Container Entity Instance", u"7", ByteAt(7)},
    {u"Container Entity Device Address", u"8", ByteAt(8)},
    {u"Container Entity Device Channel", u"9", ByteAt(9)},
    {u"Flags", u"10", ByteAt(10)},
    {u"Contained Entity 1 Device Address", u"11", ByteAt(11)},
    {u"Contained Entity 1 Device Channel", u"12", ByteAt(12)},
    {kEntity1, u"13", ByteAt(13), SdrShow::Entity},
    {kInstance1, u"14", ByteAt(14)},
    {u"Contained Entity 2 Device Address", u"15", ByteAt(15)},
    {u"Contained Entity 2 Device Channel", u"16", ByteAt(16)},
    {kEntity2, u"17", ByteAt(17), SdrShow::Entity},
    {kInstance2, u"18", ByteAt(18)},
    {u"Contained Entity 3 Device Address", u"19", ByteAt(19)},
    {u"Contained Entity 3 Device Channel", u"20", ByteAt(20)},
    {kEntity3, u"21", ByteAt(21), SdrShow::Entity},
    {kInstance3, u"22", ByteAt(22)},
    {u"Contained Entity 4 Device Address", u"23", ByteAt(23)},
    {u"Contained Entity 4 Device Channel", u"24", ByteAt(24)},
    {kEntity4, u"25", ByteAt(25), SdrShow::Entity},
    {kInstance4, u"26", ByteAt(26)},
    {u"Reserved", u"27", ByteAt(27), SdrShow::Reserved},
    {u"Reserved", u"28", ByteAt(28), SdrShow::Reserved},
    {u"Reserved", u"29", ByteAt(29), SdrShow::Reserved},
    {u"Reserved", u"30", ByteAt(30), SdrShow::Reserved},
    {u"Reserved", u"31", ByteAt(31), SdrShow::Reserved},
    {u"Reserved", u"32", ByteAt(32), SdrShow::Reserved},
}};

constexpr auto kType08Rows = JoinRows(kHeaderRows, kAssociationRows);
constexpr auto kType09Rows = JoinRows(kHeaderRows, kDeviceRelativeRows);
static_assert(kType08Rows.size() == 15 && kType09Rows.size() == 31);

}  // namespace

constexpr SdrTypeRows kSdrType08{.className = "CSdrType08",
                                 .make = MakeSdr<CSdrType08>,
                                 .rows = kType08Rows,
                                 .lengthRule = SdrLength::Exactly,
                                 .size = 16,
                                 .lastKeyByte = 10,
                                 .nameForm = SdrNameForm::RecordId,
                                 .namedField = 0,
                                 .nameFormat = " Entity Association Record (%04xh)",
                                 .titleForm = SdrTitleForm::RecordId,
                                 .title = "SDR Type08h"};

constexpr SdrTypeRows kSdrType09{.className = "CSdrType09",
                                 .make = MakeSdr<CSdrType09>,
                                 .rows = kType09Rows,
                                 .lengthRule = SdrLength::Exactly,
                                 .size = 32,
                                 .lastKeyByte = 14,
                                 .nameForm = SdrNameForm::RecordId,
                                 .namedField = 0,
                                 .nameFormat = " Device-Relative Entity Association Record (%04xh)",
                                 .titleForm = SdrTitleForm::RecordId,
                                 .title = "SDR Type09h"};

}  // namespace varnok
