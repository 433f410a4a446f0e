// The simulated board as the BMC of a virtual machine: QEMU's ipmi-bmc-extern connects here and its KCS
// interface is answered by the board.
//
//   sim::BoardServer server(*board);
//   if (server.Listen("127.0.0.1:0", error)) server.Run(stopDescriptor);
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/board.h"
#include "sim/vm_codec.h"

namespace varnok::sim {

/// Owns a file descriptor.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor();
  Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
  Descriptor& operator=(Descriptor&& other) noexcept;

  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

 private:
  int number_;
};

class BoardServer {
 public:
  explicit BoardServer(Board& board) : board_(board) {}

  /// `address` is an IPv4 address and a port, such as "127.0.0.1:9002"; port 0 takes a free one. False with
  /// `error` set when the address cannot be had.
  bool Listen(const std::string& address, std::string& error);
  /// Where it listens, port included.
  std::string Address() const;

  /// Serves machines, coming and going, until `stopDescriptor` can be read.
  void Run(int stopDescriptor);

 private:
  struct Connection {
    Descriptor socket;
    VmDecoder decoder;
    bool hasAttention = false;
  };

  void Accept();
  /// False when the machine is gone.
  bool Serve(Connection& connection);
  bool Answer(Connection& connection, const VmInput& input);
  /// Tells the machine whether answers of controllers wait in the receive queue, when that has changed.
  void SignalAttention(Connection& connection);
  void CatchUpClock();

  Board& board_;
  Descriptor listener_;
  std::vector<Connection> connections_;
  std::chrono::steady_clock::time_point started_;
};

}  // namespace varnok::sim
