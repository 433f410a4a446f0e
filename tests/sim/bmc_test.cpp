// What the BMC answers to identity, reset, FRU, private-bus, transfer-mode, sensor, LAN and OEM requests.
#include <tuple>

#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

const std::string kIdentity = "00 20 81 01 05 02 BF 40 E2 01 11 43 00 00 00 00";
const std::string kUpdating = "00 20 81 81 05 02 BF 40 E2 01 11 43 00 00 00 00";

/// What, keys of the BMC, content of a.bin, what is asked, and the content of a.bin behind it.
using Case = std::tuple<const char*, std::string, std::string, Conversation, std::string>;

class BmcTest : public BoardTest {
 protected:
  void Expect(std::initializer_list<Case> cases) {
    for (const auto& [what, keys, content, conversation, after] : cases) {
      SCOPED_TRACE(what);
      WriteFile("a.bin", content);
      OpenBmc(keys);
      Converse(conversation);
      EXPECT_EQ(TextOf("a.bin"), after);
    }
  }
};

TEST_F(BmcTest, DefaultBoardAnswersAndStores) {
  OpenDefault();
  Converse({{"06/0 01", "00 20 81 01 05 02 BF 40 E2 01 11 43 01 12 02 07"},
            {"06/0 77", "C1"},           // no such command
            {"3E/0 01", "C1"},           // no such net function
            {"06/0 01 00", "C7"},        // one byte too many
            {"0A/0 11 00 00 00", "C7"},  // one too few
            {"06/1 01", "C2"},           // not on this LUN
            {"06/4 01", "refused"},
            {"0A/0 12 01 10 00 DE AD", "00 02"},
            {"0A/0 11 01 0F 00 04", "00 04 FF DE AD FF"}});
  EXPECT_EQ(Exchange(0x06, 0x52, Bytes(256)), "refused");
  const Bytes file = ReadFile("spare.bin");
  ASSERT_EQ(file.size(), 256u);
  EXPECT_EQ(file[0x10], 0xDE);
  EXPECT_EQ(file[0x11], 0xAD);
}

TEST_F(BmcTest, AnswersAreFetchedOnceAndWhole) {
  OpenDefault();
  Converse({{"fetch", "lost"},
            {"0A/0 11 00 00 00 40", "too long"},  // 65 bytes of data against room for 64
            {"fetch", "lost"}});
  // An answer that nobody fetched is gone with the next request.
  IpmiProtocol* ipmi = board->InstalledIpmi();
  ASSERT_EQ(ipmi->Send(ipmi, 0x06, 0, 0x02, nullptr, 0), kSuccess);
  EXPECT_EQ(Ask("wait 60000"), "");
  EXPECT_EQ(Ask("06/0 01").substr(0, 5), "00 20");
}

TEST_F(BmcTest, IdentityResetAndTransferMode) {
  // clang-format off
  Expect({
      {"identity by board.json",
       R"("identity": {"deviceId": 33, "deviceRevision": 2, "providesSdrs": false, "firmwareMajor": "0x7F",
         "firmwareMinor": "0x99", "ipmiVersion": "1.5", "additionalSupport": 0, "manufacturerId": "0x123456",
         "productId": "0xABCD", "auxiliary": [1, 2, 3, 4], "answersAuxiliary": false})",
       "", {{"06/0 01", "00 21 02 7F 99 51 00 56 34 12 CD AB"}}, ""},
      {"a cold reset silences the BMC for its time", R"("coldResetMilliseconds": 4000)", "",
       {{"06/0 02", "00"}, {"06/0 01", "lost"}, {"wait 3900", ""}, {"06/0 01", "lost"}, {"wait 100", ""},
        {"06/0 01", kIdentity}}, ""},
      {"transfer mode needs its key and stops the inventory", R"("frus": [{"id": 0, "file": "a.bin"}])", "x",
       {{"08/0 04", "D5"},  // not in it
        {"08/0 00 4F 4B 41 50", "C7"}, {"08/0 00 4F 4B 41 50 6A", "CC"}, {"08/0 00 4F 4B 41 50 49", "00"},
        {"06/0 01", kUpdating}, {"0A/0 10 00", "D1"}, {"08/0 00 4F 4B 41 50 49", "D5"},
        {"08/0 04", "00"}, {"06/0 01", kIdentity}, {"0A/0 10 00", "00 01 00 00"}}, "x"},
      {"transfer mode that is stuck survives exit and reset",
       R"("coldResetMilliseconds": 0, "transferMode": {"active": true, "stuck": true})", "",
       {{"08/0 04", "00"}, {"06/0 02", "00"}, {"06/0 01", kUpdating}}, ""},
  });
  // clang-format on
}

TEST_F(BmcTest, FruDevices) {
  // clang-format off
  Expect({
      {"ranges", R"("frus": [{"id": 3, "file": "a.bin"}])", std::string(260, 'x'),
       {{"0A/0 10 03", "00 04 01 00"}, {"0A/0 10 04", "CB"}, {"0A/0 11 04 00 00 01", "CB"},
        {"0A/0 12 04 00 00 01", "CB"},
        {"0A/0 11 03 04 01 01", "C9"},           // starts at the end
        {"0A/0 11 03 02 01 08", "00 02 78 78"},  // reaches past it
        {"0A/0 11 03 00 00 00", "CC"}, {"0A/0 12 03 03 01 01 01", "C9"},
        {"0A/0 12 03 00 00", "C7"}},  // nothing to write
       std::string(260, 'x')},
      {"limits", R"("frus": [{"id": 0, "file": "a.bin"}],
         "fruLimits": {"read": 4, "write": 2, "readCode": "0xC8", "writeCode": "0xC7"})", "abcdefgh",
       {{"0A/0 11 00 00 00 05", "C8"}, {"0A/0 11 00 00 00 00", "C8"},
        {"0A/0 11 00 00 00 04", "00 04 61 62 63 64"}, {"0A/0 12 00 00 00 58 59 5A", "C7"},
        {"0A/0 12 00 00 00 58 59", "00 02"}}, "XYcdefgh"},
      {"words", R"("frus": [{"id": 0, "file": "a.bin", "access": "word"}])", "abcdefgh",
       {{"0A/0 10 00", "00 08 00 01"}, {"0A/0 11 00 01 00 02", "00 02 63 64 65 66"},
        {"0A/0 12 00 03 00 58 59", "00 01"}, {"0A/0 12 00 00 00 58", "C7"}}, "abcdefXY"},
      {"read-only", R"("frus": [{"id": 0, "file": "a.bin", "readOnly": true}])", "abc",
       {{"0A/0 12 00 00 00 58", "80"}, {"0A/0 11 00 00 00 01", "00 01 61"}}, "abc"},
      {"a short image reads as erased", R"("frus": [{"id": 0, "file": "a.bin", "size": 4}])", "ab",
       {{"0A/0 11 00 00 00 04", "00 04 61 62 FF FF"}, {"0A/0 12 00 03 00 64", "00 01"}}, "ab\xFF" "d"},
  });
  // clang-format on
}

TEST_F(BmcTest, Eeproms) {
  // clang-format off
  Expect({
      {"AT24C02, two offset bytes, past the end is the start",
       R"("eeproms": [{"kind": "AT24C02", "bus": 3, "address": "0xA0", "size": 512, "file": "a.bin"}])",
       std::string(512, '.'),
       {{"06/0 52 03 A0 00 01 04 68 69", "00"}, {"06/1 52 03 A0 03 01 04", "00 68 69 2E"},
        {"06/0 52 03 A0 00", "00"},  // is it there?
        {"06/0 52 03 A2 00", "83"}, {"06/0 52 05 A0 00", "83"}, {"06/0 52 03 A0", "C7"},
        {"06/0 52 03 A0 C8 00 00", "CA"}, {"06/0 52 03 A0 00 01 FF 79 7A", "00"}},
       "z" + std::string(0x103, '.') + "hi" + std::string(0xF9, '.') + "y"},
      {"DS1624S, by its memory command alone",
       R"("eeproms": [{"kind": "DS1624S", "bus": 5, "address": "0x90", "file": "a.bin"}])",
       std::string(256, '.'),
       {{"06/0 52 05 90 00 17 20 6F 6B", "00"}, {"06/0 52 05 90 02 17 20", "00 6F 6B"},
        {"06/0 52 05 90 02 AA", "00 19 00"},  // temperature
        {"06/0 52 05 90 00 00 20 6E 6F", "00"}},
       std::string(0x20, '.') + "ok" + std::string(0xDE, '.')},
  });
  // clang-format on
}

TEST_F(BmcTest, SensorsLanParametersAndTheMakersOwn) {
  // clang-format off
  Expect({
      {"sensors", R"("sensors": [{"number": "0x60", "reading": [0, "0xC0", 128, 2]},
         {"number": 1, "completionCode": "0xCE"}])", "",
       {{"04/0 2D 60", "00 00 C0 80 02"}, {"04/0 2D 01", "CE"}, {"04/0 2D 02", "CB"}}, ""},
      {"LAN parameters by channel, set and block",
       R"("lanParameters": [{"parameter": 3, "data": [192, 0, 2, 20]},
         {"channel": 3, "parameter": "0xC3", "set": 1, "block": 2, "data": [7]}])", "",
       {{"0C/0 02 01 03 00 00", "00 11 C0 00 02 14"},
        {"0C/0 02 81 03 00 00", "00 11"},  // the revision alone
        {"0C/0 02 03 C3 01 02", "00 11 07"}, {"0C/0 02 02 03 00 00", "80"}, {"0C/0 02 01 04 00 00", "80"},
        {"0C/0 02 03 C3 00 02", "80"}, {"0C/0 02 03 C3 01 00", "80"}}, ""},
      {"the maker's requests", R"("oem": [{"command": "0x14", "data": [15, 2], "answer": [3]},
         {"command": "0x93", "answer": [46]}, {"command": "0x97", "completionCode": "0xCB"}],
         "keyValues": [{"key": "Reg.", "value": "EU"}])", "",
       {{"30/0 14 0F 02 00", "00 03"}, {"30/0 14 0F 01 00", "CC"}, {"30/0 93", "00 2E"},
        {"30/0 94", "CC"},  // no row
        {"30/0 97 01", "CB"}, {"32/0 10 52 65 67 2E", "00 45 55"}, {"32/0 10 52 65 67", "CB"}}, ""},
  });
  // clang-format on
}

TEST_F(BmcTest, ClockFollowsStallsAndExchanges) {
  OpenBmc("", R"(, "clock": {"start": "2024-02-28T23:59:58", "exchangeMicroseconds": 500000})");
  EXPECT_EQ(Ask("wait 1000"), "");
  EXPECT_EQ(board->Now().day, 28);
  Converse({{"06/0 01", kIdentity}, {"06/0 01", kIdentity}});
  const WallClock now = board->Now();
  EXPECT_EQ(now.month, 2);
  EXPECT_EQ(now.day, 29);
  EXPECT_EQ(now.hour * 3600 + now.minute * 60 + now.second, 0);
}

}  // namespace
}  // namespace varnok::testing
