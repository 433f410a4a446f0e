// What the BMC answers to identity, reset, FRU, private-bus and transfer-mode requests.
#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

constexpr std::string_view kOneFru = R"({"bmc": {"frus": [{"id": 3, "file": "a.bin"}]}, "smbios": ""})";

TEST_F(BoardTest, DefaultBoardAnswersGetDeviceId) {
  OpenDefault();
  const Reply reply = Exchange(0x06, 0x01, {});
  EXPECT_EQ(reply.receiveStatus, kSuccess);
  EXPECT_EQ(reply.netFunction, 0x07);
  EXPECT_EQ(reply.command, 0x01);
  EXPECT_EQ(reply.completionCode, 0);
  EXPECT_EQ(reply.data,
            (Bytes{0x20, 0x81, 0x01, 0x05, 0x02, 0xBF, 0x40, 0xE2, 0x01, 0x11, 0x43, 1, 0x12, 2, 7}));
}

TEST_F(BoardTest, IdentityFollowsBoardJson) {
  OpenWith(R"({"smbios": "", "bmc": {"identity": {"deviceId": 33, "deviceRevision": 2, "providesSdrs": false,
    "firmwareMajor": "0x7F", "firmwareMinor": "0x99", "ipmiVersion": "1.5", "additionalSupport": 0,
    "manufacturerId": "0x123456", "productId": "0xABCD", "auxiliary": [1, 2, 3, 4], "answersAuxiliary": false}}})");
  EXPECT_EQ(Exchange(0x06, 0x01, {}).data, (Bytes{33, 2, 0x7F, 0x99, 0x51, 0, 0x56, 0x34, 0x12, 0xCD, 0xAB}));
}

TEST_F(BoardTest, RequestsThatTheBmcDoesNotTake) {
  OpenDefault();
  EXPECT_EQ(Exchange(0x06, 0x77, {}).completionCode, 0xC1);         // no such command
  EXPECT_EQ(Exchange(0x3E, 0x01, {}).completionCode, 0xC1);         // no such net function
  EXPECT_EQ(Exchange(0x06, 0x01, {0}).completionCode, 0xC7);        // one byte too many
  EXPECT_EQ(Exchange(0x0A, 0x11, {0, 0, 0}).completionCode, 0xC7);  // one too few
  EXPECT_EQ(Exchange(0x06, 0x01, {}, 1).completionCode, 0xC2);      // not on this LUN
  EXPECT_EQ(Exchange(0x06, 0x01, {}, 4).sendStatus, uefi_status::kInvalidParameter);
  EXPECT_EQ(Exchange(0x06, 0x52, Bytes(256)).sendStatus, uefi_status::kInvalidParameter);
}

TEST_F(BoardTest, ReceiveWithoutRequestOrWithoutRoomFails) {
  OpenDefault();
  EXPECT_EQ(Receive().receiveStatus, uefi_status::kTimeout);
  ASSERT_EQ(Send(0x0A, 0x11, {0, 0, 0, 64}), kSuccess);  // 65 bytes of data against room for 64
  EXPECT_EQ(Receive().receiveStatus, uefi_status::kBufferTooSmall);
  EXPECT_EQ(Receive().receiveStatus, uefi_status::kTimeout);
  ASSERT_EQ(Send(0x06, 0x02, {}), kSuccess);  // an answer that nobody fetched is gone with the next request
  board->Stall(60'000'000, StallKind::Waiting);
  EXPECT_EQ(Exchange(0x06, 0x01, {}).command, 0x01);
}

TEST_F(BoardTest, ColdResetSilencesTheBmcForItsTime) {
  OpenWith(R"({"smbios": "", "bmc": {"coldResetMilliseconds": 4000}})");
  EXPECT_EQ(Exchange(0x06, 0x02, {}).completionCode, 0);
  EXPECT_EQ(Exchange(0x06, 0x01, {}).receiveStatus, uefi_status::kTimeout);
  board->Stall(3'900'000, StallKind::Waiting);
  EXPECT_EQ(Exchange(0x06, 0x01, {}).receiveStatus, uefi_status::kTimeout);
  board->Stall(100'000, StallKind::Pacing);
  EXPECT_EQ(Exchange(0x06, 0x01, {}).receiveStatus, kSuccess);
}

TEST_F(BoardTest, TransferModeNeedsItsKeyAndStopsInventory) {
  OpenDefault();
  const Bytes key = {'O', 'K', 'A', 'P', 'I'};
  EXPECT_EQ(Exchange(0x08, 0x04, {}).completionCode, 0xD5);  // not in it
  EXPECT_EQ(Exchange(0x08, 0x00, {'O', 'K', 'A', 'P'}).completionCode, 0xC7);
  EXPECT_EQ(Exchange(0x08, 0x00, {'O', 'K', 'A', 'P', 'j'}).completionCode, 0xCC);
  EXPECT_EQ(Exchange(0x08, 0x00, key).completionCode, 0);
  EXPECT_EQ(Exchange(0x06, 0x01, {}).data[2], 0x81);
  EXPECT_EQ(Exchange(0x0A, 0x10, {0}).completionCode, 0xD1);
  EXPECT_EQ(Exchange(0x08, 0x00, key).completionCode, 0xD5);
  EXPECT_EQ(Exchange(0x08, 0x04, {}).completionCode, 0);
  EXPECT_EQ(Exchange(0x06, 0x01, {}).data[2], 0x01);
  EXPECT_EQ(Exchange(0x0A, 0x10, {0}).completionCode, 0);
}

TEST_F(BoardTest, StuckTransferModeSurvivesExitAndReset) {
  OpenWith(
      R"({"smbios": "", "bmc": {"coldResetMilliseconds": 0, "transferMode": {"active": true, "stuck": true}}})");
  EXPECT_EQ(Exchange(0x08, 0x04, {}).completionCode, 0);
  EXPECT_EQ(Exchange(0x06, 0x02, {}).completionCode, 0);
  EXPECT_EQ(Exchange(0x06, 0x01, {}).data[2] & 0x80, 0x80);
}

TEST_F(BoardTest, WrittenFruBytesAreReadBackAndStandInTheFile) {
  OpenDefault();
  EXPECT_EQ(Exchange(0x0A, 0x12, {1, 0x10, 0x00, 0xDE, 0xAD}).data, Bytes{2});
  EXPECT_EQ(Exchange(0x0A, 0x11, {1, 0x0F, 0x00, 4}).data, (Bytes{4, 0xFF, 0xDE, 0xAD, 0xFF}));
  const Bytes file = ReadFile("spare.bin");
  ASSERT_EQ(file.size(), 256u);
  EXPECT_EQ(file[0x10], 0xDE);
  EXPECT_EQ(file[0x11], 0xAD);
}

TEST_F(BoardTest, FruRangesAreChecked) {
  WriteFile("a.bin", std::string(260, 'x'));
  OpenWith(kOneFru);
  EXPECT_EQ(Exchange(0x0A, 0x10, {3}).data, (Bytes{4, 1, 0}));
  EXPECT_EQ(Exchange(0x0A, 0x10, {4}).completionCode, 0xCB);
  EXPECT_EQ(Exchange(0x0A, 0x11, {4, 0, 0, 1}).completionCode, 0xCB);
  EXPECT_EQ(Exchange(0x0A, 0x12, {4, 0, 0, 1}).completionCode, 0xCB);
  EXPECT_EQ(Exchange(0x0A, 0x11, {3, 4, 1, 1}).completionCode, 0xC9);        // starts at the end
  EXPECT_EQ(Exchange(0x0A, 0x11, {3, 2, 1, 8}).data, (Bytes{2, 'x', 'x'}));  // reaches past it
  EXPECT_EQ(Exchange(0x0A, 0x11, {3, 0, 0, 0}).completionCode, 0xCC);
  EXPECT_EQ(Exchange(0x0A, 0x12, {3, 3, 1, 1, 1}).completionCode, 0xC9);
  EXPECT_EQ(Exchange(0x0A, 0x12, {3, 0, 0}).completionCode, 0xC7);  // nothing to write
  EXPECT_EQ(ReadFile("a.bin"), Bytes(260, 'x'));
}

TEST_F(BoardTest, FruLimitsAnswerTheirCodes) {
  WriteFile("a.bin", std::string(64, 'x'));
  OpenWith(R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "a.bin"}],
    "fruLimits": {"read": 4, "write": 2, "readCode": "0xC8", "writeCode": "0xC7"}}})");
  EXPECT_EQ(Exchange(0x0A, 0x11, {0, 0, 0, 5}).completionCode, 0xC8);
  EXPECT_EQ(Exchange(0x0A, 0x11, {0, 0, 0, 0}).completionCode, 0xC8);
  EXPECT_EQ(Exchange(0x0A, 0x11, {0, 0, 0, 4}).completionCode, 0);
  EXPECT_EQ(Exchange(0x0A, 0x12, {0, 0, 0, 1, 2, 3}).completionCode, 0xC7);
  EXPECT_EQ(Exchange(0x0A, 0x12, {0, 0, 0, 1, 2}).completionCode, 0);
}

TEST_F(BoardTest, WordDevicesCountInWords) {
  WriteFile("a.bin", "abcdefgh");
  OpenWith(R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "a.bin", "access": "word"}]}})");
  EXPECT_EQ(Exchange(0x0A, 0x10, {0}).data, (Bytes{8, 0, 1}));
  EXPECT_EQ(Exchange(0x0A, 0x11, {0, 1, 0, 2}).data, (Bytes{2, 'c', 'd', 'e', 'f'}));
  EXPECT_EQ(Exchange(0x0A, 0x12, {0, 3, 0, 'X', 'Y'}).data, Bytes{1});
  EXPECT_EQ(Exchange(0x0A, 0x12, {0, 0, 0, 'X'}).completionCode, 0xC7);  // half a word
  EXPECT_EQ(ReadFile("a.bin"), (Bytes{'a', 'b', 'c', 'd', 'e', 'f', 'X', 'Y'}));
}

TEST_F(BoardTest, ReadOnlyFruIsWriteProtected) {
  WriteFile("a.bin", "abc");
  OpenWith(R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "a.bin", "readOnly": true}]}})");
  EXPECT_EQ(Exchange(0x0A, 0x12, {0, 0, 0, 'X'}).completionCode, 0x80);
  EXPECT_EQ(Exchange(0x0A, 0x11, {0, 0, 0, 1}).data, (Bytes{1, 'a'}));
}

TEST_F(BoardTest, ShortImageReadsAsErasedBehindItsEnd) {
  WriteFile("a.bin", "ab");
  OpenWith(R"({"smbios": "", "bmc": {"frus": [{"id": 0, "file": "a.bin", "size": 4}]}})");
  EXPECT_EQ(Exchange(0x0A, 0x11, {0, 0, 0, 4}).data, (Bytes{4, 'a', 'b', 0xFF, 0xFF}));
  EXPECT_EQ(Exchange(0x0A, 0x12, {0, 3, 0, 'd'}).completionCode, 0);
  EXPECT_EQ(ReadFile("a.bin"), (Bytes{'a', 'b', 0xFF, 'd'}));
}

TEST_F(BoardTest, At24c02TakesTwoOffsetBytes) {
  WriteFile("e.bin", std::string(512, '.'));
  OpenWith(R"({"smbios": "", "bmc": {"eeproms":
    [{"kind": "AT24C02", "bus": 3, "address": "0xA0", "size": 512, "file": "e.bin"}]}})");
  EXPECT_EQ(Exchange(0x06, 0x52, {3, 0xA0, 0, 1, 4, 'h', 'i'}).completionCode, 0);
  EXPECT_EQ(Exchange(0x06, 0x52, {3, 0xA0, 3, 1, 4}, 1).data, (Bytes{'h', 'i', '.'}));  // LUN 1 does as well
  EXPECT_EQ(ReadFile("e.bin")[0x104], 'h');
  EXPECT_EQ(Exchange(0x06, 0x52, {3, 0xA0, 0}).completionCode, 0);     // is it there?
  EXPECT_EQ(Exchange(0x06, 0x52, {3, 0xA2, 0}).completionCode, 0x83);  // other address
  EXPECT_EQ(Exchange(0x06, 0x52, {5, 0xA0, 0}).completionCode, 0x83);  // other bus
  EXPECT_EQ(Exchange(0x06, 0x52, {3, 0xA0}).completionCode, 0xC7);
  EXPECT_EQ(Exchange(0x06, 0x52, {3, 0xA0, 200, 0, 0}).completionCode, 0xCA);
  EXPECT_EQ(Exchange(0x06, 0x52, {3, 0xA0, 0, 1, 0xFF, 'y', 'z'}).completionCode, 0);
  EXPECT_EQ(ReadFile("e.bin")[0x1FF], 'y');
  EXPECT_EQ(ReadFile("e.bin")[0], 'z');  // past the end is the start
}

TEST_F(BoardTest, Ds1624sIsReachedByItsMemoryCommand) {
  WriteFile("d.bin", std::string(256, '.'));
  OpenWith(R"({"smbios": "", "bmc": {"eeproms":
    [{"kind": "DS1624S", "bus": 5, "address": "0x90", "file": "d.bin"}]}})");
  EXPECT_EQ(Exchange(0x06, 0x52, {5, 0x90, 0, 0x17, 0x20, 'o', 'k'}).completionCode, 0);
  EXPECT_EQ(Exchange(0x06, 0x52, {5, 0x90, 2, 0x17, 0x20}).data, (Bytes{'o', 'k'}));
  EXPECT_EQ(Exchange(0x06, 0x52, {5, 0x90, 2, 0xAA}).data, (Bytes{0x19, 0x00}));  // temperature
  EXPECT_EQ(Exchange(0x06, 0x52, {5, 0x90, 0, 0x00, 0x20, 'n', 'o'}).completionCode, 0);
  EXPECT_EQ(ReadFile("d.bin")[0x20], 'o');  // without 17h nothing is stored
}

TEST_F(BoardTest, ClockFollowsStallsAndExchanges) {
  OpenWith(R"({"smbios": "", "clock": {"start": "2024-02-28T23:59:58", "exchangeMicroseconds": 500000}})");
  board->Stall(1'000'000, StallKind::Waiting);
  EXPECT_EQ(board->Now().day, 28);
  Exchange(0x06, 0x01, {});
  Exchange(0x06, 0x01, {});
  const WallClock now = board->Now();
  EXPECT_EQ(now.month, 2);
  EXPECT_EQ(now.day, 29);
  EXPECT_EQ(now.hour * 3600 + now.minute * 60 + now.second, 0);
}

TEST_F(BoardTest, SensorsAnswerByTheirRows) {
  OpenWith(R"({"smbios": "", "bmc": {"sensors": [{"number": "0x60", "reading": [0, "0xC0", 128, 2]},
    {"number": 1, "completionCode": "0xCE"}]}})");
  EXPECT_EQ(Exchange(0x04, 0x2D, {0x60}).data, (Bytes{0, 0xC0, 0x80, 2}));
  EXPECT_EQ(Exchange(0x04, 0x2D, {0x01}).completionCode, 0xCE);
  EXPECT_EQ(Exchange(0x04, 0x2D, {0x02}).completionCode, 0xCB);
}

TEST_F(BoardTest, LanParametersAnswerByChannelSetAndBlock) {
  OpenWith(R"({"smbios": "", "bmc": {"lanParameters": [{"parameter": 3, "data": [192, 0, 2, 20]},
    {"channel": 3, "parameter": "0xC3", "set": 1, "block": 2, "data": [7]}]}})");
  EXPECT_EQ(Exchange(0x0C, 0x02, {1, 3, 0, 0}).data, (Bytes{0x11, 192, 0, 2, 20}));
  EXPECT_EQ(Exchange(0x0C, 0x02, {0x81, 3, 0, 0}).data, (Bytes{0x11})) << "the revision alone";
  EXPECT_EQ(Exchange(0x0C, 0x02, {3, 0xC3, 1, 2}).data, (Bytes{0x11, 7}));
  for (const Bytes& other : {Bytes{2, 3, 0, 0}, {1, 4, 0, 0}, {3, 0xC3, 0, 2}, {3, 0xC3, 1, 0}})
    EXPECT_EQ(Exchange(0x0C, 0x02, other).completionCode, 0x80);
}

TEST_F(BoardTest, MakersRequestsAnswerByTheirRows) {
  OpenWith(R"({"smbios": "", "bmc": {"oem": [{"command": "0x14", "data": [15, 2], "answer": [3]},
    {"command": "0x93", "answer": [46]}, {"command": "0x97", "completionCode": "0xCB"}],
    "keyValues": [{"key": "Region", "value": "EU"}]}})");
  EXPECT_EQ(Exchange(0x30, 0x14, {0x0F, 2, 0}).data, (Bytes{3}));
  EXPECT_EQ(Exchange(0x30, 0x14, {0x0F, 1, 0}).completionCode, 0xCC);
  EXPECT_EQ(Exchange(0x30, 0x93, {}).data, (Bytes{46}));
  EXPECT_EQ(Exchange(0x30, 0x94, {}).completionCode, 0xCC) << "no row";
  EXPECT_EQ(Exchange(0x30, 0x97, {1}).completionCode, 0xCB);
  EXPECT_EQ(Exchange(0x32, 0x10, {'R', 'e', 'g', 'i', 'o', 'n'}).data, (Bytes{'E', 'U'}));
  EXPECT_EQ(Exchange(0x32, 0x10, {'R', 'e', 'g'}).completionCode, 0xCB);
}

}  // namespace
}  // namespace varnok::testing
