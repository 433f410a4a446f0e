// A scripted BMC behind the IPMI protocol: the requests to come, in order and to the byte, and what is
// answered to each. An unexpected request, a fetch that the script does not hold and a step left over fail
// the test.
//
//   ScriptedIpmi bmc(machine);
//   bmc.Expect(0x0A, 0x10, {0x00}).Reply({0x00, 0x08, 0x00});   // Get FRU Inventory Area Info, 2048 bytes
//   bmc.Expect(0x0A, 0x11, {0x00, 0x00, 0x00, 0x08}).Reply({}, 0xC3);
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "firmware/ipmi_protocol.h"
#include "tests/support/test_firmware.h"

namespace varnok::testing {

/// The attempts of one transaction.
inline constexpr int kTransactionAttempts = 11;

class ScriptedIpmi {
 public:
  using Bytes = std::vector<std::uint8_t>;

  /// Any response, right or wrong. `data` holds the bytes after the completion code.
  struct Response {
    std::uint8_t netFunction = 0;
    std::uint8_t lun = 0;
    std::uint8_t command = 0;
    std::uint8_t completionCode = 0;
    Bytes data{};
    /// The length field when it lies; -1: the number of bytes.
    int statedLength = -1;
  };

  /// Puts itself into `machine`, has the program forget what it kept and, unless `isLoaded` is false, the
  /// transport load it. On destruction the script must be used up.
  explicit ScriptedIpmi(TestFirmware& machine, bool isLoaded = true);
  ~ScriptedIpmi();
  ScriptedIpmi(const ScriptedIpmi&) = delete;
  ScriptedIpmi& operator=(const ScriptedIpmi&) = delete;

  /// The next request.
  ScriptedIpmi& Expect(std::uint8_t netFunction, std::uint8_t command, Bytes data = {}, std::uint8_t lun = 0);

  // What follows a request. Replies belong to the last expected one: its net function plus 1, its LUN and
  // command.
  ScriptedIpmi& Reply(Bytes data, std::uint8_t completionCode = 0);
  /// Reply whose length field says `statedLength`.
  ScriptedIpmi& ReplyStating(int statedLength, Bytes data);
  ScriptedIpmi& ReplyWith(const Response& response);
  /// One fetch fails.
  ScriptedIpmi& ReceiveFails();
  /// The answer is lost: four fetches fail, which is all that one attempt of the transport makes.
  ScriptedIpmi& Lost();

  /// A whole transaction that fails: the eleven attempts of one request, each answered with `completionCode`.
  ScriptedIpmi& ExpectFailing(std::uint8_t netFunction, std::uint8_t command, std::uint8_t completionCode,
                              const Bytes& data = {});
  /// As ExpectFailing; every answer is lost.
  ScriptedIpmi& ExpectSilence(std::uint8_t netFunction, std::uint8_t command, const Bytes& data = {});

  /// Time that passes before the next request or fetch.
  ScriptedIpmi& Pass(std::uint64_t seconds);

  // Bridged traffic. Both send and fetch are requests of their own: ExpectSend(...).Reply({}), then
  // ExpectFetch().ReplyBridged(...).
  /// A Send Message request that carries `command` with `data` to `target`.
  ScriptedIpmi& ExpectSend(std::uint8_t channel, std::uint8_t target, std::uint8_t sequence,
                           std::uint8_t netFunction, std::uint8_t command, const Bytes& data = {},
                           std::uint8_t lun = 0);
  /// A Get Message request.
  ScriptedIpmi& ExpectFetch() { return Expect(0x06, 0x33); }
  /// The response inside a Get Message answer; `netFunction` is the request's.
  ScriptedIpmi& ReplyBridged(std::uint8_t target, std::uint8_t sequence, std::uint8_t netFunction,
                             std::uint8_t command, const Bytes& data, std::uint8_t completionCode = 0,
                             std::uint8_t lun = 0);

  /// What Expect and its company say, in lines of text:
  ///
  ///   06/0 01 => 00 20                     net function, LUN, command and data; completion code and data
  ///   B0@7#2 0A/0 11 00 => 00              a Send Message to B0h by channel 7, sequence 2, with such a
  ///   request 06/0 33 => B0#2 0A/0 11: 00 42       a fetched answer to that 06/0 01 => 07/0 02: 00 | lost an
  ///   answer of another header, and one that is lost 11x 06/0 01 => refused ;; 06/0 02    lines that come
  ///   again; a send that fails, a request without an answer
  ///
  /// Other answers: "fails" is one fetch, "pass 4" seconds.
  ScriptedIpmi& Play(const std::string& lines);

  /// Requests seen so far.
  int sent() const { return sent_; }
  /// The protocol itself, for tests that install or break it by hand.
  IpmiProtocol& protocol() { return wire_; }

 private:
  struct Step {
    enum class Kind { Request, Response, Delay };
    Kind kind;
    Status status = kSuccess;
    Response message;  // request or response
    std::uint64_t seconds = 0;
  };
  struct Wire : IpmiProtocol {
    ScriptedIpmi* script;
  };

  static Status OnSend(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun, std::uint8_t command,
                       const std::uint8_t* data, std::uint32_t dataLength);
  static Status OnReceive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                          std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                          std::uint32_t* dataLength);

  void PlayExchange(const std::string& line);
  void PlayAnswer(const std::string& answer);
  /// The next request or response of the script after any delay; null at its end.
  const Step* Next();
  Status Fail(const std::string& what);

  TestFirmware& machine_;
  Wire wire_{};
  std::deque<Step> steps_;
  Response lastExpected_;
  int sent_ = 0;
  bool isBroken_ = false;
};

/// What a BMC of this product answers to Get Device ID; bit 7 of the revision: it is in transfer mode.
ScriptedIpmi::Bytes DeviceId(std::uint16_t product = 0x4311, std::uint8_t revision = 0x02,
                             std::uint8_t ipmiVersion = 0x02);

}  // namespace varnok::testing
