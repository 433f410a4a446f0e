// What check finds: one fault a file, by line and rule.
#include "boards/check/check.h"

#include <fstream>

#include "boards/folder.h"
#include "tests/support/expectations.h"
#include "tests/support/rows.h"

namespace varnok::testing {
namespace {

using boards::Checker;
using boards::Finding;

constexpr const char* kFruHead =
    "_LF_NAME 'a'\n_LF_VERSION '1'\n_LF_FMT_VER '1'\n_IPMI_VERSION '2'\n_FRU (\n_START_ADDR 0\n";
constexpr const char* kSdrHead =
    "_LF_NAME\n_LF_VERSION\n_LF_FMT_VER\n_IPMI_VERSION\n_SDR (\n_START_ADDR\n_DATA_LEN\n_NVS_TYPE\n_DEV_BUS\n_DEV_ADDRESS\n";
constexpr const char* kBoardArea = "_SEE_BOARD\n01 02 00000000\nC2\n'AB'\nC0 C0 C0 C0 C1\n)\n";
constexpr const char* kRecord = "_REC_LEN 0A\n0000 51 C0 05 40E201 0102\n";

std::string Found(const Checker& checker) {
  std::string found;
  for (const Finding& finding : checker.Findings()) {
    if (!found.empty()) found += ' ';
    found += std::to_string(finding.line) + ':' + finding.rule;
    if (finding.severity == boards::Severity::Warning) found += '?';
  }
  return found;
}

class Check : public ::testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) {
    std::string path = (folder_.Path() / name).string();
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  TemporaryFolder folder_;
};

TEST_F(Check, FindsEachFaultAtItsLine) {
  const std::pair<std::string, std::string> shared[] = {{"<FRU HEAD>\n", kFruHead},
                                                        {"<SDR HEAD>\n", kSdrHead},
                                                        {"<BOARD AREA>\n", kBoardArea},
                                                        {"<RECORD>\n", kRecord}};
  const auto cases = Expectations("boards/check.txt");
  boards::Board board;
  std::string error;
  ASSERT_TRUE(boards::SaveDefaultBoard(folder_.Path() / "board", error)) << error;
  ASSERT_TRUE(boards::LoadFolder(folder_.Path() / "board", board, error)) << error;
  board.devices.push_back({.address = {.id = 0x43}, .bytes = boards::Bytes(64, 0xFF)});
  board.devices.push_back({.address = {.id = 0x44}, .bytes = boards::Bytes(16, 1)});
  auto nameOf = [](const std::string& head) { return head.substr(1, head.find(':') - 1); };
  for (const auto& [head, content] : cases) {
    std::string text = content;
    for (const auto& [mark, words] : shared)
      for (std::size_t at; (at = text.find(mark)) != std::string::npos;) text.replace(at, mark.size(), words);
    Write(nameOf(head), Unescape(text));
  }
  for (const auto& [head, content] : cases) {
    Checker checker(&board);
    checker.Check((folder_.Path() / nameOf(head)).string());
    const std::string found = Found(checker);
    EXPECT_EQ(nameOf(head) + ":" + (found.empty() ? "" : " ") + found, head.substr(1));
  }
}

TEST_F(Check, HoldsFilesAgainstTheBoard) {
  boards::Board board;
  board.devices.push_back({.bytes = boards::Bytes(16)});
  board.repositoryCapacity = 9;
  const std::string fru =
      std::string(kFruHead) + "_DATA_LEN 18\n_SEE_COMMON\n01 00 00 01 00 00 00 FE\n" + kBoardArea;
  Checker checker(&board);
  checker.Check(Write("a.fru", fru));
  checker.Check(Write("a.sdr", std::string(kSdrHead) + "_SDR_TYPE C0\n" + kRecord + ")\n"));
  EXPECT_EQ(Found(checker), "5:fru-device 5:sdr-size");
}

}  // namespace
}  // namespace varnok::testing
