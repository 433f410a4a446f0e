// What check finds: one fault a file, by line and rule.
#include "boards/check/check.h"

#include <fstream>

#include "boards/folder.h"
#include "tests/support/host_files.h"

namespace varnok::testing {
namespace {

using boards::Checker;
using boards::Finding;

constexpr const char* kFruHead =
    "_LF_NAME 'a'\n_LF_VERSION '1'\n_LF_FMT_VER '1'\n_IPMI_VERSION '2'\n_FRU (\n_START_ADDR 0\n";
constexpr const char* kSdrHead =
    "_LF_NAME\n_LF_VERSION\n_LF_FMT_VER\n_IPMI_VERSION\n_SDR (\n_START_ADDR\n_DATA_LEN\n_NVS_TYPE\n_DEV_BUS\n_DEV_ADDRESS\n";
constexpr const char* kRecord = "_REC_LEN 0A\n0000 51 C0 05 40E201 0102\n";

struct Case {
  const char* name;
  std::string text;
  std::string found;  ///< "line:rule" each, warnings with a "?"
};

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
  const std::string head = kFruHead;
  const std::string area = "_SEE_BOARD\n01 02 00000000\nC2\n'AB'\nC0 C0 C0 C0 C1\n)\n";
  const std::string sdr = kSdrHead;
  const std::string oem = "_SDR_TYPE C0\n" + std::string(kRecord);
  const std::string sensor =
      "_SDR_TYPE 12\n_REC_LEN 12\n0000 51 12 0D 20 00 00 DF 000000 07 01 00 C2\n'MC'\n";
  // clang-format off
  const Case cases[] = {
      {"good.fru", head + "_DATA_LEN 18\n_SEE_COMMON\n01 00 00 01 00 00 00 FE\n" + area, ""},
      {"length.fru", head + "_DATA_LEN 99\n_SEE_COMMON\n01 00 00 01 00 00 00 FE\n" + area, "7:fru-data-length?"},
      {"sum.fru", head + "_DATA_LEN 18\n_SEE_COMMON\n01 00 00 01 00 00 00 FF\n" + area, "8:fru-refused 8:fru-checksum"},
      {"place.fru", head + "_DATA_LEN 18\n_SEE_COMMON\n01 00 00 02 00 00 00 FD\n" + area, "8:fru-offset"},
      {"letter.fru", head + "_DATA_LEN 18\n_SEE_COMMON\n01 00 00 01 00 00 00 FE\n_SEE_BOARD\n01\n0x02\n)\n",
       "12:fru-refused"},
      {"key.fru", "_LF_NAME a\n", "1:fru-refused"},
      {"last.fru", head + "_DATA_LEN E\n_SEE_COMMON\n01 00 00 00 00 01 00 FE\n_SEE_MULTIREC\nC0 02 01 FF 3E 01\n)\n",
       "10:fru-records"},
      {"empty.fru", head + "_DATA_LEN D\n_SEE_COMMON\n01 00 00 00 00 01 00 FE\n_SEE_MULTIREC\nC0 82 00 00 BE\n)\n",
       "10:fru-records"},
      {"mark.fru", "\xEF\xBB\xBF" + head + "_DATA_LEN 18\n_SEE_COMMON\n01 00 00 01 00 00 00 FE\n" + area,
       "1:file-encoding"},
      {"good.sdr", sdr + oem + ")\n", ""},
      {"tagged.sdr", sdr + "_SDR_TYPE C0\n_SDR_TAG 'X'\n" + kRecord + ")\n", "5:sdr-tags?"},
      {"twice.sdr", sdr + sensor + sensor + ")\n", "15:sdr-duplicate?"},
      {"open.sdr", sdr + oem, "13:sdr-refused"},
      {"type.sdr", sdr + "_SDR_TYPE 7F\n" + kRecord + ")\n", "11:sdr-refused"},
      {"guard.cfg", "FRUNAME good.fru\n", "1:script-guard?"},
      {"missing.cfg", "PROBE BMC_TYPE\nFRUNAME none.fru\n", "2:script-file"},
      {"refused.cfg", "SET A\nIFSET A\nNONSENSE\n", "3:script-refused"},
      {"unset.cfg", "IFSET A\nBOOT\nENDIF\n", "1:script-tag?"},
      {"unread.cfg", "SET A\n", "1:script-tag?"},
      {"late.cfg", "IFSET A\nBOOT\nENDIF\nSET A\n", "1:script-tag?"},
      {"behind.cfg", "SET A\nIFSET A\nERRORLEVEL 1\nELSE\nERRORLEVEL 2\nENDIF\nBOOT\n", "7:script-unreachable?"},
      {"road.cfg", "SET A\nIFSET A\nERRORLEVEL 1\nELSE\nBOOT\nENDIF\nBOOT\n", ""},
      {"area.cfg", "PROBE BMC_TYPE\nFRUNAME good.fru\nFRUAREA Product\n", "3:script-area"},
      {"custom.cfg", "PROBE BMC_TYPE\nFRUNAME good.fru\nFRUAREA Board\nFRUFIELD AM1 x\n", "4:script-field"},
      {"room.cfg", "PROBE BMC_TYPE\nFRUNAME good.fru\nFRUAREA Board\nFRUFIELD PN 0123456789\n", "4:script-room?"},
      {"device.cfg", "PROBE BMC_TYPE\nFRUNAME good.fru\nFRUADDRESS 77\n", "3:fru-device"},
      {"small.cfg", "PROBE BMC_TYPE\nFRUNAME good.fru\nFRUADDRESS 44\n", "3:fru-device"},
      {"blank.cfg", "PROBE BMC_TYPE\nFRUNAME good.fru\nFRUADDRESS 43\n", "2:script-blank"},
      {"line.cfg", "PROBE BMC_TYPE\nFRUNAME good.fru\nFRUAREA Board\nFRUFIELD PN @FILE:ASCII:good.fru:99\n",
       "4:script-file"},
      {"record.cfg", "PROBE BMC_TYPE\nSDRNAME tagged.sdr\n", "11:sdr-tag?"},
  };
  // clang-format on
  boards::Board board;
  std::string error;
  ASSERT_TRUE(boards::SaveDefaultBoard(folder_.Path() / "board", error)) << error;
  ASSERT_TRUE(boards::LoadFolder(folder_.Path() / "board", board, error)) << error;
  board.devices.push_back({.address = {.id = 0x43}, .bytes = boards::Bytes(64, 0xFF)});
  board.devices.push_back({.address = {.id = 0x44}, .bytes = boards::Bytes(16, 1)});
  for (const Case& row : cases) Write(row.name, row.text);
  for (const Case& row : cases) {
    Checker checker(&board);
    checker.Check((folder_.Path() / row.name).string());
    EXPECT_EQ(Found(checker), row.found) << row.name;
  }
}

TEST_F(Check, HoldsFilesAgainstTheBoard) {
  boards::Board board;
  board.devices.push_back({.bytes = boards::Bytes(16)});
  board.repositoryCapacity = 9;
  const std::string fru = std::string(kFruHead) + "_DATA_LEN 18\n_SEE_COMMON\n01 00 00 01 00 00 00 FE\n" +
                          "_SEE_BOARD\n01 02 00000000\nC2\n'AB'\nC0 C0 C0 C0 C1\n)\n";
  Checker checker(&board);
  checker.Check(Write("a.fru", fru));
  checker.Check(Write("a.sdr", std::string(kSdrHead) + "_SDR_TYPE C0\n" + kRecord + ")\n"));
  EXPECT_EQ(Found(checker), "5:fru-device 5:sdr-size");
}

}  // namespace
}  // namespace varnok::testing
