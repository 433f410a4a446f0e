// The simulated board as the BMC of a virtual machine: QEMU's ipmi-bmc-extern connects here and its KCS
// interface is answered by the board.
//
//   sim::BoardServer server(*board);
//   if (server.Listen("127.0.0.1:0", error)) server.Run(stopDescriptor);
#pragma once

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/board.h"
#include "sim/descriptor.h"
#include "sim/vm_codec.h"

namespace varnok::sim {

class BoardServer {
 public:
  explicit BoardServer(Board& board) : board_(board) {}

  /// `address` is an IPv4 address and a port, such as "127.0.0.1:9002"; port 0 takes a free one. False with
  /// `error` set when the address cannot be had, or is one that other computers reach and `allowsRemote` is
  /// not set: there is no authentication.
  bool Listen(const std::string& address, std::string& error, bool allowsRemote = false);
  /// Where it listens, port included.
  std::string Address() const;

  /// Serves machines, coming and going, until `stopDescriptor` can be read.
  void Run(int stopDescriptor);

 private:
  struct Connection {
    Descriptor socket;
    VmDecoder decoder;
    bool hasAttention = false;
    bool hasInterrupt = false;
    std::vector<std::uint8_t> unsent;  // what the machine has not taken yet
  };
  /// An answer that comes late.
  struct Late {
    int socket;
    std::uint64_t due;
    std::vector<std::uint8_t> bytes;
  };

  /// What poll waits for: the stop descriptor, the listener, and the connections in their order.
  std::vector<pollfd> Waits(int stopDescriptor) const;
  void Accept();
  /// Reads and answers what the machine sends; false when it is gone.
  bool Serve(Connection& connection);
  void Answer(Connection& connection, const VmInput& input);
  /// Tells the machine whether its interface interrupts, and whether answers of controllers wait in the
  /// receive queue, when that has changed.
  void SignalAttention(Connection& connection);
  /// Sends what waits, and forgets the machines that are gone.
  void SendAndDrop(const std::vector<bool>& isGone);
  /// Hands out the late answers that have come.
  void Deliver();
  /// Milliseconds until something is to be done without a machine asking; -1: never.
  int Patience();
  void CatchUpClock();

  Board& board_;
  Descriptor listener_;
  bool canAccept_ = true;  // false: no descriptor is left for another machine
  std::vector<Connection> connections_;
  std::vector<Late> late_;
  std::chrono::steady_clock::time_point started_;
};

}  // namespace varnok::sim
