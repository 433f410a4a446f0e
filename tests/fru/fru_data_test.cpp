#include "fru/fru_data.h"

#include <functional>

#include "firmware/lasting.h"
#include "fru/fru_manager.h"
#include "tests/fru/memory_fru.h"

namespace varnok {
namespace {

using namespace testing;
using namespace FruData;

class FruFront : public FruTest {
 protected:
  FruFront() { EXPECT_EQ(Initialize(), kSuccess); }

  /// Reads the device as FRU `id`, with this status, and selects that image.
  void LoadSystem(std::uint8_t id = 0, Status status = kSuccess) {
    FruDeviceAddress address = Device(nvs_type::kImbDevice, id);
    address.displayName = u"a title of the file";  // which names no device
    flag = status == kSuccess;
    ASSERT_EQ(LoadFruAtAddress(address, flag), status) << LastFruError();
    ASSERT_EQ(flag, status != kSuccess && status != kNotIpmiFru);
    ASSERT_EQ(SelectList(FruList::System), kSuccess);
    ASSERT_EQ(SelectFruByAddress(address), kSuccess);
  }
  void LoadFile(const Bytes& image) {
    machine.files["a.fru"] =
        "_LF_NAME 'a'\n_LF_VERSION '1'\n_LF_FMT_VER '1'\n_IPMI_VERSION '2'\n_FRU (\n_START_ADDR 0\n_DATA_LEN A9\n" +
        AreaBlocks(image);
    ASSERT_EQ(LoadConfigurationFromFile("a.fru"), kSuccess) << LastFruError();
  }
  void Select(FruAreaId area) { ASSERT_EQ(SelectAreaEnum(area), kSuccess); }
  void ExpectAreaSize(std::uint32_t size) {
    EXPECT_EQ(GetAreaSize(number), kSuccess);
    EXPECT_EQ(number, size);
  }
  Status GetArea(std::uint32_t room) {
    bytes.resize(64);
    return number = room, GetAreaData(bytes.data(), number);
  }

  MemoryFru device{machine, FullImage()};
  std::uint32_t number = 0;
  const std::uint8_t* data = nullptr;
  bool flag = false;
  Bytes bytes;
};

TEST_F(FruFront, ChecksItsStateInOrder) {
  ForgetProgramState();
  ExpectFailure(SelectList(FruList::System), kNotInitialized);
  EXPECT_EQ(machine.TraceLines().back(), "FruData::SelectList - Unexpected");
  const char16_t* text = nullptr;
  ExpectAll({SetOutputFile(""), SetProgressCallback(nullptr), GetLastErrorMessage(text)}, kNotInitialized);
  EXPECT_EQ(Narrow(text), kUnexpectedText);
  ASSERT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
  machine.FailPoolAllocation(1);
  EXPECT_EQ(Initialize(), kInitializeFailed);
  EXPECT_EQ(SetPagingMode(true), kNotInitialized);
  ExpectAll({Initialize(), GetLastErrorMessage(text)}, kSuccess, "");
  EXPECT_EQ(text, nullptr);
  FruDeviceAddress address;
  ExpectAll({SelectFruByAddress({}), GetAreaSize(number), GetFruAddress(address)}, kNoListLoaded);
  EXPECT_TRUE(address.IsSameDevice(Device(nvs_type::kRefused, 0, 0, 0, 0)));
  LoadSystem();
  EXPECT_EQ(GetFruAddress(address), kSuccess);
  EXPECT_TRUE(address.IsSameDevice({}));
  ExpectFailure(SelectList(FruList::None), kNoSuchItem);
  ASSERT_EQ(SelectList(FruList::System), kSuccess);
  ExpectFailure(HasBoardArea(flag), kNothingSelected);
  ExpectFailure(SelectFruByAddress(Device(nvs_type::kImbDevice, 9)), kNoSuchItem,
                "A FRU was requested which does not exist on the system.");
  TheFruManager()->fru = 1;
  ExpectFailure(HasBoardArea(flag), kNoSuchItem);
}

TEST_F(FruFront, MemoryThatRunsOutHasAStatusAtEachDoor) {
  const std::pair<Status, std::function<Status()>> doors[] = {
      {kMultiRecordMemory, [&] { return LoadFruAtAddress({}, flag); }},
      {kMultiRecordMemory, [] { return SetOutputFile("FRU.TMP"); }},
      {kOutOfMemory, [] { return LoadConfigurationFromFile("a.fru"); }},
      {kOutOfMemory, DisplaySelectedFru},
  };
  for (const auto& [status, open] : doors) {
    SetFruError(u"");
    machine.FailPoolAllocation(1);
    ExpectFailure(open(), status, kNoMemoryText);
  }
}

TEST_F(FruFront, KeepsAnImageThatCouldNotBeRead) {
  device.image[7] = 0;
  LoadSystem(0, kInvalidHeader);
  EXPECT_EQ(LastFruError(), "Invalid FRU header area in system FRU ID(0) Addr(20) SlaveAddr(20) Bus(FF).");
  for (auto [area, field, name] : {std::tuple{ChassisInfoArea, FruFieldId::ChassisPartNumber, "chassis"},
                                   {BoardInfoArea, FruFieldId::BoardPartNumber, "board"},
                                   {ProductInfoArea, FruFieldId::ProductName, "product"}}) {
    Select(area);
    ASSERT_EQ(SelectFieldEnum(field), kSuccess);
    ExpectFailure(GetFieldDataValue(data, number), kGetFieldFailed,
                  Format("An error occurred getting a field from the FRU %s area.", name));
  }
}

TEST_F(FruFront, FindsADeviceByItsHeader) {
  EXPECT_EQ(FindFruAtAddressAndChecksumHeader({}), kSuccess);
  EXPECT_EQ(device.log.size(), 1u);
  device.image[7] = 0;
  FruDeviceAddress titled;
  titled.displayName = u"a title of the file";
  ExpectFailure(FindFruAtAddressAndChecksumHeader(titled), kInvalidHeader,
                "Invalid FRU header area in system FRU ID(0) Addr(20) SlaveAddr(20) Bus(FF).");
  device.image[0] = 0xFF;
  ExpectFailure(FindFruAtAddressAndChecksumHeader({}), kNotIpmiFru, "The selected FRU is not an IPMI FRU.");
  EXPECT_EQ(DisplaySelectedFru(), kDeviceNotFound);
  EXPECT_EQ(machine.console, "\nCould not find the specified FRU Device.\n\n\n");
  SetLastError(std::u16string(600, u'e'));
  EXPECT_EQ(LastFruError(), std::string(511, 'e'));
  device.image.resize(4);
  ExpectFailure(FindFruAtAddressAndChecksumHeader({}),
                static_cast<Status>(std::int64_t{ipmi_result::kCompletionCode}), "Unable to read FRU.");
}

TEST_F(FruFront, SelectsAreasAndFields) {
  LoadSystem();
  for (auto has : {HasInternalUseArea, HasChassisArea, HasBoardArea, HasProductArea, HasMultiRecordArea}) {
    EXPECT_EQ(has(flag), kSuccess);
    EXPECT_TRUE(std::exchange(flag, false));
  }
  ExpectFailure(SelectAreaEnum(FruAreaId::None), kNoSuchItem);
  ExpectFailure(SelectFieldEnum(FruFieldId::ChassisType), kNothingSelected);
  Select(ChassisInfoArea);
  ExpectFailure(GetFieldDataValue(data, number), kNothingSelected);
  ExpectFailure(SelectFieldEnum(FruFieldId::BoardFruFileId), kNoSuchItem, "No such FRU field.");
  ExpectFailure(SelectFieldInteger(6), kNoSuchItem, "No such FRU field.");
  ASSERT_EQ(SelectFieldInteger(5), kSuccess);
  ASSERT_EQ(GetFieldDataValue(data, number), kSuccess);
  EXPECT_EQ(AsText({data, number}), "two") << "the index past the second custom field reads the second";
  for (FruAreaId area : {CommonHeaderArea, MultiRecordArea}) {
    Select(area);
    ExpectAll({SelectFieldEnum(FruFieldId::InternalUseData), SelectFieldInteger(0)}, kUnsupported,
              kUnsupportedText);
  }
  Select(InternalUseArea);
  EXPECT_EQ(SelectFieldEnum(FruFieldId::InternalUseData), kSuccess);
  ExpectAll({GetFieldDataValue(data, number), GetMaxFieldSize(number)}, kUnsupported, kUnsupportedText);
}

TEST_F(FruFront, SetsFieldsAsTextAndCommitsThem) {
  LoadSystem();
  Select(ProductInfoArea);
  ASSERT_EQ(GetMaxFieldSize(number), kSuccess);
  const std::string longest(number, 'x');
  ASSERT_EQ(SelectFieldEnum(FruFieldId::ProductAssetTag), kSuccess);
  ExpectFailure(
      SetFieldDataValue(AsBytes(longest + "x").data(), number + 1), kSetFieldFailed,
      "Could not assign new data to the product area.  The data is probably too long to fit in the field or area.");
  ASSERT_EQ(SetFieldDataValue(AsBytes(longest).data(), number), kSuccess);
  ASSERT_EQ(CommitConfigurationToSystem(false), kSuccess) << machine.console;
  EXPECT_NE(AsText(device.image).find(static_cast<char>(0xC0 | number) + longest), std::string::npos);
  Select(CommonHeaderArea);
  EXPECT_EQ(GetMaxFieldSize(number), kSuccess);
  EXPECT_EQ(number, 0u);
  device.fault = [](int, MemoryFru::Answer& answer) { answer = {0x80, {}}; };
  EXPECT_EQ(CommitConfigurationToSystem(false), kWriteFailed);
}

TEST_F(FruFront, GivesAndTakesWholeAreas) {
  LoadSystem();
  Select(CommonHeaderArea);
  ExpectAreaSize(8);
  EXPECT_EQ(GetArea(64), kSuccess);
  EXPECT_EQ(number, 8u);
  ExpectFailure(GetArea(7), kUnexpected);
  ExpectFailure(SetAreaData(bytes.data(), 8), kUnsupported, kUnsupportedText);
  Select(InternalUseArea);
  ExpectAll({GetArea(8), SetAreaData(bytes.data(), 8)}, kSuccess, kUnsupportedText);
  SetFruError(u"");
  ExpectAll({SetAreaData(bytes.data(), 7), SetAreaData(nullptr, 8)}, kUnexpected);
  Select(BoardInfoArea);
  ExpectAll({GetArea(64), GetAreaSize(number), SelectMultiRecNum(1)}, kUnsupported, kUnsupportedText);
  EXPECT_EQ(ResizeFruArea(64), kSuccess);
}

TEST_F(FruFront, SelectsRecordsFromOne) {
  LoadSystem();
  Select(MultiRecordArea);
  ExpectAreaSize(17);
  ExpectAll({SelectMultiRecNum(0), SelectMultiRecNum(3)}, kUnexpected);
  EXPECT_EQ(machine.console, "\nInvalid MultiRecord Number\n\nInvalid MultiRecord Number\n");
  ASSERT_EQ(SelectMultiRecNum(2), kSuccess);
  ExpectAreaSize(9);
  ExpectAll({GetArea(8), GetArea(4)}, kUnexpected);  // less than header and data, or than a header
  EXPECT_EQ(GetArea(9), kSuccess);
  EXPECT_EQ(number, 9u);
  EXPECT_EQ(bytes[0], 0xC1);
  EXPECT_EQ(SetAreaWriteMode(FruWriteMode::Verify), kSuccess);
  ExpectFailure(SetAreaData(bytes.data(), 9), kMultiRecordArea);
  const Bytes record = Record(7, {5}, true);  // the header of the record behind it
  ExpectAll({SelectMultiRecNum(1), SetAreaData(record.data(), 6), SelectMultiRecNum(2), GetArea(64)},
            kSuccess);
  EXPECT_EQ(bytes[0], 7);
  EXPECT_EQ(bytes[5], 4) << "its data stay";
  // The number stays while areas and files are selected, and can then be of a record that is not there.
  device.image = Join({Header({0, 0, 0, 0, 1}), Record(1, {1}, true)});
  ASSERT_EQ(LoadFruAtAddress(Device(nvs_type::kImbDevice, 4), flag), kSuccess);
  TheFruManager()->fru = 1;
  machine.console.clear();
  ExpectAll({GetAreaSize(number), SetAreaWriteMode(FruWriteMode::Skip)}, kMultiRecordArea);
  EXPECT_TRUE(machine.console.starts_with("\nInvalid MutiRecord Number.\n"));
}

TEST_F(FruFront, ValidatesTheFirstAreaInModeOne) {
  const Bytes good = FullImage(), record = Join({Header({0, 0, 0, 0, 1}), Record(1, {1}, true)});
  struct Case {
    const char* rule;
    Bytes image;
    FruAreaId skipped;
    bool isValid = true;
    Status read = kSuccess;
  };
  const Case cases[] = {
      {"records not in mode 1", good, FruAreaId::None},
      {"nothing marked", Join({Header({0, 0, 1, 0, 0}), Area(6, kBoardContent)}), FruAreaId::None, false},
      {"header", good, CommonHeaderArea},
      {"chassis", good, ChassisInfoArea},
      {"board", good, BoardInfoArea},
      {"product", good, ProductInfoArea},
      {"records", good, MultiRecordArea},
      {"header's sum", Changed(good, {{7, 0}}), CommonHeaderArea, false, kInvalidHeader},
      {"header never read", Changed(good, {{0, 2}}), CommonHeaderArea, true, kNotIpmiFru},
      {"board's sum", Changed(good, {{103, 0}}), BoardInfoArea, false, kBoardInfoArea},
      {"record's header", Changed(record, {{12, 0}}), MultiRecordArea, true, kMultiRecordArea},
      {"record's data", Changed(record, {{13, 0}}), MultiRecordArea, false, kMultiRecordArea},
  };
  std::uint8_t id = 0;
  for (const auto& [rule, image, skipped, isValid, read] : cases) {
    SCOPED_TRACE(rule);
    device.image = image;
    LoadSystem(++id, read);
    if (skipped != FruAreaId::None) {
      Select(skipped);
      ASSERT_EQ(SetAreaWriteMode(FruWriteMode::Skip), kSuccess);
    }
    SetFruError(u"");
    ExpectFailure(ValidateSelectedArea(), isValid ? kSuccess : kNoListLoaded,
                  isValid ? "" : "The Validation of the requested FRU area failed.\n");
  }
}

TEST_F(FruFront, CopiesAreasFromTheFileImage) {
  ExpectFailure(CopyAreaFromFile({}, BoardInfoArea), kNoListLoaded);
  Bytes other = FullImage();
  other[12] = 0x55;                                  // internal use
  other[64] = 'X', other[103] -= 'X' - 'a';          // board manufacturer and checksum
  other[157] = 9, other[155] -= 8, other[156] += 8;  // a record's data and both checksums
  LoadFile(other);
  ExpectFailure(CopyAreaFromFile({}, BoardInfoArea), kNoListLoaded);
  LoadSystem();
  ExpectFailure(CopyAreaFromFile({}, FruAreaId::None), kUnexpected);
  for (std::uint32_t area = 1; area <= 6; ++area)
    EXPECT_EQ(CopyAreaFromFile({}, FruAreaId{area}), kSuccess) << area;
  ASSERT_EQ(CommitConfigurationToSystem(false), kSuccess) << "the system FRU stays selected";
  EXPECT_EQ(device.image, other);
  // A file is committed by force only.
  LoadFile(FullImage());
  EXPECT_EQ(CommitConfigurationToSystem(false), kSuccess);
  EXPECT_EQ(device.image, other);
  EXPECT_EQ(CommitConfigurationToSystem(true), kSuccess);
  EXPECT_EQ(device.image, FullImage());
}

TEST_F(FruFront, ReadsDeviceAddressesFromArguments) {
  const std::tuple<const char*, FruDeviceAddress, int> good[] = {
      {"IMBDEVICE C20 L00 FF 20", Device(2), 5},
      {"IMBDEVICE 00", Device(2), 2},
      {"IMBDEVICE 01 c2C l02", Device(2, 1, 0xFF, 0x20, 0x2C, 2), 4},
      {"AT24C02 03 a0", Device(0, 0, 3, 0xA0), 3},
      {"DS1624S-old 7F 05 90", Device(1, 0x7F, 5, 0x90), 4},
      {"IMBDEVICE C2", Device(2, 0xC2), 2},
      {"IMBDEVICE 00 -x /y", Device(2), 2},
  };
  int count = 0;
  for (const auto& [line, address, expectedCount] : good) {
    ASSERT_EQ(Initialize(), kSuccess);
    EXPECT_EQ(ParseAddress(line, count), kSuccess) << line;
    EXPECT_TRUE(TheFruManager()->commandLineAddress.IsSameDevice(address)) << line;
    EXPECT_EQ(count, expectedCount) << line;
  }
  // The last line has an empty argument.
  for (const char* line :
       {"imbdevice 00", "AT24CO2 03 A0", "IMBDEVICE", "IMBDEVICE 1", "IMBDEVICE 0G", "IMBDEVICE 00 L",
        "IMBDEVICE 00 L00 L00", "IMBDEVICE 00 C20 C20", "IMBDEVICE 00 01 02 03", "IMBDEVICE  00"})
    EXPECT_EQ(ParseAddress(line, count), kBadAddressArguments) << line;
}

}  // namespace
}  // namespace varnok
