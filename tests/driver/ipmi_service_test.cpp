#include "driver/ipmi_service.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/driver/kcs_machine.h"

namespace varnok {
namespace {

using testing::Bytes;
using ::testing::ElementsAre;
using testing::KcsMachine;

class IpmiServiceTest : public ::testing::Test {
 protected:
  struct Answer {
    Status status = kSuccess;
    std::uint8_t netFunction = 0xFF;
    std::uint8_t lun = 0xFF;
    std::uint8_t command = 0xFF;
    std::uint8_t completionCode = 0xFF;
    Bytes data;
  };

  Status Send(std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command, const Bytes& data) {
    return protocol_.Send(&protocol_, netFunction, lun, command, data.data(),
                          static_cast<std::uint32_t>(data.size()));
  }
  Answer Receive(std::uint32_t room = 64) {
    Answer answer;
    answer.data.resize(room + 1, 0xEE);
    std::uint32_t length = room;
    answer.status = protocol_.Receive(&protocol_, &answer.netFunction, &answer.lun, &answer.command,
                                      &answer.completionCode, answer.data.data(), &length);
    EXPECT_EQ(answer.data[room], 0xEE);
    EXPECT_LE(length, room);
    answer.data.resize(std::min(length, room));
    return answer;
  }

  KcsMachine machine_;
  IpmiService service_{machine_};
  IpmiProtocol& protocol_ = service_;
};

TEST_F(IpmiServiceTest, FramesRequestsAndUnpacksResponses) {
  EXPECT_EQ(protocol_.revision, 0x10002u);
  machine_.answer = [](const Bytes&) { return Bytes{0x2E, 0x11, 0xC9, 1, 2, 3}; };
  ASSERT_EQ(Send(0x0A, 2, 0x11, {5, 6}), kSuccess);
  EXPECT_THAT(machine_.requests, ElementsAre(Bytes{0x2A, 0x11, 5, 6}));
  Answer answer = Receive();
  EXPECT_EQ(answer.status, kSuccess);
  EXPECT_EQ(answer.netFunction, 0x0B);
  EXPECT_EQ(answer.lun, 2);
  EXPECT_EQ(answer.command, 0x11);
  EXPECT_EQ(answer.completionCode, 0xC9);
  EXPECT_THAT(answer.data, ElementsAre(1, 2, 3));
}

TEST_F(IpmiServiceTest, CutsDataToTheCallersRoom) {
  machine_.answer = [](const Bytes&) { return Bytes{0x1C, 0x01, 0, 1, 2, 3, 4}; };
  for (std::uint32_t room : {0u, 3u}) {
    ASSERT_EQ(Send(6, 0, 1, {}), kSuccess);
    Answer answer = Receive(room);
    EXPECT_EQ(answer.status, kSuccess);
    EXPECT_EQ(answer.data.size(), room);
  }
}

TEST_F(IpmiServiceTest, RefusesWhatIsNoResponse) {
  for (const Bytes& bytes : {Bytes{}, Bytes{0x1C}, Bytes{0x1C, 0x01}, Bytes{0x18, 0x01, 0x00, 0x20}}) {
    machine_.answer = [&](const Bytes&) { return bytes; };
    ASSERT_EQ(Send(6, 0, 1, {}), kSuccess);
    EXPECT_EQ(Receive().status, uefi_status::kDeviceError) << bytes.size();
  }
}

TEST_F(IpmiServiceTest, RefusesBadArguments) {
  EXPECT_EQ(protocol_.Send(&protocol_, 6, 0, 1, nullptr, 1), uefi_status::kInvalidParameter);
  EXPECT_EQ(Send(6, 0, 1, Bytes(254)), uefi_status::kBadBufferSize);
  std::uint8_t byte = 0;
  EXPECT_EQ(protocol_.Receive(&protocol_, &byte, &byte, &byte, &byte, &byte, nullptr),
            uefi_status::kInvalidParameter);
}

TEST_F(IpmiServiceTest, FindsABmcByItsAnswer) {
  machine_.answer = [](const Bytes&) { return Bytes{0x1C, 0x01, 0xD2}; };  // still starting
  EXPECT_TRUE(service_.FindBmc());
  machine_.answer = [](const Bytes&) { return Bytes{0x1C, 0x02, 0x00}; };
  EXPECT_FALSE(service_.FindBmc());
  machine_.answersNothing = true;
  EXPECT_FALSE(service_.FindBmc());
  machine_.isAbsent = true;
  EXPECT_FALSE(service_.FindBmc());
}

}  // namespace
}  // namespace varnok
