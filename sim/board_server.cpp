#include "sim/board_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace varnok::sim {
namespace {

bool ParseAddress(const std::string& text, sockaddr_in& address) {
  std::size_t colon = text.rfind(':');
  if (colon == std::string::npos) return false;
  std::uint16_t port = 0;
  const char* end = text.data() + text.size();
  auto [stop, code] = std::from_chars(text.data() + colon + 1, end, port);
  address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  return code == std::errc{} && stop == end &&
         inet_pton(AF_INET, text.substr(0, colon).c_str(), &address.sin_addr) == 1;
}

bool SendAll(int socket, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    ssize_t count = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace

Descriptor::~Descriptor() {
  if (number_ >= 0) close(number_);
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

bool BoardServer::Listen(const std::string& address, std::string& error) {
  sockaddr_in where{};
  if (!ParseAddress(address, where)) {
    error = "\"" + address + "\" is no address like 127.0.0.1:9002";
    return false;
  }
  listener_ = Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  int on = 1;
  if (!listener_.IsOpen() || setsockopt(listener_.Number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) != 0 ||
      bind(listener_.Number(), reinterpret_cast<sockaddr*>(&where), sizeof(where)) != 0 ||
      listen(listener_.Number(), 4) != 0) {
    error = address + ": " + std::strerror(errno);
    return false;
  }
  started_ = std::chrono::steady_clock::now();
  return true;
}

std::string BoardServer::Address() const {
  sockaddr_in where{};
  socklen_t length = sizeof(where);
  getsockname(listener_.Number(), reinterpret_cast<sockaddr*>(&where), &length);
  std::array<char, INET_ADDRSTRLEN> text{};
  inet_ntop(AF_INET, &where.sin_addr, text.data(), text.size());
  return std::string(text.data()) + ":" + std::to_string(ntohs(where.sin_port));
}

void BoardServer::Run(int stopDescriptor) {
  for (;;) {
    std::vector<pollfd> waits{{stopDescriptor, POLLIN, 0}, {listener_.Number(), POLLIN, 0}};
    for (const Connection& connection : connections_)
      waits.push_back({connection.socket.Number(), POLLIN, 0});
    if (poll(waits.data(), waits.size(), -1) < 0) {
      if (errno == EINTR) continue;
      return;
    }
    if (waits[0].revents != 0) return;
    std::vector<Connection> kept;
    for (std::size_t i = 0; i < connections_.size(); ++i)
      if (waits[i + 2].revents == 0 || Serve(connections_[i])) kept.push_back(std::move(connections_[i]));
    connections_ = std::move(kept);
    if (waits[1].revents != 0) Accept();
    for (Connection& connection : connections_) SignalAttention(connection);
  }
}

void BoardServer::Accept() {
  Connection connection{Descriptor(accept4(listener_.Number(), nullptr, nullptr, SOCK_CLOEXEC)), {}, false};
  if (!connection.socket.IsOpen()) return;
  int on = 1;
  // One byte of delay per answer would be felt at every request.
  setsockopt(connection.socket.Number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  // A machine that reads nothing must not hold up the others.
  timeval limit{2, 0};
  setsockopt(connection.socket.Number(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
  bool isGreeted =
      SendAll(connection.socket.Number(), EncodeVmCommand({vm_command::kVersion, {kVmProtocolVersion}})) &&
      SendAll(connection.socket.Number(), EncodeVmCommand({vm_command::kNoAttention, {}}));
  if (isGreeted) connections_.push_back(std::move(connection));
}

bool BoardServer::Serve(Connection& connection) {
  std::array<std::uint8_t, 4096> bytes;
  ssize_t count = recv(connection.socket.Number(), bytes.data(), bytes.size(), 0);
  if (count < 0 && errno == EINTR) return true;
  if (count <= 0) return false;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
    if (auto input = connection.decoder.Push(bytes[i]); input && !Answer(connection, *input)) return false;
  return true;
}

bool BoardServer::Answer(Connection& connection, const VmInput& input) {
  // The machine's own commands tell its version, its capabilities and its resets, and want no answer.
  const VmRequest* request = std::get_if<VmRequest>(&input);
  if (request == nullptr) return true;
  CatchUpClock();
  // A request that the BMC loses has no answer; the machine's interface times out by itself.
  Delivery delivery = board_.TheBmc().Process(request->request);
  return std::all_of(delivery.answers.begin(), delivery.answers.end(), [&](const Response& response) {
    return SendAll(connection.socket.Number(), EncodeVmResponse(request->sequence, response));
  });
}

void BoardServer::SignalAttention(Connection& connection) {
  bool isWanted = !board_.TheBmc().Queue().IsEmpty();
  if (isWanted == connection.hasAttention) return;
  connection.hasAttention = isWanted;
  // A machine that is gone shows at the next reading.
  (void)SendAll(connection.socket.Number(),
                EncodeVmCommand({isWanted ? vm_command::kAttention : vm_command::kNoAttention, {}}));
}

void BoardServer::CatchUpClock() {
  // The machine lives in real time, so the board's clock follows it.
  auto real =
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - started_);
  auto elapsed = static_cast<std::uint64_t>(real.count());
  VirtualClock& clock = board_.Clock();
  if (elapsed > clock.Elapsed()) clock.Advance(elapsed - clock.Elapsed());
}

}  // namespace varnok::sim
