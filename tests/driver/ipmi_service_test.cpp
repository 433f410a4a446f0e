#include "driver/ipmi_service.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/driver/kcs_machine.h"

namespace varnok {
namespace {

using namespace testing;
using ::testing::ElementsAre;

class IpmiServiceTest : public ::testing::Test {
 protected:
  Status Send(std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command, const Bytes& data) {
    return protocol_.Send(&protocol_, netFunction, lun, command, data.data(),
                          static_cast<std::uint32_t>(data.size()));
  }
  /// Sends Get Device ID, which is answered with `answer`; its data replace `data_`, its header `header_`.
  Status Exchange(const Bytes& answer, std::uint32_t room = 64) {
    machine_.answer = [answer](const Bytes&) { return answer; };
    EXPECT_EQ(Send(6, 0, 1, {}), kSuccess);
    data_.assign(room + 1, 0xEE);
    std::uint32_t length = room;
    Status status = protocol_.Receive(&protocol_, header_.data(), &header_[1], &header_[2], &header_[3],
                                      data_.data(), &length);
    EXPECT_EQ(data_[room], 0xEE);
    EXPECT_LE(length, room);
    data_.resize(std::min(length, room));
    return status;
  }

  KcsMachine machine_;
  IpmiService service_{machine_};
  IpmiProtocol& protocol_ = service_;
  std::array<std::uint8_t, 4> header_{};  // net function, LUN, command, completion code
  Bytes data_;
};

TEST_F(IpmiServiceTest, FramesRequestsAndUnpacksResponses) {
  EXPECT_EQ(protocol_.revision, 0x10002u);
  EXPECT_EQ(Send(0x0A, 2, 0x11, {5, 6}), kSuccess);
  EXPECT_THAT(machine_.requests, ElementsAre(Bytes{0x2A, 0x11, 5, 6}));
  EXPECT_EQ(Exchange({0x2E, 0x11, 0xC9, 1, 2, 3}), kSuccess);
  EXPECT_THAT(header_, ElementsAre(0x0B, 2, 0x11, 0xC9));
  EXPECT_THAT(data_, ElementsAre(1, 2, 3));
}

TEST_F(IpmiServiceTest, CutsDataToTheCallersRoom) {
  for (std::uint32_t room : {0u, 3u}) {
    EXPECT_EQ(Exchange({0x1C, 0x01, 0, 1, 2, 3, 4}, room), kSuccess);
    EXPECT_EQ(data_.size(), room);
  }
}

TEST_F(IpmiServiceTest, RefusesWhatIsNoResponse) {
  for (const Bytes& bytes : {Bytes{}, Bytes{0x1C}, Bytes{0x1C, 0x01}, Bytes{0x18, 0x01, 0x00, 0x20}})
    EXPECT_EQ(Exchange(bytes), uefi_status::kDeviceError) << bytes.size();
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
