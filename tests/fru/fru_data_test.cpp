#include "fru/fru_data.h"

#include <gtest/gtest.h>

#include "app/services/trace.h"
#include "fru/fru_manager.h"
#include "tests/fru/images.h"
#include "tests/fru/memory_fru.h"

namespace varnok {
namespace {

using namespace testing;

const std::string kUnexpectedText = "An unexpected error occurred while accessing FRUs.";
const std::string kUnsupportedText = "A request was made of a unsupported FRU feature.";

std::string FileText(const Bytes& image) {
  std::string text =
      "_LF_NAME 'a'\n_LF_VERSION '1'\n_LF_FMT_VER '1'\n_IPMI_VERSION '2'\n_FRU (\n_START_ADDR 0\n_DATA_LEN A9\n";
  const std::pair<const char*, std::pair<std::size_t, std::size_t>> blocks[] = {
      {"_SEE_COMMON", {0, 8}},  {"_SEE_INTERNAL", {8, 8}},   {"_SEE_CHASSIS", {16, 40}},
      {"_SEE_BOARD", {56, 48}}, {"_SEE_PRODUCT", {104, 48}}, {"_SEE_MULTIREC", {152, 17}}};
  for (const auto& [tag, place] : blocks) {
    text += std::string(tag) + "\n";
    for (std::size_t i = 0; i < place.second; ++i) text += Format("%02X ", image[place.first + i]);
    text += "\n";
  }
  return text + ")\n";
}

class FruFront : public ::testing::Test {
 protected:
  void SetUp() override {
    FruData::Reset();
    ASSERT_EQ(FruData::Initialize(), kSuccess);
  }
  void TearDown() override { FruData::Reset(); }

  void LoadSystem() {
    bool isInvalid = true;
    ASSERT_EQ(FruData::LoadFruAtAddress({}, isInvalid), kSuccess) << LastFruError();
    ASSERT_FALSE(isInvalid);
    ASSERT_EQ(FruData::SelectList(FruList::System), kSuccess);
    ASSERT_EQ(FruData::SelectFruByAddress({}), kSuccess);
  }
  void LoadFile(const Bytes& image) {
    machine.files["a.fru"] = FileText(image);
    ASSERT_EQ(FruData::LoadConfigurationFromFile("a.fru"), kSuccess) << LastFruError();
  }
  void Select(FruAreaId area) { ASSERT_EQ(FruData::SelectAreaEnum(area), kSuccess); }
  /// The status, with the text that belongs to it.
  void ExpectFailure(Status status, Status expected, std::string_view text) {
    EXPECT_EQ(status, expected) << text;
    EXPECT_EQ(LastFruError(), text);
  }

  TestFirmware machine;
  MemoryFru device{machine, FullImage()};
  std::uint32_t number = 0;
  const std::uint8_t* data = nullptr;
  bool flag = false;
};

TEST_F(FruFront, ChecksItsStateInOrder) {
  FruData::Reset();
  ExpectFailure(FruData::SelectList(FruList::System), fru_status::kNotInitialized, kUnexpectedText);
  machine.FailPoolAllocation(1);
  EXPECT_EQ(FruData::Initialize(), fru_status::kInitializeFailed);
  EXPECT_EQ(FruData::SetPagingMode(true), fru_status::kNotInitialized);
  ASSERT_EQ(FruData::Initialize(), kSuccess);
  EXPECT_EQ(LastFruError(), "");
  ExpectFailure(FruData::SelectFruByAddress({}), fru_status::kNoListLoaded, kUnexpectedText);
  ExpectFailure(FruData::GetAreaSize(number), fru_status::kNoListLoaded, kUnexpectedText);
  FruDeviceAddress address;
  EXPECT_EQ(FruData::GetFruAddress(address), fru_status::kNoListLoaded);
  EXPECT_EQ(address.nvsType, nvs_type::kRefused);
  EXPECT_EQ(address.bus + address.controller + address.deviceAddress, 0);
  LoadSystem();
  ExpectFailure(FruData::SelectList(FruList::None), fru_status::kNoSuchItem, kUnexpectedText);
  ExpectFailure(FruData::GetAreaSize(number), fru_status::kNothingSelected, kUnexpectedText);
  ASSERT_EQ(FruData::SelectList(FruList::System), kSuccess);
  ExpectFailure(FruData::HasBoardArea(flag), fru_status::kNothingSelected, kUnexpectedText);
  ExpectFailure(FruData::SelectFruByAddress({.deviceId = 9, .displayName = {}}), fru_status::kNoSuchItem,
                "A FRU was requested which does not exist on the system.");
  TheFruManager()->fru = 1;
  ExpectFailure(FruData::HasBoardArea(flag), fru_status::kNoSuchItem, kUnexpectedText);
}

TEST_F(FruFront, EveryOperationOfItsStartIsTraced) {
  const char16_t* text = nullptr;
  const std::vector<std::pair<std::string, std::function<Status()>>> operations = {
      {"SetProgressCallback", [] { return FruData::SetProgressCallback(nullptr); }},
      {"SetDisplayHexCallback", [] { return FruData::SetDisplayHexCallback(nullptr); }},
      {"SetOutputFile", [] { return FruData::SetOutputFile(""); }},
      {"SetPagingMode", [] { return FruData::SetPagingMode(false); }},
      {"GetLastErrorMessage", [&] { return FruData::GetLastErrorMessage(text); }},
  };
  const char* everything[] = {"varnok", "-debug3"};
  TraceSelectLevel(2, everything);
  for (const auto& [name, operation] : operations) {
    std::size_t before = machine.TraceLines().size();
    EXPECT_EQ(operation(), kSuccess) << name;
    std::vector<std::string> lines = machine.TraceLines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(lines,
              (std::vector<std::string>{"FruData::" + name + " [ENTRY]", "FruData::" + name + " [EXIT]"}));
  }
  FruData::Reset();
  for (const auto& [name, operation] : operations) {
    EXPECT_EQ(operation(), fru_status::kNotInitialized) << name;
    std::vector<std::string> lines = machine.TraceLines();
    EXPECT_EQ(lines[lines.size() - 2], "FruData::" + name + " - Unexpected");
  }
  const char* failures[] = {"varnok", "-debug1"};
  TraceSelectLevel(2, failures);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(Narrow(text), kUnexpectedText);
}

TEST_F(FruFront, MemoryThatRunsOutHasAStatusAtEachDoor) {
  const std::string text = "There is not enough memory to complete FRU updates.";
  auto failing = [&](auto operation) {
    machine.FailPoolAllocation(1);
    Status status = operation();
    machine.FailPoolAllocation(0);
    return status;
  };
  ExpectFailure(failing([&] { return FruData::LoadFruAtAddress({}, flag); }), fru_status::kMultiRecordMemory,
                text);
  ExpectFailure(failing([&] { return FruData::SetOutputFile("FRU.TMP"); }), fru_status::kMultiRecordMemory,
                text);
  ExpectFailure(failing([&] { return FruData::LoadConfigurationFromFile("a.fru"); }),
                fru_status::kOutOfMemory, text);
  ExpectFailure(failing([&] { return FruData::DisplaySelectedFru(); }), fru_status::kOutOfMemory, text);
}

TEST_F(FruFront, KeepsAnImageThatCouldNotBeRead) {
  device.image = Damaged(103, 0);
  EXPECT_EQ(FruData::LoadFruAtAddress({}, flag), fru_status::kBoardInfoArea);
  EXPECT_TRUE(flag);
  ASSERT_EQ(FruData::SelectList(FruList::System), kSuccess);
  EXPECT_EQ(FruData::SelectFruByAddress({}), kSuccess);
  Select(FruAreaId::ProductInfoArea);
  ASSERT_EQ(FruData::SelectFieldEnum(FruFieldId::ProductName), kSuccess);
  ExpectFailure(FruData::GetFieldDataValue(data, number), fru_status::kGetFieldFailed,
                "An error occurred getting a field from the FRU product area.");
}

TEST_F(FruFront, FindsADeviceByItsHeader) {
  EXPECT_EQ(FruData::FindFruAtAddressAndChecksumHeader({}), kSuccess);
  EXPECT_EQ(device.log.size(), 1u);
  device.image[7] = 0;
  ExpectFailure(FruData::FindFruAtAddressAndChecksumHeader({}), fru_status::kInvalidHeader,
                "Invalid FRU header area in system FRU ID(0) Addr(20) SlaveAddr(20) Bus(FF).");
  device.image[0] = 0xFF;
  ExpectFailure(FruData::FindFruAtAddressAndChecksumHeader({}), fru_status::kNotIpmiFru,
                "The selected FRU is not an IPMI FRU.");
  device.image.resize(4);
  ExpectFailure(FruData::FindFruAtAddressAndChecksumHeader({}),
                static_cast<Status>(std::int64_t{ipmi_result::kCompletionCode}), "Unable to read FRU.");
}

TEST_F(FruFront, SelectsAreasAndFields) {
  LoadSystem();
  bool all = true;
  for (auto has : {FruData::HasInternalUseArea, FruData::HasChassisArea, FruData::HasBoardArea,
                   FruData::HasProductArea, FruData::HasMultiRecordArea}) {
    EXPECT_EQ(has(flag), kSuccess);
    all = all && flag;
  }
  EXPECT_TRUE(all);
  ExpectFailure(FruData::SelectAreaEnum(FruAreaId::None), fru_status::kNoSuchItem, kUnexpectedText);
  ExpectFailure(FruData::SelectFieldEnum(FruFieldId::ChassisType), fru_status::kNothingSelected,
                kUnexpectedText);
  Select(FruAreaId::ChassisInfoArea);
  ExpectFailure(FruData::GetFieldDataValue(data, number), fru_status::kNothingSelected, kUnexpectedText);
  ExpectFailure(FruData::SelectFieldEnum(FruFieldId::BoardFruFileId), fru_status::kNoSuchItem,
                "No such FRU field.");
  ExpectFailure(FruData::SelectFieldInteger(6), fru_status::kNoSuchItem, "No such FRU field.");
  ASSERT_EQ(FruData::SelectFieldInteger(5), kSuccess);
  ASSERT_EQ(FruData::GetFieldDataValue(data, number), kSuccess);
  EXPECT_EQ(AsText({data, number}), "two") << "the index past the second custom field reads the second";
  for (FruAreaId area : {FruAreaId::CommonHeaderArea, FruAreaId::MultiRecordArea}) {
    Select(area);
    ExpectFailure(FruData::SelectFieldEnum(FruFieldId::InternalUseData), fru_status::kUnsupported,
                  kUnsupportedText);
    ExpectFailure(FruData::SelectFieldInteger(0), fru_status::kUnsupported, kUnsupportedText);
  }
  Select(FruAreaId::InternalUseArea);
  EXPECT_EQ(FruData::SelectFieldEnum(FruFieldId::InternalUseData), kSuccess);
  ExpectFailure(FruData::GetFieldDataValue(data, number), fru_status::kUnsupported, kUnsupportedText);
  ExpectFailure(FruData::GetMaxFieldSize(number), fru_status::kUnsupported, kUnsupportedText);
}

TEST_F(FruFront, SetsFieldsAsTextAndCommitsThem) {
  LoadSystem();
  Select(FruAreaId::ProductInfoArea);
  ASSERT_EQ(FruData::GetMaxFieldSize(number), kSuccess);
  std::string longest(number, 'x');
  ASSERT_EQ(FruData::SelectFieldEnum(FruFieldId::ProductAssetTag), kSuccess);
  ExpectFailure(
      FruData::SetFieldDataValue(AsBytes(longest + "x").data(), number + 1), fru_status::kSetFieldFailed,
      "Could not assign new data to the product area.  The data is probably too long to fit in the field or area.");
  ASSERT_EQ(FruData::SetFieldDataValue(AsBytes(longest).data(), number), kSuccess);
  ASSERT_EQ(FruData::CommitConfigurationToSystem(false), kSuccess) << machine.console;
  EXPECT_NE(AsText(device.image).find(static_cast<char>(0xC0 | number) + longest), std::string::npos);
  Select(FruAreaId::CommonHeaderArea);
  EXPECT_EQ(FruData::GetMaxFieldSize(number), kSuccess);
  EXPECT_EQ(number, 0u);
  device.fault = [](int, MemoryFru::Answer& answer) { answer = {0x80, {}}; };
  EXPECT_EQ(FruData::CommitConfigurationToSystem(false), fru_status::kWriteFailed);
}

TEST_F(FruFront, GivesAndTakesWholeAreas) {
  LoadSystem();
  Bytes bytes(64);
  auto get = [&](std::uint32_t room) { return number = room, FruData::GetAreaData(bytes.data(), number); };
  Select(FruAreaId::CommonHeaderArea);
  EXPECT_EQ(FruData::GetAreaSize(number), kSuccess);
  EXPECT_EQ(number, 8u);
  EXPECT_EQ(get(64), kSuccess);
  EXPECT_EQ(number, 8u);
  ExpectFailure(get(7), fru_status::kUnexpected, kUnexpectedText);
  ExpectFailure(FruData::SetAreaData(bytes.data(), 8), fru_status::kUnsupported, kUnsupportedText);
  Select(FruAreaId::InternalUseArea);
  EXPECT_EQ(get(8), kSuccess);
  bytes[7] = 0x77;
  EXPECT_EQ(FruData::SetAreaData(bytes.data(), 8), kSuccess);
  ExpectFailure(FruData::SetAreaData(bytes.data(), 7), fru_status::kUnexpected, kUnexpectedText);
  ExpectFailure(FruData::SetAreaData(nullptr, 8), fru_status::kUnexpected, kUnexpectedText);
  Select(FruAreaId::BoardInfoArea);
  ExpectFailure(get(64), fru_status::kUnsupported, kUnsupportedText);
  ExpectFailure(FruData::GetAreaSize(number), fru_status::kUnsupported, kUnsupportedText);
  EXPECT_EQ(FruData::ResizeFruArea(64), kSuccess);
}

TEST_F(FruFront, SelectsRecordsFromOne) {
  LoadSystem();
  Select(FruAreaId::BoardInfoArea);
  ExpectFailure(FruData::SelectMultiRecNum(1), fru_status::kUnsupported, kUnsupportedText);
  Select(FruAreaId::MultiRecordArea);
  EXPECT_EQ(FruData::GetAreaSize(number), kSuccess);
  EXPECT_EQ(number, 17u);
  for (std::uint32_t missing : {0u, 3u}) {
    machine.console.clear();
    ExpectFailure(FruData::SelectMultiRecNum(missing), fru_status::kUnexpected, kUnexpectedText);
    EXPECT_EQ(machine.console, "\nInvalid MultiRecord Number\n");
  }
  ASSERT_EQ(FruData::SelectMultiRecNum(2), kSuccess);
  Bytes bytes(16);
  number = 16;
  EXPECT_EQ(FruData::GetAreaData(bytes.data(), number), kSuccess);
  EXPECT_EQ(number, 9u);
  ExpectFailure(FruData::SetAreaData(bytes.data(), 9), fru_status::kMultiRecordArea, kUnexpectedText);
  // The number stays while areas and files are selected, and can then be of a record that is not there.
  device.image = Join({Header({0, 0, 0, 0, 1}), Record(1, {1}, true)});
  ASSERT_EQ(FruData::LoadFruAtAddress({.deviceId = 4, .displayName = {}}, flag), kSuccess);
  TheFruManager()->fru = 1;
  machine.console.clear();
  ExpectFailure(FruData::GetAreaSize(number), fru_status::kMultiRecordArea, kUnexpectedText);
  EXPECT_EQ(machine.console, "\nInvalid MutiRecord Number.\n");
  ExpectFailure(FruData::SetAreaWriteMode(FruWriteMode::Skip), fru_status::kMultiRecordArea, kUnexpectedText);
}

TEST_F(FruFront, ValidatesTheFirstAreaInModeOne) {
  const std::string text = "The Validation of the requested FRU area failed.\n";
  LoadSystem();
  EXPECT_EQ(FruData::ValidateSelectedArea(), kSuccess) << "records not in mode 1 count as valid";
  for (FruAreaId area : {FruAreaId::MultiRecordArea, FruAreaId::ProductInfoArea, FruAreaId::BoardInfoArea,
                         FruAreaId::ChassisInfoArea, FruAreaId::CommonHeaderArea}) {
    Select(area);
    ASSERT_EQ(FruData::SetAreaWriteMode(FruWriteMode::Skip), kSuccess);
    EXPECT_EQ(FruData::ValidateSelectedArea(), kSuccess) << static_cast<int>(area);
  }
  device.image = Damaged(7, 0);
  EXPECT_EQ(FruData::LoadFruAtAddress({.deviceId = 1, .displayName = {}}, flag), fru_status::kInvalidHeader);
  ASSERT_EQ(FruData::SelectFruByAddress({.deviceId = 1, .displayName = {}}), kSuccess);
  Select(FruAreaId::CommonHeaderArea);
  ASSERT_EQ(FruData::SetAreaWriteMode(FruWriteMode::Skip), kSuccess);
  ExpectFailure(FruData::ValidateSelectedArea(), fru_status::kNoListLoaded, text);
  // Of records in mode 1 the data count, whatever their headers sum to.
  for (auto [id, offset, status] : {std::tuple{3u, 12u, kSuccess}, {4u, 13u, fru_status::kNoListLoaded}}) {
    device.image = Join({Header({0, 0, 0, 0, 1}), Record(1, {1}, true)});
    ++device.image[offset];
    FruDeviceAddress address{.deviceId = static_cast<std::uint8_t>(id), .displayName = {}};
    EXPECT_EQ(FruData::LoadFruAtAddress(address, flag), fru_status::kMultiRecordArea);
    ASSERT_EQ(FruData::SelectFruByAddress(address), kSuccess);
    Select(FruAreaId::MultiRecordArea);
    ASSERT_EQ(FruData::SetAreaWriteMode(FruWriteMode::Skip), kSuccess);
    EXPECT_EQ(FruData::ValidateSelectedArea(), status) << offset;
  }
  device.image = Join({Header({0, 0, 1, 0, 0}), Area(6, BoardContent())});
  ASSERT_EQ(FruData::LoadFruAtAddress({.deviceId = 2, .displayName = {}}, flag), kSuccess);
  ASSERT_EQ(FruData::SelectFruByAddress({.deviceId = 2, .displayName = {}}), kSuccess);
  ExpectFailure(FruData::ValidateSelectedArea(), fru_status::kNoListLoaded, text);
}

TEST_F(FruFront, CopiesAreasFromTheFileImage) {
  ExpectFailure(FruData::CopyAreaFromFile({}, FruAreaId::BoardInfoArea), fru_status::kNoListLoaded,
                kUnexpectedText);
  Bytes other = FullImage();
  other[12] = 0x55;                                  // internal use
  other[64] = 'X', other[103] -= 'X' - 'a';          // board manufacturer and checksum
  other[157] = 9, other[155] -= 8, other[156] += 8;  // a record's data and both checksums
  LoadFile(other);
  ExpectFailure(FruData::CopyAreaFromFile({}, FruAreaId::BoardInfoArea), fru_status::kNoListLoaded,
                kUnexpectedText);
  LoadSystem();
  ExpectFailure(FruData::CopyAreaFromFile({}, FruAreaId::None), fru_status::kUnexpected, kUnexpectedText);
  for (int area = 1; area <= 6; ++area)
    EXPECT_EQ(FruData::CopyAreaFromFile({}, FruAreaId{static_cast<std::uint32_t>(area)}), kSuccess) << area;
  ASSERT_EQ(FruData::CommitConfigurationToSystem(false), kSuccess) << "the system FRU stays selected";
  EXPECT_EQ(device.image, other);
}

TEST_F(FruFront, CommitsAFileOnlyByForce) {
  LoadFile(FullImage());
  EXPECT_EQ(FruData::CommitConfigurationToSystem(false), kSuccess);
  EXPECT_TRUE(device.log.empty());
  EXPECT_EQ(FruData::CommitConfigurationToSystem(true), kSuccess);
  FruDeviceAddress address;
  EXPECT_EQ(FruData::GetFruAddress(address), kSuccess);
  EXPECT_TRUE(address.IsSameDevice({}));
}

TEST_F(FruFront, ReadsDeviceAddressesFromArguments) {
  struct Case {
    std::vector<const char*> arguments;
    bool isGood;
    FruDeviceAddress address{};
    int switches = 0;
  };
  auto at = [](std::uint32_t kind, std::uint8_t id, std::uint8_t bus, std::uint8_t slave,
               std::uint8_t controller = 0x20, std::uint8_t lun = 0) {
    return FruDeviceAddress{.deviceAddress = slave,
                            .bus = bus,
                            .deviceId = id,
                            .controller = controller,
                            .lun = lun,
                            .nvsType = kind,
                            .displayName = {}};
  };
  const Case cases[] = {
      {{"IMBDEVICE", "C20", "L00", "FF", "20"}, true, at(2, 0, 0xFF, 0x20)},
      {{"IMBDEVICE", "00"}, true, at(2, 0, 0xFF, 0x20)},
      {{"IMBDEVICE", "01", "c2C", "l02"}, true, at(2, 1, 0xFF, 0x20, 0x2C, 2)},
      {{"AT24C02", "03", "a0"}, true, at(0, 0, 3, 0xA0)},
      {{"DS1624S-old", "7F", "05", "90"}, true, at(1, 0x7F, 5, 0x90)},
      {{"IMBDEVICE", "C2"}, true, at(2, 0xC2, 0xFF, 0x20)},
      {{"IMBDEVICE", "00", "-x", "/y"}, true, at(2, 0, 0xFF, 0x20), 2},
      {{"imbdevice", "00"}, false},
      {{"AT24CO2", "03", "A0"}, false},
      {{"IMBDEVICE"}, false},
      {{"IMBDEVICE", "1"}, false},
      {{"IMBDEVICE", "0G"}, false},
      {{"IMBDEVICE", "00", "L"}, false},
      {{"IMBDEVICE", "00", "L00", "L00"}, false},
      {{"IMBDEVICE", "00", "C20", "C20"}, false},
      {{"IMBDEVICE", "00", "01", "02", "03"}, false},
      {{"IMBDEVICE", ""}, false},
  };
  for (const Case& line : cases) {
    ASSERT_EQ(FruData::Initialize(), kSuccess);
    int count = 0;
    Status status =
        FruData::ParseFruAddress(static_cast<int>(line.arguments.size()), line.arguments.data(), count);
    EXPECT_EQ(status, line.isGood ? kSuccess : fru_status::kBadAddressArguments) << line.arguments.back();
    if (!line.isGood) continue;
    EXPECT_TRUE(TheFruManager()->commandLineAddress.IsSameDevice(line.address)) << line.arguments.back();
    EXPECT_EQ(count, static_cast<int>(line.arguments.size()) - line.switches);
  }
}

TEST_F(FruFront, ShowsTheDeviceOfTheCommandLine) {
  EXPECT_EQ(FruData::DisplaySelectedFru(), kSuccess);
  EXPECT_EQ(machine.console.find("FRU IMBDEVICE on bus FFh"), 0u);
  EXPECT_EQ(device.CountOf("0A/12"), 0);
  device.image[0] = 0;
  machine.console.clear();
  EXPECT_EQ(FruData::DisplaySelectedFru(), fru_status::kDeviceNotFound);
  EXPECT_EQ(machine.console, "\nCould not find the specified FRU Device.\n\n\n");
}

TEST_F(FruFront, KeepsTheLastErrorWithinItsBuffer) {
  FruData::SetLastError(std::u16string(600, u'e'));
  EXPECT_EQ(LastFruError(), std::string(511, 'e'));
  FruData::SetLastError(u"");
  EXPECT_EQ(LastFruError(), "");
}

}  // namespace
}  // namespace varnok
