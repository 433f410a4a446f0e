// PROBE: asks the hardware a yes/no question, which the FOUND on the next line turns into a tag. CCfgProbe is
// the base of the probe types: it creates the one that the keyword names, owns the parameters and the FOUND,
// and offers the checks and queries that the types share. A type is one class with two operations, and a row
// in its family's table:
//
//   class CCfgProbePing : public CCfgProbe {
//     Status ValidateParams() override;       // when the line is read: check and convert the parameters
//     Status Ask(bool& isFound) override;     // whenever the script's flow comes by: ask the hardware
//   };
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

#include "cfg/cfg_command.h"
#include "cfg/probe_table.h"
#include "platform/ipmi.h"

namespace varnok {

class CCfgFound;

class CCfgProbe : public CCfgCommand {
 public:
  /// Makes the probe type whose keyword stands next on the line. kTooManyParameters without a keyword,
  /// kBadProbeType for an unknown one or without memory, kNoParser.
  static Status CreateProbe(CFileCfg& file, PoolPtr<CCfgCommand>& command, CCfgParser* parser);

  /// Reads and checks the parameters, then the FOUND of the next line that is not empty, if it is one.
  Status ReadFromFile(CFileCfg& file) override;
  /// Asks and runs the FOUND. A query that fails gives its status and changes no tag.
  Status Process() override;
  /// Checks and converts the parameters; sets the message when it refuses them.
  virtual Status ValidateParams() = 0;
  void Describe(ScriptVisitor& visitor) const override;

  void SetFound(bool isFound);
  Status ProcessFound();
  ProbeType GetProbeType() const { return probeRow_ != nullptr ? probeRow_->type : ProbeType::None; }
  /// The keyword.
  const char* GetProbeDisplayName() const;

  // Queries. A hardware that does not answer is an answer: no. The status is 0 unless the arguments are of no
  // use.

  /// Asks the BMC for a key's value (net function 32h, command 10h); kBadValue for a key of 0 or more than 12
  /// characters or an empty value.
  Status ProbeKeyValue(std::string_view key, std::string_view value, bool& isFound);
  /// Whether a device on a private bus of the BMC acknowledges its address (IPMI v2.0, section 22.11).
  Status ProbeFruDevice(std::uint8_t bus, std::uint8_t slave, std::uint8_t lun, bool& isFound);
  /// Whether an IPMI FRU with a right common header is there; the kind of storage is the probe type's.
  Status ProbeFruHeader(std::uint8_t lun, std::uint8_t slave, std::uint8_t bus, std::uint8_t deviceId,
                        bool& isFound);
  Status ProbeIsK410V(std::uint8_t lun, bool& isFound);
  Status ProbeAdvanced(std::uint8_t lun, bool& isFound);
  /// Whether a controller answers Get Device ID; `id` is its product ID then.
  Status ProbeDeviceId(std::uint8_t target, std::uint8_t channel, std::uint32_t& id, bool& isFound);
  /// Bridges a request through the BMC, up to 50 rounds. kNoBridgedAnswer when none brought the answer, else
  /// the transport's result. Takes up to minutes when nothing answers.
  Status ProcessSendMessage(const IpmiMessage& message, IpmiMessage& response, std::uint8_t channel,
                            std::uint8_t target);
  /// What makes the sum of the bytes 0.
  static std::uint8_t CalculateChecksum(std::span<const std::uint8_t> bytes);

 protected:
  /// Works out the answer. A status other than 0 ends the script's processing.
  virtual Status Ask(bool& isFound) = 0;

  // Parameters. Each check sets the message that is the same for all types.

  std::size_t Count() const { return parameters_.size(); }
  std::string_view Parameter(std::size_t index) const { return parameters_[index]; }
  std::span<const std::string_view> Tokens() const { return parameters_; }
  void DropFirstParameter() { parameters_.erase(parameters_.begin()); }

  Status RefuseCount() const;
  Status RequireCount(std::size_t least, std::size_t most) const;
  Status Missing(const char* which, Status status) const;
  /// Reads the first `count` parameters as hexadecimal bytes into p_; a missing one is none.
  Status ReadBytes(std::size_t count);
  /// Exactly `count` hexadecimal bytes.
  Status ReadExactly(std::size_t count);
  Status RefuseNumber(std::string_view text) const;
  Status RefuseValue(std::string_view text) const;
  /// A slave address is even; bus FFh stands for none and goes with the BMC's own address only.
  static Status CheckDevice(std::uint8_t bus, std::uint8_t slave);

  // Requests to the BMC.

  /// OEM requests about the board that the BMC sits on.
  static constexpr std::uint8_t kBoardNetFunction = 0x30;

  /// A transport result as a status. Its bits stay 32: sign-extended they would look like the engine's own,
  /// and a failed probe would end the script with an error level.
  static Status ToStatus(IpmiResult result) { return static_cast<std::uint32_t>(result); }
  static IpmiMessage Request(std::uint8_t netFunction, std::uint8_t command,
                             std::initializer_list<std::uint8_t> data);
  /// One request; any failure, a completion code among them, is the status.
  static Status AskBmc(std::uint8_t netFunction, std::uint8_t command,
                       std::initializer_list<std::uint8_t> data, IpmiMessage& response);
  /// A byte of the response; one that a short response lacks reads 0.
  static std::uint8_t ByteAt(const IpmiMessage& response, std::size_t index, bool isOptional = false);

  /// Makes the message of a failed SMBIOS look-up the engine's. The answer is no.
  static Status AnswerWithoutRecord(bool& isFound);

  std::array<std::uint8_t, 6> p_{};  ///< converted parameters, in their order

 private:
  static bool WrapRequest(const IpmiMessage& request, std::uint8_t channel, std::uint8_t target,
                          std::uint8_t sequence, IpmiMessage& sendMessage);
  Status ReadParameters(CFileCfg& file);
  Status ReadFound(CFileCfg& file);
  const char* ClassName() const { return probeRow_->className; }

  std::vector<std::string_view> parameters_;
  PoolPtr<CCfgCommand> found_;  ///< a CCfgFound or null
  const ProbeRow* probeRow_ = nullptr;
};

}  // namespace varnok
