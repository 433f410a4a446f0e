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

/// A machine that has not taken so many bytes is not read from until it takes them.
constexpr std::size_t kMostUnsent = 4096;
/// When to look again whether a descriptor has become free, in milliseconds.
constexpr int kAcceptPause = 200;

bool IsLoopback(const sockaddr_in& address) {
  return ntohl(address.sin_addr.s_addr) >> 24 == 127;
}

/// Sends what the machine takes without waiting; false when it is gone.
bool SendSome(int socket, std::vector<std::uint8_t>& bytes) {
  while (!bytes.empty()) {
    const ssize_t count = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno == EAGAIN || errno == EWOULDBLOCK;
    bytes.erase(bytes.begin(), bytes.begin() + count);
  }
  return true;
}

void Append(std::vector<std::uint8_t>& bytes, const std::vector<std::uint8_t>& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

}  // namespace

bool BoardServer::Listen(const std::string& address, std::string& error, bool allowsRemote) {
  sockaddr_in where{};
  if (!ParseAddress(address, where)) {
    error = "\"" + address + "\" is no address like 127.0.0.1:9002";
    return false;
  }
  if (!allowsRemote && !IsLoopback(where)) {
    error =
        address +
        ": other computers reach this address, and there is no authentication: whoever connects can write "
        "to the board; --allow-remote serves it all the same";
    return false;
  }
  listener_ = Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  int on = 1;
  if (!listener_.IsOpen() || setsockopt(listener_.Number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) != 0 ||
      bind(listener_.Number(), reinterpret_cast<sockaddr*>(&where), sizeof(where)) != 0 ||
      listen(listener_.Number(), SOMAXCONN) != 0) {
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
    std::vector<pollfd> waits = Waits(stopDescriptor);
    const int ready = poll(waits.data(), waits.size(), Patience());
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0 || waits[0].revents != 0) return;
    std::vector<bool> isGone(connections_.size());
    for (std::size_t i = 0; i < connections_.size(); ++i)
      isGone[i] = (waits[i + 2].revents & ~POLLOUT) != 0 && !Serve(connections_[i]);
    if (waits[1].revents != 0 || !canAccept_) Accept();
    isGone.resize(connections_.size());
    Deliver();
    SendAndDrop(isGone);
  }
}

std::vector<pollfd> BoardServer::Waits(int stopDescriptor) const {
  std::vector<pollfd> waits{{stopDescriptor, POLLIN, 0}, {canAccept_ ? listener_.Number() : -1, POLLIN, 0}};
  for (const Connection& connection : connections_) {
    const short reads = connection.unsent.size() < kMostUnsent ? POLLIN : 0;
    const short writes = connection.unsent.empty() ? 0 : POLLOUT;
    waits.push_back({connection.socket.Number(), static_cast<short>(reads | writes), 0});
  }
  return waits;
}

void BoardServer::SendAndDrop(const std::vector<bool>& isGone) {
  std::vector<Connection> kept;
  for (std::size_t i = 0; i < connections_.size(); ++i) {
    SignalAttention(connections_[i]);
    if (!isGone[i] && SendSome(connections_[i].socket.Number(), connections_[i].unsent))
      kept.push_back(std::move(connections_[i]));
    else
      std::erase_if(late_, [&](const Late& late) { return late.socket == connections_[i].socket.Number(); });
  }
  connections_ = std::move(kept);
}

void BoardServer::Accept() {
  canAccept_ = true;
  for (;;) {
    Connection connection{
        Descriptor(accept4(listener_.Number(), nullptr, nullptr, SOCK_CLOEXEC)), {}, false, false, {}};
    if (!connection.socket.IsOpen()) {
      // A listener that cannot be served would be ready for ever.
      canAccept_ = errno != EMFILE && errno != ENFILE && errno != ENOBUFS && errno != ENOMEM;
      return;
    }
    int on = 1;
    // One byte of delay per answer would be felt at every request.
    setsockopt(connection.socket.Number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    connection.unsent = EncodeVmCommand({vm_command::kVersion, {kVmProtocolVersion}});
    Append(connection.unsent, EncodeVmCommand({vm_command::kNoAttention, {}}));
    connections_.push_back(std::move(connection));
  }
}

bool BoardServer::Serve(Connection& connection) {
  // A machine's share of a turn: the others wait behind it.
  std::array<std::uint8_t, 512> bytes;
  const ssize_t count = recv(connection.socket.Number(), bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (count < 0) return errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
    if (auto input = connection.decoder.Push(bytes[i])) Answer(connection, *input);
  return count > 0;
}

void BoardServer::Answer(Connection& connection, const VmInput& input) {
  // The machine's own commands tell its version, its capabilities and its resets, and want no answer.
  const VmRequest* request = std::get_if<VmRequest>(&input);
  if (request == nullptr) return;
  CatchUpClock();
  // A request that the BMC loses has no answer; the machine's interface times out by itself.
  const Delivery delivery = board_.TheBmc().Process(request->request);
  // In front of the answer: a kernel that has taken an answer looks for attention once, and then waits.
  if (!board_.TheBmc().Queue().IsEmpty()) SignalAttention(connection);
  for (const Response& response : delivery.answers) {
    std::vector<std::uint8_t> bytes = EncodeVmResponse(request->sequence, response);
    if (delivery.due == 0)
      Append(connection.unsent, bytes);
    else
      late_.push_back({connection.socket.Number(), delivery.due, std::move(bytes)});
  }
}

void BoardServer::SignalAttention(Connection& connection) {
  if (connection.unsent.size() >= kMostUnsent) return;
  const auto tell = [&connection](bool& told, bool isOn, std::uint8_t on, std::uint8_t off) {
    if (told != isOn) Append(connection.unsent, EncodeVmCommand({isOn ? on : off, {}}));
    told = isOn;
  };
  using namespace vm_command;
  const bool interrupts = board_.TheBmc().HasQueueInterrupt();
  tell(connection.hasInterrupt, interrupts, kEnableInterrupt, kDisableInterrupt);
  tell(connection.hasAttention, !board_.TheBmc().Queue().IsEmpty(),
       interrupts ? kAttentionWithInterrupt : kAttention, kNoAttention);
}

void BoardServer::Deliver() {
  CatchUpClock();
  const std::uint64_t now = board_.Clock().Elapsed();
  for (const Late& late : late_) {
    if (late.due > now) continue;
    for (Connection& connection : connections_)
      if (connection.socket.Number() == late.socket) Append(connection.unsent, late.bytes);
  }
  std::erase_if(late_, [now](const Late& late) { return late.due <= now; });
}

int BoardServer::Patience() {
  int patience = canAccept_ ? -1 : kAcceptPause;
  const std::uint64_t now = board_.Clock().Elapsed();
  for (const Late& late : late_) {
    const std::uint64_t rest = late.due > now ? (late.due - now) / 1000 + 1 : 0;
    if (patience < 0 || rest < static_cast<std::uint64_t>(patience)) patience = static_cast<int>(rest);
  }
  return patience;
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
