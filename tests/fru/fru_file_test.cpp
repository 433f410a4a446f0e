#include "tests/fru/fru_test.h"
#include "tests/support/expectations.h"
#include "tests/support/split.h"

namespace varnok {
namespace {

using namespace testing;

const std::string kFile = ContentOf(VARNOK_SOURCE_DIR "/tests/fru/board.fru");

class FruFile : public FruTest {
 protected:
  Status Read(const std::string& content) {
    machine.files["a.fru"] = content;
    fru = std::make_unique<CFru>();
    SetFruError(u"");
    return fru->ReadFRUFromFile("a.fru");
  }
  /// kFile with the first `from` replaced.
  static std::string With(std::string_view from, std::string_view to) {
    return std::string(kFile).replace(kFile.find(from), from.size(), to);
  }

  std::unique_ptr<CFru> fru;
};

TEST_F(FruFile, GivesHeaderAddressAndAreas) {
  std::string content = kFile;
  std::size_t at = 0;
  for (const char* lineEnd : {"\r\n", "\n\r", "\r"})
    content.replace(at = content.find('\n', at + 2), 1, lineEnd);
  ASSERT_EQ(Read(content), kSuccess) << LastFruError();
  EXPECT_EQ(fru->FileHeader().LfName(), u"board.fru");
  EXPECT_EQ(fru->FileHeader().LfVersion(), u"1.2");
  EXPECT_EQ(fru->FileHeader().LfFmtVersion(), u"1.0");
  EXPECT_EQ(fru->FileHeader().IpmiVersion(), u"2.0");
  EXPECT_TRUE(fru->Address().IsSameDevice(Device(nvs_type::kAt24c02, 1, 3, 0xA0, 0x2C, 2)));
  EXPECT_EQ(fru->Address().displayName, u"Board (rev 2)");
  EXPECT_EQ(AsText(fru->Board().GetMfgDateTime()), "\x01\x02\x03");
  EXPECT_EQ(AsText(fru->Board().GetProductName()), "_SEE_)x");
  EXPECT_TRUE(fru->Board().IsValid());
  EXPECT_TRUE(fru->Board().IsModified()) << "by the data length";
}

TEST_F(FruFile, LeavesOutWhatMayBeLeftOut) {
  std::string content = With("_FRU_TITLE 'Board (rev 2)'\n", "");
  std::size_t begin = content.find("_NVS_TYPE");
  content.erase(begin, content.find("_SEE_COMMON") - begin);
  ASSERT_EQ(Read(content), kSuccess) << LastFruError();
  EXPECT_TRUE(fru->Address().IsSameDevice(FruDeviceAddress{}));
  EXPECT_FALSE(fru->Address().displayName.has_value());
  // A header that declares nothing ends the reading; an address key again or behind a later one is ignored.
  ASSERT_EQ(Read(With("01 00 00 01 00 00 00 FE", "01 00 00 00 00 00 00 FF")), kSuccess);
  ASSERT_EQ(Read(With("_DEV_BUS 03\n", "_DEV_BUS 03\n_DEV_ID 9\n_DEV_BUS 4\n")), kSuccess);
  EXPECT_EQ(fru->Address().deviceId, 1);
  EXPECT_EQ(fru->Address().bus, 3);
}

TEST_F(FruFile, TellsATagFromTextThatReadsLikeOne) {
  // What stands behind a tag is ignored, quoted or not. The common header takes it for data, past its 8
  // bytes.
  for (const char* tagLine : {"_SEE_BOARD 01 02\n", "_SEE_BOARD 'board' 01\n", "x_SEE_BOARD('board')\n"})
    EXPECT_EQ(Read(With("_SEE_BOARD\n", tagLine)), kSuccess) << tagLine << LastFruError();
  // A text of the board area that names the tag awaited next.
  std::string content = With("01 00 00 01 00 00 00 FE", "01 00 00 01 06 00 00 F8");
  content.replace(content.find("C7\n'_SEE_)x'"), 12, "CC\n'_SEE_PRODUCT'");
  content.replace(content.find("01 05"), 5, "01 06");
  content.replace(content.find(")\nwhat"), 1, "_SEE_PRODUCT\n01 03 00 C0 C0 C0 C0 C0 C0 C0 C1\n)");
  ASSERT_EQ(Read(content), kSuccess) << LastFruError();
  EXPECT_EQ(AsText(fru->Board().GetProductName()), "_SEE_PRODUCT");
}

TEST_F(FruFile, TellsOfABlockThatIsCutShort) {
  const std::string record = "00 02 FB 00 00\n" + std::string(2 * 0xFB, '0') + "\n";  // 256 bytes
  std::string content = With("_SEE_BOARD", "_SEE_MULTIREC");
  content.replace(content.find("01 00 00 01"), 23, "01 00 00 00 00 01 00 FE");
  content.erase(content.find("01 05"));
  ASSERT_EQ(Read(content + record + record + "// nothing but a comment\n)\n"), kSuccess) << LastFruError();
  EXPECT_EQ(machine.errors, "");
  ASSERT_EQ(Read(content + record + record + "\n" + record + ")\n"), kSuccess) << LastFruError();
  EXPECT_EQ(fru->MultiRecords().size(), 2u);
  EXPECT_EQ(
      machine.errors,
      "varnok: a.fru: the Multi Record Area ends after 512 bytes; the lines behind them are not read\n");
}

TEST_F(FruFile, EachBrokenRuleHasItsText) {
  const std::string tooBig = "The Board Info Area area of the FRU file \"a.fru\" is too big.";
  const std::string ended = "The FRU File \"a.fru\" ended unexpectedly during parsing.";
  std::vector<std::pair<std::string, std::string>> cases{
      {With("'Maker'", "'" + std::string(512, 'x') + "'"), tooBig},
      {With("C7\n", std::string(1022, '0') + "\n"), tooBig},
      {With("FE\n", "FD\n"), "Invalid Common Header Area was found while updating \"a.fru\".\n"},
      {With("_FRU (\n_FRU_TITLE 'Board (rev 2)'", "_FRU"), ended},
      {With("_LF_NAME 'board.fru' // name\n_LF_VERSION '1.2'", "_LF_VERSION '1.2'\n_LF_NAME 'board.fru'"),
       ended},
      {"", ended}};
  for (const auto& [change, message] : Expectations("fru/files.expected")) {
    const std::vector<std::string> parts = Split(change, "|");
    cases.emplace_back(With(parts[0], parts[1]), message.substr(0, message.size() - 1));
  }
  for (const auto& [content, message] : cases) {
    SCOPED_TRACE(content);
    ExpectFailure(Read(content), kFileNotParsed, message);
  }
}

TEST_F(FruFile, FilesThatCannotBeReadHaveAStatusOfTheirOwn) {
  ExpectFailure(CFru().ReadFRUFromFile({}), kFileNotRead);
  ExpectFailure(CFru().ReadFRUFromFile("no.fru"), kFileNotRead, "Could not open FRU file \"no.fru\".");
  EXPECT_EQ(machine.TraceLines().back(), "CFru::ReadFRUFromFile - File Read Error");
  machine.FailPoolAllocation(1);
  ExpectFailure(Read(kFile), kFileNotParsed,
                "An unexpected error occurred while reading Load file name from FRU file \"a.fru\".");
}

TEST_F(FruFile, BlocksEndAtTheirLimits) {
  // Exactly 512 bytes fill a block, and what follows is not looked at.
  const std::string full(512, 0x66);
  const std::string digits = "_SEE_BOARD\n" + std::string(1024, '6');
  const std::tuple<std::string, Status, std::string> cases[] = {
      {"_SEE_BOARD\n0\n'q'\n1\n2\n)\n", kSuccess, "q\x01"},  // a digit without its second one is no byte
      {"_SEE_PRODUCT\n", kBlockTagMissing, ""},
      {"_SEE_BOARD\n0x\n", kBlockCharacter, ""},
      {digits + "\nno digits\n", kSuccess, full},
      {digits + "66\n", kBlockTooBig, ""},
      {"_SEE_BOARD\n66\n'" + full.substr(1) + "'\n", kSuccess, full},
  };
  for (const auto& [text, status, content] : cases) {
    PreparedText lines;
    lines.Assign(text);
    std::span<const std::uint8_t> bytes;
    EXPECT_EQ(CFru::ParseArea("_SEE_BOARD", lines, 0, bytes), status) << text;
    EXPECT_EQ(AsText(bytes), content) << text;
  }
  CFru::SetParseAreaErrorMessage(kBlockTagMissing, "Product Info Area", "a.fru");
  CFru::SetParseAreaErrorMessage(kSuccess, "", "");
  EXPECT_EQ(LastFruError(),
            "Could not find the start tag for the Product Info Area while parsing the FRU file \"a.fru\".");
}

}  // namespace
}  // namespace varnok
