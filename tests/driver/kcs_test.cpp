#include "driver/kcs.h"

#include <gmock/gmock.h>

#include <numeric>

#include "tests/driver/kcs_machine.h"

namespace varnok {
namespace {

using testing::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::KcsMachine;

const Bytes kGetDeviceId{0x18, 0x01};

class KcsTest : public ::testing::Test {
 protected:
  KcsTest() {
    machine_.answer = [](const Bytes& request) {
      return Bytes{static_cast<std::uint8_t>(request[0] + 4), request[1], 0x00, 0x20, 0x81};
    };
  }
  ~KcsTest() override { EXPECT_FALSE(machine_.hasViolation); }

  Bytes Receive(std::size_t room = 64) {
    // A byte behind the room shows whether it is kept to.
    Bytes buffer(room + 1, 0xEE);
    std::size_t length = 99;
    status_ = kcs_.Receive(std::span(buffer).first(room), length);
    EXPECT_EQ(buffer[room], 0xEE);
    EXPECT_LE(length, room);
    buffer.resize(std::min(length, room));
    return buffer;
  }
  void ExpectExchange() {
    ASSERT_EQ(kcs_.Send(kGetDeviceId), kSuccess);
    EXPECT_THAT(Receive(), ElementsAre(0x1C, 0x01, 0x00, 0x20, 0x81));
    EXPECT_EQ(status_, kSuccess);
  }

  KcsMachine machine_;
  Kcs kcs_{machine_};
  Status status_ = kSuccess;
};

TEST_F(KcsTest, CarriesARequestAndItsAnswer) {
  Bytes request(Kcs::kLongestRequest);
  std::iota(request.begin(), request.end(), std::uint8_t{0});
  EXPECT_EQ(kcs_.Send(request), kSuccess);
  EXPECT_THAT(machine_.requests, ElementsAre(request));
  EXPECT_THAT(Receive(), ElementsAre(0x04, 0x01, 0x00, 0x20, 0x81));
  EXPECT_EQ(machine_.CurrentState(), KcsMachine::State::Idle);
  ExpectExchange();
  EXPECT_EQ(machine_.aborts, 0);
}

TEST_F(KcsTest, RefusesLengthsThatTheInterfaceCannotCarry) {
  EXPECT_EQ(kcs_.Send(Bytes{0x18}), uefi_status::kBadBufferSize);
  EXPECT_EQ(kcs_.Send(Bytes(Kcs::kLongestRequest + 1)), uefi_status::kBadBufferSize);
  EXPECT_THAT(machine_.requests, IsEmpty());
}

TEST_F(KcsTest, WaitsForSlowBytesAndASlowAnswer) {
  machine_.byteMicroseconds = 300;
  machine_.answerMicroseconds = Kcs::kLimitMicroseconds - 100'000;
  ExpectExchange();
  machine_.takesLastByteAtOnce = false;
  ExpectExchange();
  EXPECT_EQ(machine_.aborts, 0);
}

TEST_F(KcsTest, GoesOnWaitingForAnAnswerThatTakesLongerThanOneReceive) {
  for (bool takesLastByteAtOnce : {true, false}) {
    machine_.takesLastByteAtOnce = takesLastByteAtOnce;
    machine_.answerMicroseconds = Kcs::kLimitMicroseconds + 1'000'000;
    ASSERT_EQ(kcs_.Send(kGetDeviceId), kSuccess);
    EXPECT_THAT(Receive(), IsEmpty());
    EXPECT_EQ(status_, uefi_status::kTimeout);
    EXPECT_THAT(Receive(), ElementsAre(0x1C, 0x01, 0x00, 0x20, 0x81));
  }
  EXPECT_EQ(machine_.aborts, 0);
}

TEST_F(KcsTest, ReadsAwayAnAnswerThatNobodyFetched) {
  ASSERT_EQ(kcs_.Send(Bytes{0x18, 0x02}), kSuccess);
  ASSERT_EQ(kcs_.Send(Bytes{0x18, 0x03}), kSuccess);
  ExpectExchange();
  EXPECT_EQ(machine_.requests.size(), 3u);
  EXPECT_EQ(machine_.aborts, 0);
}

TEST_F(KcsTest, ReadsAwayWhatAnotherUserLeft) {
  machine_.LeaveAnswer({0x1C, 0x37, 0x00, 0x11});
  ExpectExchange();
  EXPECT_EQ(machine_.aborts, 0);
}

TEST_F(KcsTest, AbortsWhatAnotherUserBegan) {
  for (auto state : {KcsMachine::State::Write, KcsMachine::State::Error}) {
    machine_.SetState(state);
    machine_.aborts = 0;
    ExpectExchange();
    EXPECT_EQ(machine_.aborts, 1);
  }
}

TEST_F(KcsTest, CutsAnAnswerToTheRoom) {
  for (std::size_t room : {0u, 1u, 4u}) {
    ASSERT_EQ(kcs_.Send(kGetDeviceId), kSuccess);
    EXPECT_EQ(Receive(room).size(), room);
    EXPECT_EQ(status_, kSuccess);
    EXPECT_EQ(machine_.CurrentState(), KcsMachine::State::Idle);
  }
  ExpectExchange();
}

TEST_F(KcsTest, GivesUpAnAnswerWithoutEnd) {
  machine_.answer = [](const Bytes&) { return Bytes(Kcs::kLongestAnswer + 1, 0xA5); };
  ASSERT_EQ(kcs_.Send(kGetDeviceId), kSuccess);
  Receive();
  EXPECT_EQ(status_, uefi_status::kDeviceError);
  EXPECT_EQ(machine_.CurrentState(), KcsMachine::State::Idle);
}

TEST_F(KcsTest, HasNothingToReceiveWithoutARequest) {
  Receive();
  EXPECT_EQ(status_, uefi_status::kNotReady);
  ExpectExchange();
  Receive();
  EXPECT_EQ(status_, uefi_status::kNotReady);
}

TEST_F(KcsTest, SendsAgainWhenTheInterfaceFailsInARequest) {
  for (int byte : {0, 1}) {
    machine_.requests.clear();
    machine_.failAfterBytes = byte;
    machine_.refusedAborts = 1;
    const Bytes request{0x18, 0x01, 0x02};
    EXPECT_EQ(kcs_.Send(request), kSuccess);
    EXPECT_THAT(machine_.requests, ElementsAre(request));
    EXPECT_EQ(Receive().size(), 5u);
  }
}

TEST_F(KcsTest, ReportsARequestThatFailsAtItsLastByte) {
  machine_.failAfterBytes = 1;
  ASSERT_EQ(kcs_.Send(kGetDeviceId), kSuccess);
  Receive();
  EXPECT_EQ(status_, uefi_status::kDeviceError);
  ExpectExchange();
}

TEST_F(KcsTest, ReportsAnAnswerThatBreaksOffAndRecovers) {
  for (int* fault : {&machine_.breakAnswerAt, &machine_.stuckOutputAt}) {
    for (int byte : {1, 4, 5}) {
      *fault = byte;
      ASSERT_EQ(kcs_.Send(kGetDeviceId), kSuccess);
      Receive();
      EXPECT_EQ(status_, uefi_status::kDeviceError) << byte;
      Receive();
      EXPECT_EQ(status_, uefi_status::kNotReady) << byte;
      ExpectExchange();
    }
  }
}

TEST_F(KcsTest, RecoversFromABmcThatLostTheRequest) {
  machine_.answersNothing = true;
  ASSERT_EQ(kcs_.Send(kGetDeviceId), kSuccess);
  machine_.SetState(KcsMachine::State::Idle);  // it was reset
  Receive();
  EXPECT_EQ(status_, uefi_status::kDeviceError);
  ASSERT_EQ(kcs_.Send(kGetDeviceId), kSuccess);
  machine_.answersNothing = false;
  machine_.clock = 0;
  ExpectExchange();  // after one wait for the answer that never comes
  EXPECT_LE(machine_.clock, Kcs::kLimitMicroseconds);
}

TEST_F(KcsTest, EveryWaitEnds) {
  machine_.inputStuck = true;
  EXPECT_EQ(kcs_.Send(kGetDeviceId), uefi_status::kTimeout);
  EXPECT_LE(machine_.clock, 2 * Kcs::kLimitMicroseconds);
  machine_.inputStuck = false;
  machine_.refusedAborts = 1000;
  machine_.SetState(KcsMachine::State::Error);
  EXPECT_EQ(kcs_.Send(kGetDeviceId), uefi_status::kDeviceError);
  machine_.refusedAborts = 0;
  ExpectExchange();
}

TEST_F(KcsTest, TellsThatNothingDrivesTheBus) {
  machine_.isAbsent = true;
  EXPECT_FALSE(kcs_.IsPresent());
  EXPECT_EQ(kcs_.Send(kGetDeviceId), uefi_status::kNotFound);
  EXPECT_EQ(machine_.clock, 0u);
  machine_.isAbsent = false;
  EXPECT_TRUE(kcs_.IsPresent());
}

}  // namespace
}  // namespace varnok
