#include "sim/board_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <chrono>
#include <ctime>
#include <deque>
#include <thread>

#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

/// A machine's end of the line.
class Line {
 public:
  explicit Line(const std::string& address, bool isConnected = true)
      : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    if (isConnected) Connect(address);
  }
  void Connect(const std::string& address) {
    sockaddr_in where{};
    where.sin_family = AF_INET;
    where.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    where.sin_port = htons(static_cast<std::uint16_t>(std::stoi(address.substr(address.find(':') + 1))));
    EXPECT_EQ(connect(socket_.Number(), reinterpret_cast<sockaddr*>(&where), sizeof(where)), 0);
  }
  void ExpectGreeting() { EXPECT_EQ(Receive(5), (Bytes{0xFF, 0x01, 0xA1, 0x00, 0xA1})); }

  int Number() const { return socket_.Number(); }
  void Close() { shutdown(socket_.Number(), SHUT_RDWR); }
  /// Sends until the other end takes no more.
  void SendWhatFits(const Bytes& bytes) {
    (void)send(socket_.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }
  void Send(const Bytes& bytes) {
    EXPECT_EQ(send(socket_.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  /// So many bytes, or all up to the end of a message; fewer when they do not come.
  Bytes Receive(std::size_t count, bool isMessage = false) {
    Bytes bytes;
    pollfd wait{socket_.Number(), POLLIN, 0};
    while (bytes.size() < count && poll(&wait, 1, 5000) == 1) {
      std::uint8_t byte = 0;
      if (recv(socket_.Number(), &byte, 1, 0) != 1) break;
      bytes.push_back(byte);
      if (isMessage && byte == 0xA0) break;
    }
    return bytes;
  }
  /// Sends a request, which holds no byte to be escaped, and takes its answer off the line.
  void Ask(Bytes request, const Bytes& startOfAnswer) {
    request.push_back(IpmiChecksum(request));
    request.push_back(0xA0);
    Send(request);
    Bytes answer = Receive(100, true);
    answer.resize(startOfAnswer.size());
    EXPECT_EQ(answer, startOfAnswer);
  }
  /// Get Device ID, sequence 5.
  void ExpectIdentity() { Ask({0x05, 0x18, 0x01}, {0x05, 0x1C, 0x01, 0x00, 0x20}); }

 private:
  sim::Descriptor socket_;
};

class BoardServerTest : public BoardTest {
 protected:
  void SetUp() override {
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
  }

  std::optional<sim::BoardServer> server_;
  std::thread thread_;
  int stop_[2]{};
};

TEST_F(BoardServerTest, GreetsAndAnswersSeveralMachines) {
  Line first(server_->Address());
  Line second(server_->Address());
  first.ExpectGreeting();
  second.ExpectGreeting();
  first.Send({0xFF, 0x01, 0xA1, 0x08, 0x3F, 0xA1});
  first.ExpectIdentity();
  second.ExpectIdentity();
  // Write FRU Data to device 0, offset 0: 5Ah, which is stored at once.
  first.Ask({0x01, 0x28, 0x12, 0x00, 0x00, 0x00, 0x5A}, {0x01, 0x2C, 0x12, 0x00, 0x01});
  EXPECT_EQ(ReadFile("board.bin").front(), 0x5A);
}

TEST_F(BoardServerTest, SurvivesDisconnectsAndNoise) {
  { Line gone(server_->Address()); }
  {
    Line inMidMessage(server_->Address());
    inMidMessage.Send({0x05, 0x18, 0xAA});
  }
  Line noisy(server_->Address());
  noisy.ExpectGreeting();
  noisy.Send(Bytes(100'000, 0x55));
  noisy.Send({0xA0, 0xA1, 0xA0});
  noisy.ExpectIdentity();
}

TEST_F(BoardServerTest, RaisesAttentionWhileAnswersWait) {
  const Bytes raised{0x01, 0xA1}, dropped{0x00, 0xA1}, sent{0x02, 0x1C, 0x34, 0x00};
  // Send Message to channel 0: Get Device ID to the controller at C0h.
  const Bytes send{0x02, 0x18, 0x34, 0x00, 0xC0, 0x18, 0x28, 0x20, 0x0A, 0x01, 0xD5};
  const Bytes getMessage{0x03, 0x18, 0x33};
  Line line(server_->Address());
  line.ExpectGreeting();
  Bytes raisedAndSent = raised;  // in this order: who has the answer looks for attention, and then waits
  raisedAndSent.insert(raisedAndSent.end(), sent.begin(), sent.end());
  line.Ask(send, raisedAndSent);
  // Two wait: attention stays up until the second is taken.
  line.Ask(send, sent);
  Line late(server_->Address());
  late.ExpectGreeting();
  EXPECT_EQ(late.Receive(2), raised);
  line.Ask(getMessage, {0x03, 0x1C, 0x33, 0x00});
  line.Ask(getMessage, {0x03, 0x1C, 0x33, 0x00});
  EXPECT_EQ(line.Receive(2), dropped);
  EXPECT_EQ(late.Receive(2), dropped);
  // With an interrupt where the machine asks for one: Set BMC Global Enables.
  line.Ask({0x04, 0x18, 0x2E, 0x01}, {0x04, 0x1C, 0x2E, 0x00});
  EXPECT_EQ(line.Receive(2), (Bytes{0x05, 0xA1}));
  line.Ask(send, {0x02, 0xA1, 0x02, 0x1C, 0x34, 0x00});
}

TEST_F(BoardServerTest, OneThatDoesNotReadHoldsNobodyUp) {
  std::deque<Line> idle;
  for (int i = 0; i < 200; ++i) idle.emplace_back(server_->Address());
  Line deaf(server_->Address());
  Bytes flood;
  for (int i = 0; i < 20000; ++i) flood.insert(flood.end(), {0x05, 0x18, 0x01, 0xE2, 0xA0});
  std::thread sender([&] { deaf.SendWhatFits(flood); });
  Line line(server_->Address());
  line.ExpectGreeting();
  std::vector<std::chrono::steady_clock::duration> waited;
  for (int i = 0; i < 100; ++i) {
    const auto start = std::chrono::steady_clock::now();
    line.ExpectIdentity();
    waited.push_back(std::chrono::steady_clock::now() - start);
  }
  deaf.Close();
  sender.join();
  std::ranges::sort(waited);
  EXPECT_LT(waited[50], std::chrono::milliseconds(50));
  EXPECT_LT(waited.back(), std::chrono::seconds(2)) << "the computer may be busy with something else";
}

TEST_F(BoardServerTest, OneTooManyWaitsWithoutSpinning) {
  Line first(server_->Address());
  first.ExpectGreeting();
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  Line second(server_->Address(), /*isConnected=*/false);
  const rlimit full{static_cast<rlim_t>(second.Number()) + 1, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &full);
  second.Connect(server_->Address());
  const std::clock_t before = std::clock();
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
  first.ExpectIdentity();
  setrlimit(RLIMIT_NOFILE, &limit);
  second.ExpectGreeting();
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
  EXPECT_FALSE(other.Listen("0.0.0.0:0", error));
  EXPECT_NE(error.find("there is no authentication"), std::string::npos) << error;
  EXPECT_TRUE(other.Listen("0.0.0.0:0", error, /*allowsRemote=*/true)) << error;
}

}  // namespace
}  // namespace varnok::testing
