#include "driver/kcs.h"

#include <gmock/gmock.h>

#include <numeric>

#include "tests/driver/kcs_machine.h"

namespace varnok {
namespace {

using namespace testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Bytes kGetDeviceId{0x18, 0x01};

/// Requests are answered with five bytes; each test leaves the interface idle.
class KcsTest : public ::testing::Test {
 protected:
  KcsTest() {
    machine_.answer = [](const Bytes& request) {
      return Bytes{static_cast<std::uint8_t>(request[0] + 4), request[1], 0x00, 0x20, 0x81};
    };
  }
  ~KcsTest() override {
    EXPECT_FALSE(machine_.hasViolation);
    EXPECT_EQ(machine_.CurrentState(), KcsMachine::State::Idle);
  }

  void Send() { EXPECT_EQ(kcs_.Send(kGetDeviceId), kSuccess); }
  Bytes Receive(Status status = kSuccess, std::size_t room = 64) {
    // A byte behind the room shows whether it is kept to.
    Bytes buffer(room + 1, 0xEE);
    std::size_t length = 99;
    EXPECT_EQ(kcs_.Receive(std::span(buffer).first(room), length), status);
    EXPECT_EQ(buffer[room], 0xEE);
    EXPECT_LE(length, room);
    buffer.resize(std::min(length, room));
    return buffer;
  }
  void ExpectExchange() {
    Send();
    EXPECT_THAT(Receive(), ElementsAre(0x1C, 0x01, 0x00, 0x20, 0x81));
  }

  KcsMachine machine_;
  Kcs kcs_{machine_};
};

TEST_F(KcsTest, CarriesARequestAndItsAnswer) {
  Bytes request(Kcs::kLongestRequest);
  std::iota(request.begin(), request.end(), std::uint8_t{0});
  EXPECT_EQ(kcs_.Send(request), kSuccess);
  EXPECT_THAT(machine_.requests, ElementsAre(request));
  EXPECT_THAT(Receive(), ElementsAre(0x04, 0x01, 0x00, 0x20, 0x81));
  ExpectExchange();
  EXPECT_EQ(machine_.aborts, 0);
}

TEST_F(KcsTest, RefusesLengthsThatTheInterfaceCannotCarry) {
  EXPECT_EQ(kcs_.Send(Bytes{0x18}), uefi_status::kBadBufferSize);
  EXPECT_EQ(kcs_.Send(Bytes(Kcs::kLongestRequest + 1)), uefi_status::kBadBufferSize);
  EXPECT_THAT(machine_.requests, IsEmpty());
}

TEST_F(KcsTest, WaitsForSlowBytesAndASlowAnswerLongerThanOneReceive) {
  machine_.byteMicroseconds = 300;
  for (bool takesLastByteAtOnce : {true, false}) {
    machine_.takesLastByteAtOnce = takesLastByteAtOnce;
    machine_.answerMicroseconds = Kcs::kLimitMicroseconds - 100'000;
    ExpectExchange();
    machine_.answerMicroseconds = Kcs::kLimitMicroseconds + 1'000'000;
    Send();
    EXPECT_THAT(Receive(uefi_status::kTimeout), IsEmpty());
    EXPECT_EQ(Receive().size(), 5u);
  }
  EXPECT_EQ(machine_.aborts, 0);
}

TEST_F(KcsTest, ReadsAwayAnAnswerThatNobodyFetched) {
  machine_.LeaveAnswer({0x1C, 0x37, 0x00, 0x11});  // another user's
  Send();
  Send();
  ExpectExchange();
  EXPECT_EQ(machine_.requests.size(), 3u);
  EXPECT_EQ(machine_.aborts, 0);
}

TEST_F(KcsTest, AbortsWhatAnotherUserBegan) {
  machine_.SetState(KcsMachine::State::Write);
  ExpectExchange();
  EXPECT_EQ(machine_.aborts, 1);
  machine_.SetState(KcsMachine::State::Error);
  ExpectExchange();
  EXPECT_EQ(machine_.aborts, 2);
}

TEST_F(KcsTest, CutsAnAnswerToTheRoom) {
  for (std::size_t room : {0u, 1u, 4u}) {
    Send();
    EXPECT_EQ(Receive(kSuccess, room).size(), room);
    EXPECT_EQ(machine_.CurrentState(), KcsMachine::State::Idle);
  }
}

TEST_F(KcsTest, GivesUpAnAnswerWithoutEnd) {
  machine_.answer = [](const Bytes&) { return Bytes(Kcs::kLongestAnswer + 1, 0xA5); };
  Send();
  Receive(uefi_status::kDeviceError);
}

TEST_F(KcsTest, HasNothingToReceiveWithoutARequest) {
  Receive(uefi_status::kNotReady);
  ExpectExchange();
  Receive(uefi_status::kNotReady);
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
  Send();
  Receive(uefi_status::kDeviceError);
  ExpectExchange();
}

TEST_F(KcsTest, ReportsAnAnswerThatBreaksOffAndRecovers) {
  for (int* fault : {&machine_.breakAnswerAt, &machine_.stuckOutputAt}) {
    for (int byte : {1, 4, 5}) {
      SCOPED_TRACE(byte);
      *fault = byte;
      Send();
      Receive(uefi_status::kDeviceError);
      Receive(uefi_status::kNotReady);
      ExpectExchange();
    }
  }
}

TEST_F(KcsTest, RecoversFromABmcThatLostTheRequest) {
  machine_.answersNothing = true;
  Send();
  machine_.SetState(KcsMachine::State::Idle);  // it was reset
  Receive(uefi_status::kDeviceError);
  Send();
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
