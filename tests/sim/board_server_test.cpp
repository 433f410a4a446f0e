#include "sim/board_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <thread>

#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

const Bytes kGreeting{0xFF, 0x01, 0xA1, 0x00, 0xA1};
const Bytes kGetDeviceId{0x05, 0x18, 0x01, 0xE2, 0xA0};

/// A request as the line carries it; none of these holds a byte to be escaped.
Bytes Framed(Bytes request) {
  request.push_back(sim::IpmbChecksum(request));
  request.push_back(0xA0);
  return request;
}

/// A machine's end of the line.
class Line {
 public:
  explicit Line(const std::string& address) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in where{};
    where.sin_family = AF_INET;
    where.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    where.sin_port = htons(static_cast<std::uint16_t>(std::stoi(address.substr(address.find(':') + 1))));
    EXPECT_EQ(connect(socket_.Number(), reinterpret_cast<sockaddr*>(&where), sizeof(where)), 0);
  }

  void Send(const Bytes& bytes) {
    EXPECT_EQ(send(socket_.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  Bytes Receive(std::size_t count) {
    Bytes bytes;
    pollfd wait{socket_.Number(), POLLIN, 0};
    while (bytes.size() < count && poll(&wait, 1, 5000) == 1) {
      std::uint8_t byte = 0;
      if (recv(socket_.Number(), &byte, 1, 0) != 1) break;
      bytes.push_back(byte);
    }
    return bytes;
  }
  /// The answer to Get Device ID: sequence, net function, command and completion code.
  void ExpectIdentity() {
    Send(kGetDeviceId);
    EXPECT_EQ(Receive(4), (Bytes{0x05, 0x1C, 0x01, 0x00}));
  }

 private:
  sim::Descriptor socket_;
};

class BoardServerTest : public BoardTest {
 protected:
  void SetUp() override {
    BoardTest::SetUp();
    OpenDefault();
    server_.emplace(*board);
    std::string error;
    ASSERT_TRUE(server_->Listen("127.0.0.1:0", error)) << error;
    ASSERT_EQ(pipe(stop_), 0);
    thread_ = std::thread([this] { server_->Run(stop_[0]); });
  }
  void TearDown() override {
    EXPECT_EQ(write(stop_[1], "x", 1), 1);
    thread_.join();
    close(stop_[0]);
    close(stop_[1]);
    BoardTest::TearDown();
  }

  std::optional<sim::BoardServer> server_;
  std::thread thread_;
  int stop_[2]{};
};

TEST_F(BoardServerTest, GreetsAndAnswersSeveralMachines) {
  Line first(server_->Address());
  Line second(server_->Address());
  EXPECT_EQ(first.Receive(5), kGreeting);
  EXPECT_EQ(second.Receive(5), kGreeting);
  first.Send({0xFF, 0x01, 0xA1, 0x08, 0x3F, 0xA1});
  first.ExpectIdentity();
  second.ExpectIdentity();
}

TEST_F(BoardServerTest, SurvivesDisconnectsAndNoise) {
  { Line gone(server_->Address()); }
  {
    Line inMidMessage(server_->Address());
    inMidMessage.Send({0x05, 0x18, 0xAA});
  }
  Line noisy(server_->Address());
  noisy.Receive(5);
  noisy.Send(Bytes(100'000, 0x55));
  noisy.Send({0xA0, 0xA1, 0xA0});
  noisy.ExpectIdentity();
}

TEST_F(BoardServerTest, StoresWhatIsWrittenAtOnce) {
  Line line(server_->Address());
  line.Receive(5);
  // Write FRU Data to device 0, offset 0: 5Ah.
  line.Send(Framed({0x01, 0x28, 0x12, 0x00, 0x00, 0x00, 0x5A}));
  EXPECT_EQ(line.Receive(5), (Bytes{0x01, 0x2C, 0x12, 0x00, 0x01}));
  bool isStored = false;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".bin") continue;
    isStored = isStored || ReadFile(entry.path().filename().string()).front() == 0x5A;
  }
  EXPECT_TRUE(isStored);
}

TEST_F(BoardServerTest, RaisesAttentionWhileAnswersWait) {
  const Bytes raised{0x01, 0xA1};
  const Bytes dropped{0x00, 0xA1};
  // Send Message to channel 0: Get Device ID to the controller at C0h.
  const Bytes send = Framed({0x02, 0x18, 0x34, 0x00, 0xC0, 0x18, 0x28, 0x20, 0x0A, 0x01, 0xD5});
  const Bytes getMessage = Framed({0x03, 0x18, 0x33});
  const std::size_t sendAnswer = 6;
  Line line(server_->Address());
  line.Receive(5);
  line.Send(send);
  EXPECT_EQ(line.Receive(sendAnswer + 2).back(), 0xA1);
  // Two wait: attention stays up until the second is taken.
  line.Send(send);
  EXPECT_EQ(line.Receive(4), (Bytes{0x02, 0x1C, 0x34, 0x00}));
  line.Receive(2);
  Line late(server_->Address());
  EXPECT_EQ(late.Receive(5), kGreeting);
  EXPECT_EQ(late.Receive(2), raised);
  for (bool isLast : {false, true}) {
    line.Send(getMessage);
    EXPECT_EQ(line.Receive(4), (Bytes{0x03, 0x1C, 0x33, 0x00}));
    Bytes last;
    do last = line.Receive(1);
    while (!last.empty() && last.front() != 0xA0);
    if (isLast) {
      EXPECT_EQ(line.Receive(2), dropped);
    }
  }
  EXPECT_EQ(late.Receive(2), dropped);
}

TEST_F(BoardServerTest, SaysWhyItCannotListen) {
  sim::BoardServer other(*board);
  std::string error;
  EXPECT_FALSE(other.Listen(server_->Address(), error));
  EXPECT_EQ(error, server_->Address() + ": Address already in use");
  for (const char* address :
       {"", "127.0.0.1", "127.0.0.1:", "127.0.0.1:99999", "127.0.0.1:80x", "nowhere:80"}) {
    EXPECT_FALSE(other.Listen(address, error)) << address;
    EXPECT_EQ(error, "\"" + std::string(address) + "\" is no address like 127.0.0.1:9002");
  }
}

}  // namespace
}  // namespace varnok::testing
