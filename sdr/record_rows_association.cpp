// Entity association records (IPMI v2.0, sections 43.4 and 43.5).
#include "sdr/record_types.h"

namespace varnok {
namespace {

constexpr const char* kEntity1 = "Contained Entity 1 / Range 1 entity";
constexpr const char* kInstance1 = "Contained Entity 1 Instance / Range 1 first entity instance";
constexpr const char* kEntity2 = "Contained Entity 2 / Range 1 entity";
constexpr const char* kInstance2 = "Contained Entity 2 Instance / Range 1 last entity instance";
constexpr const char* kEntity3 = "Contained Entity 3 / Range 2 entity";
constexpr const char* kInstance3 = "Contained Entity 3 Instance / Range 2 first entity instance";
constexpr const char* kEntity4 = "Contained Entity 4 / Range 2 entity";
constexpr const char* kInstance4 = "Contained Entity 4 Instance / Range 2 last entity instance";

constexpr std::array<SdrField, 11> kAssociationRows{{
    {"Container Entity ID", "6", ByteAt(6), SdrShow::Entity},
    {"Container Entity Instance", "7", ByteAt(7)},
    {"Flags", "8", ByteAt(8)},
    {kEntity1, "9", ByteAt(9), SdrShow::Entity},
    {kInstance1, "10", ByteAt(10)},
    {kEntity2, "11", ByteAt(11), SdrShow::Entity},
    {kInstance2, "12", ByteAt(12)},
    {kEntity3, "13", ByteAt(13), SdrShow::Entity},
    {kInstance3, "14", ByteAt(14)},
    {kEntity4, "15", ByteAt(15), SdrShow::Entity},
    {kInstance4, "16", ByteAt(16)},
}};

constexpr std::array<SdrField, 27> kDeviceRelativeRows{{
    {"Container Entity ID", "6", ByteAt(6), SdrShow::Entity},
    {"Container Entity Instance", "7", ByteAt(7)},
    {"Container Entity Device Address", "8", ByteAt(8)},
    {"Container Entity Device Channel", "9", ByteAt(9)},
    {"Flags", "10", ByteAt(10)},
    {"Contained Entity 1 Device Address", "11", ByteAt(11)},
    {"Contained Entity 1 Device Channel", "12", ByteAt(12)},
    {kEntity1, "13", ByteAt(13), SdrShow::Entity},
    {kInstance1, "14", ByteAt(14)},
    {"Contained Entity 2 Device Address", "15", ByteAt(15)},
    {"Contained Entity 2 Device Channel", "16", ByteAt(16)},
    {kEntity2, "17", ByteAt(17), SdrShow::Entity},
    {kInstance2, "18", ByteAt(18)},
    {"Contained Entity 3 Device Address", "19", ByteAt(19)},
    {"Contained Entity 3 Device Channel", "20", ByteAt(20)},
    {kEntity3, "21", ByteAt(21), SdrShow::Entity},
    {kInstance3, "22", ByteAt(22)},
    {"Contained Entity 4 Device Address", "23", ByteAt(23)},
    {"Contained Entity 4 Device Channel", "24", ByteAt(24)},
    {kEntity4, "25", ByteAt(25), SdrShow::Entity},
    {kInstance4, "26", ByteAt(26)},
    {"Reserved", "27", ByteAt(27), SdrShow::Reserved},
    {"Reserved", "28", ByteAt(28), SdrShow::Reserved},
    {"Reserved", "29", ByteAt(29), SdrShow::Reserved},
    {"Reserved", "30", ByteAt(30), SdrShow::Reserved},
    {"Reserved", "31", ByteAt(31), SdrShow::Reserved},
    {"Reserved", "32", ByteAt(32), SdrShow::Reserved},
}};

constexpr auto kType08Rows = JoinRows(kHeaderRows, kAssociationRows);
constexpr auto kType09Rows = JoinRows(kHeaderRows, kDeviceRelativeRows);
static_assert(kType08Rows.size() == 15 && kType09Rows.size() == 31);

}  // namespace

constexpr SdrTypeRows kSdrType08{.className = "CSdrType08",
                                 .make = MakeSdr<CSdrType08>,
                                 .rows = PackRows<kType08Rows>(),
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
                                 .rows = PackRows<kType09Rows>(),
                                 .lengthRule = SdrLength::Exactly,
                                 .size = 32,
                                 .lastKeyByte = 14,
                                 .nameForm = SdrNameForm::RecordId,
                                 .namedField = 0,
                                 .nameFormat = " Device-Relative Entity Association Record (%04xh)",
                                 .titleForm = SdrTitleForm::RecordId,
                                 .title = "SDR Type09h"};

}  // namespace varnok
