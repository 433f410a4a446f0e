#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

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

TEST_F(BoardTest, WrittenFruBytesAreReadBackAndStandInTheFile) {
  OpenDefault();
  EXPECT_EQ(Exchange(0x0A, 0x12, {1, 0x10, 0x00, 0xDE, 0xAD}).data, Bytes{2});
  EXPECT_EQ(Exchange(0x0A, 0x11, {1, 0x0F, 0x00, 4}).data, (Bytes{4, 0xFF, 0xDE, 0xAD, 0xFF}));
  const Bytes file = ReadFile("spare.bin");
  ASSERT_EQ(file.size(), 256u);
  EXPECT_EQ(file[0x10], 0xDE);
  EXPECT_EQ(file[0x11], 0xAD);
}

}  // namespace
}  // namespace varnok::testing
