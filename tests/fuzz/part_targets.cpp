// Parts of the program that can be given bytes without a board: texts, the KCS interface, the board server.
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <thread>

#include "app/services/format.h"
#include "app/services/scan.h"
#include "app/services/text.h"
#include "driver/ipmi_service.h"
#include "programs/start/menu_file.h"
#include "rehearsal/answers.h"
#include "sim/board_server.h"
#include "tests/fuzz/program.h"
#include "tests/fuzz/target.h"

namespace varnok::fuzz {
namespace {

/// The input's bytes, one by one; behind its end zeros.
class Bytes {
 public:
  explicit Bytes(std::string_view input) : input_(input) {}
  std::uint8_t Next() {
    if (input_.empty()) return 0;
    const auto byte = static_cast<std::uint8_t>(input_.front());
    input_.remove_prefix(1);
    return byte;
  }
  bool IsEmpty() const { return input_.empty(); }

 private:
  std::string_view input_;
};

/// Registers that hold anything.
class WildPort final : public RegisterPort {
 public:
  explicit WildPort(Bytes& bytes) : bytes_(bytes) {}
  std::uint8_t ReadStatus() override { return bytes_.Next(); }
  std::uint8_t ReadData() override { return bytes_.Next(); }
  void WriteCommand(std::uint8_t) override {}
  void WriteData(std::uint8_t) override {}
  void Stall(std::uint32_t) override {}

 private:
  Bytes& bytes_;
};

/// Sends `input` to the server, and reads until it has answered or is silent.
void Talk(int port, std::string_view input) {
  const sim::Descriptor line(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(line.Number(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) std::abort();
  (void)send(line.Number(), input.data(), input.size(), MSG_NOSIGNAL);
  shutdown(line.Number(), SHUT_WR);
  std::array<char, 4096> answer;
  while (recv(line.Number(), answer.data(), answer.size(), 0) > 0) {
  }
}

}  // namespace

/// Characters to fill arguments with, a byte 00h, a format.
void RunFormatter(std::string_view input) {
  const std::string text(input.substr(0, input.find('\0')));
  const std::string format(input.substr(std::min(text.size() + 1, input.size())));
  const std::u16string wide = Widen(text);
  const auto number = static_cast<std::int64_t>(std::hash<std::string>()(text));
  Format(format, text, number, wide, static_cast<std::uint8_t>(number), 'c', u'c', number, text);
  Format(format, number, number, text, wide);
  FormatUpTo(text.size(), format.c_str(), wide, text, number);
  std::array<char16_t, 40> room;
  FormatInto(room, format.c_str(), number, text, wide);
}

/// A format, a byte 00h, the text that is read.
void RunScanner(std::string_view input) {
  const std::string format(input.substr(0, input.find('\0')));
  const std::string text(input.substr(std::min(format.size() + 1, input.size())));
  std::uint32_t number = 0;
  std::int32_t signedNumber = 0;
  char16_t character = 0;
  std::u16string word;
  Scan(text, format, &number, &character, &signedNumber, &word);
  Scan(text, format, &word, &signedNumber, &number, &character);
  Scan(Widen(text), format, &number, &number, &character, &number, &number);
}

/// Requests of the length that a byte gives, over registers that hold the other bytes.
void RunKcs(std::string_view input) {
  Bytes bytes(input);
  WildPort port(bytes);
  IpmiService service(port);
  (void)service.FindBmc();
  for (int request = 0; request < 8 && !bytes.IsEmpty(); ++request) {
    const std::array<std::uint8_t, 256> data{};
    (void)service.Send(&service, 0x0A, 0, 0x11, data.data(), bytes.Next());
    std::array<std::uint8_t, 64> answer;
    std::array<std::uint8_t, 4> header;
    std::uint32_t length = bytes.Next() % (answer.size() + 1);
    (void)service.Receive(&service, header.data(), &header[1], &header[2], &header[3], answer.data(),
                          &length);
  }
}

void RunMenuFile(std::string_view input) {
  start::Menu menu;
  for (const start::Problem& problem : start::ReadMenu(std::string(input), menu)) (void)problem.Text();
}

void RunAnswerFile(std::string_view input) {
  std::string error;
  rehearsal::AnswerFile().Parse(input, error);
}

void RunServer(std::string_view input) {
  std::string error;
  const std::unique_ptr<sim::Board> board = sim::Board::Open(FreshBoard(), error);
  sim::BoardServer server(*board);
  std::array<int, 2> stop;
  if (!server.Listen("127.0.0.1:0", error) || pipe(stop.data()) != 0) std::abort();
  const std::string address = server.Address();
  std::thread machine([&] {
    Talk(std::stoi(address.substr(address.find(':') + 1)), input);
    close(stop[1]);
  });
  server.Run(stop[0]);
  machine.join();
  close(stop[0]);
}

}  // namespace varnok::fuzz
