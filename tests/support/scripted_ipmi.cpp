#include "tests/support/scripted_ipmi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "app/services/format.h"
#include "platform/ipmi.h"
#include "tests/support/heap_count.h"
#include "tests/support/split.h"

namespace varnok::testing {
namespace {

std::string Describe(const ScriptedIpmi::Response& message) {
  std::string text = Format("net function %02X, LUN %u, command %02X, data [", message.netFunction,
                            message.lun, message.command);
  for (std::uint8_t byte : message.data) text += Format("%02X ", byte);
  if (!message.data.empty()) text.pop_back();
  return text + "]";
}

std::uint8_t Checksum(const ScriptedIpmi::Bytes& bytes, std::size_t from) {
  return static_cast<std::uint8_t>(
      -std::accumulate(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(), 0));
}

std::uint8_t Byte(unsigned number) {
  return static_cast<std::uint8_t>(number);
}

/// What a line of Play has in front of its data; without a sequence it is for the BMC itself.
struct WireLine {
  std::uint8_t target, sequence, netFunction, lun, command;
  bool isBridged;
  std::uint8_t channel;
  ScriptedIpmi::Bytes data;
};

WireLine ParseWireLine(const std::string& line) {
  unsigned target = 0, channel = 0, sequence = 0, netFunction = 0, lun = 0, command = 0;
  int used = 0;
  const char* text = line.c_str();
  // NOLINTBEGIN(cert-err34-c): a case's own bytes
  if (std::sscanf(text, "%x@%x#%u%n", &target, &channel, &sequence, &used) < 3 &&
      std::sscanf(text, "%x#%u%n", &target, &sequence, &used) < 2)
    used = sequence = 0;
  const char* rest = text + used;
  EXPECT_EQ(std::sscanf(rest, "%x/%x %x%n", &netFunction, &lun, &command, &used), 3) << line;
  // NOLINTEND(cert-err34-c)
  return {Byte(target),  Byte(sequence), Byte(netFunction), Byte(lun),
          Byte(command), sequence != 0,  Byte(channel),     BytesOf(rest + used)};
}

}  // namespace

ScriptedIpmi::ScriptedIpmi(TestFirmware& machine, bool isLoaded) : machine_(machine) {
  wire_.revision = kIpmiProtocolRevision;
  wire_.Send = OnSend;
  wire_.Receive = OnReceive;
  wire_.script = this;
  machine_.protocol = &wire_;
  ForgetProgramState();
  if (isLoaded) {
    EXPECT_EQ(IpmiLoadProtocol(), ipmi_result::kSuccess);
  }
}

ScriptedIpmi::~ScriptedIpmi() {
  if (!isBroken_ && !steps_.empty()) {
    const Step& step = steps_.front();
    ADD_FAILURE() << steps_.size() << " steps left over; next: "
                  << (step.kind == Step::Kind::Request ? "request " : "response ") << Describe(step.message);
  }
  machine_.protocol = nullptr;
}

ScriptedIpmi& ScriptedIpmi::Expect(std::uint8_t netFunction, std::uint8_t command, Bytes data,
                                   std::uint8_t lun) {
  lastExpected_ = {netFunction, lun, command, 0, std::move(data)};
  steps_.push_back({Step::Kind::Request, kSuccess, lastExpected_});
  return *this;
}

ScriptedIpmi& ScriptedIpmi::ReplyWith(const Response& response) {
  steps_.push_back({Step::Kind::Response, kSuccess, response});
  return *this;
}

ScriptedIpmi& ScriptedIpmi::Reply(Bytes data, std::uint8_t completionCode) {
  return ReplyWith({static_cast<std::uint8_t>(lastExpected_.netFunction + 1), lastExpected_.lun,
                    lastExpected_.command, completionCode, std::move(data)});
}

ScriptedIpmi& ScriptedIpmi::ReplyStating(int statedLength, Bytes data) {
  Reply(std::move(data));
  steps_.back().message.statedLength = statedLength;
  return *this;
}

ScriptedIpmi& ScriptedIpmi::ReceiveFails() {
  steps_.push_back({Step::Kind::Response, uefi_status::kTimeout, {}});
  return *this;
}

ScriptedIpmi& ScriptedIpmi::Lost() {
  return ReceiveFails().ReceiveFails().ReceiveFails().ReceiveFails();
}

ScriptedIpmi& ScriptedIpmi::ExpectFailing(std::uint8_t netFunction, std::uint8_t command,
                                          std::uint8_t completionCode, const Bytes& data) {
  for (int i = 0; i < kTransactionAttempts; ++i) Expect(netFunction, command, data).Reply({}, completionCode);
  return *this;
}

ScriptedIpmi& ScriptedIpmi::ExpectSilence(std::uint8_t netFunction, std::uint8_t command, const Bytes& data) {
  for (int i = 0; i < kTransactionAttempts; ++i) Expect(netFunction, command, data).Lost();
  return *this;
}

ScriptedIpmi& ScriptedIpmi::Pass(std::uint64_t seconds) {
  steps_.push_back({Step::Kind::Delay, kSuccess, {}, seconds});
  return *this;
}

ScriptedIpmi& ScriptedIpmi::ExpectSend(std::uint8_t channel, std::uint8_t target, std::uint8_t sequence,
                                       std::uint8_t netFunction, std::uint8_t command, const Bytes& data,
                                       std::uint8_t lun) {
  Bytes frame = {channel, target, static_cast<std::uint8_t>(netFunction << 2 | lun)};
  frame.push_back(Checksum(frame, 1));
  frame.insert(frame.end(), {0x20, static_cast<std::uint8_t>(sequence << 2 | 2), command});
  frame.insert(frame.end(), data.begin(), data.end());
  frame.push_back(Checksum(frame, 4));
  return Expect(0x06, 0x34, std::move(frame));
}

ScriptedIpmi& ScriptedIpmi::ReplyBridged(std::uint8_t target, std::uint8_t sequence, std::uint8_t netFunction,
                                         std::uint8_t command, const Bytes& data, std::uint8_t completionCode,
                                         std::uint8_t lun) {
  Bytes answer = {0x00, static_cast<std::uint8_t>((netFunction + 1) << 2 | 2)};
  answer.push_back(static_cast<std::uint8_t>(-(0x20 + answer[1])));
  answer.insert(answer.end(),
                {target, static_cast<std::uint8_t>(sequence << 2 | lun), command, completionCode});
  answer.insert(answer.end(), data.begin(), data.end());
  answer.push_back(Checksum(answer, 3));
  return Reply(std::move(answer));
}

ScriptedIpmi& ScriptedIpmi::Play(const std::string& lines) {
  for (const std::string& line : Split(lines, "\n")) {
    int times = 1, used = 0;
    // NOLINTNEXTLINE(cert-err34-c): a case's own number
    if (std::sscanf(line.c_str(), "%dx %n", &times, &used) < 1 || used == 0) times = 1;
    for (; times > 0 && !line.empty(); --times)
      for (const std::string& exchange : Split(line.substr(used), " ;; ")) PlayExchange(exchange);
  }
  return *this;
}

void ScriptedIpmi::PlayExchange(const std::string& line) {
  const std::vector<std::string> sides = Split(line, " => ");
  const WireLine request = ParseWireLine(sides[0]);
  const bool isRefused = sides.back() == "refused";
  if (request.isBridged)
    ExpectSend(request.channel, request.target, request.sequence, request.netFunction, request.command,
               request.data, request.lun);
  else
    Expect(request.netFunction, request.command, request.data, request.lun);
  if (isRefused) steps_.back().status = uefi_status::kDeviceError;
  if (sides.size() > 1 && !isRefused)
    for (const std::string& answer : Split(sides[1], " | ")) PlayAnswer(answer);
}

void ScriptedIpmi::PlayAnswer(const std::string& answer) {
  const std::size_t colon = answer.find(':');
  Bytes bytes = BytesOf(answer.substr(colon == std::string::npos ? 0 : colon + 1));
  if (answer == "lost") return static_cast<void>(Lost());
  if (answer == "fails") return static_cast<void>(ReceiveFails());
  if (answer.starts_with("pass ")) return static_cast<void>(Pass(std::stoul(answer.substr(5))));
  const std::uint8_t code = bytes.front();
  bytes.erase(bytes.begin());
  if (colon == std::string::npos) return static_cast<void>(Reply(std::move(bytes), code));
  const WireLine header = ParseWireLine(answer.substr(0, colon));
  if (header.isBridged)
    ReplyBridged(header.target, header.sequence, header.netFunction, header.command, bytes, code, header.lun);
  else
    ReplyWith({header.netFunction, header.lun, header.command, code, std::move(bytes)});
}

const ScriptedIpmi::Step* ScriptedIpmi::Next() {
  while (!steps_.empty() && steps_.front().kind == Step::Kind::Delay) {
    machine_.clockMicroseconds += steps_.front().seconds * 1'000'000;
    steps_.pop_front();
  }
  return steps_.empty() ? nullptr : &steps_.front();
}

Status ScriptedIpmi::Fail(const std::string& what) {
  // One mistake spoils the rest of the script; it is reported once.
  if (!isBroken_) ADD_FAILURE() << "request " << sent_ << ": " << what;
  isBroken_ = true;
  return uefi_status::kDeviceError;
}

Status ScriptedIpmi::OnSend(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun,
                            std::uint8_t command, const std::uint8_t* data, std::uint32_t dataLength) {
  Uncounted own;
  ScriptedIpmi& script = *static_cast<Wire*>(self)->script;
  if (script.isBroken_) return uefi_status::kDeviceError;
  ++script.sent_;
  std::string sent = Describe({netFunction, lun, command, 0, Bytes(data, data + dataLength)});
  const Step* step = script.Next();
  if (step == nullptr) return script.Fail("unexpected " + sent);
  if (step->kind == Step::Kind::Response) return script.Fail("sent before the answer was fetched: " + sent);
  std::string expected = Describe(step->message);
  if (sent != expected) return script.Fail("sent " + sent + ", expected " + expected);
  Status status = step->status;
  script.steps_.pop_front();
  return status;
}

Status ScriptedIpmi::OnReceive(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                               std::uint8_t* command, std::uint8_t* completionCode, std::uint8_t* data,
                               std::uint32_t* dataLength) {
  Uncounted own;
  ScriptedIpmi& script = *static_cast<Wire*>(self)->script;
  if (script.isBroken_) return uefi_status::kDeviceError;
  const Step* step = script.Next();
  if (step == nullptr) return script.Fail("a fetch that the script does not hold");
  if (step->kind == Step::Kind::Request)
    return script.Fail("fetched, but the next step is the request " + Describe(step->message));
  if (*dataLength != 64) return script.Fail(Format("fetched with room for %u bytes", *dataLength));
  Response message = step->message;
  Status status = step->status;
  script.steps_.pop_front();
  if (status != kSuccess) return status;
  *netFunction = message.netFunction;
  *lun = message.lun;
  *command = message.command;
  *completionCode = message.completionCode;
  std::copy(message.data.begin(), message.data.end(), data);
  *dataLength = message.statedLength >= 0 ? static_cast<std::uint32_t>(message.statedLength)
                                          : static_cast<std::uint32_t>(message.data.size());
  return kSuccess;
}

ScriptedIpmi::Bytes DeviceId(std::uint16_t product, std::uint8_t revision, std::uint8_t ipmiVersion) {
  auto low = static_cast<std::uint8_t>(product & 0xFF);
  auto high = static_cast<std::uint8_t>(product >> 8);
  return {0x20, 0x01, revision, 0x45, ipmiVersion, 0xBF, 0x57, 0x01, 0x00, low, high, 0x10, 0x03, 0x0A, 0xBC};
}

}  // namespace varnok::testing
