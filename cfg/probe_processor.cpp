// Probes for one processor socket: PROCESSOR, PROCESSOR_FAMILY_MODEL, PROCESSOR_CORES, PROCESSOR_TDC. The
// first parameter of each is the socket; its SMBIOS record is looked up before the probe's own question.
#include "cfg/cfg_parser.h"
#include "cfg/probe.h"
#include "platform/smbios.h"
#include "platform/smbios_records.h"

namespace varnok {
namespace {

constexpr std::uint8_t kMostSockets = 8;
constexpr std::uint8_t kGetProcessorTdc = 0x97;

// Two processors share each of these signatures; family and upgrade of their records tell them apart.
constexpr std::uint32_t kSharedSignatures[] = {0xF41, 0xF48};

std::uint32_t Bits(std::uint32_t number, unsigned low, unsigned count) {
  return number >> low & ((1u << count) - 1);
}

class CCfgSocketProbe : public CCfgProbe {
 protected:
  /// Reads the socket number into p_[0] and checks its range.
  Status ReadSocket();
  /// Exactly two hexadecimal parameters, the first of them the socket.
  Status ReadSocketAndByte();
  /// The processor's record; a failed look-up answers no.
  Status Ask(bool& isFound) final;
  virtual Status AskProcessor(const SmbiosProcessor& processor, bool& isFound) = 0;
};

/// Whether the socket is populated, or holds a processor of this signature.
class CCfgProbeProcessor : public CCfgSocketProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status AskProcessor(const SmbiosProcessor& processor, bool& isFound) override;

 private:
  Status AskSignature(const SmbiosProcessor& processor, bool& isFound) const;
  void RecordPlatform(const SmbiosProcessor& processor) const;
};

class CCfgProbeProcFamMod : public CCfgSocketProbe {
 public:
  Status ValidateParams() override;

 protected:
  Status AskProcessor(const SmbiosProcessor& processor, bool& isFound) override;

 private:
  std::uint16_t family_ = 0;
  std::uint16_t model_ = 0;
};

class CCfgProbeProcCores : public CCfgSocketProbe {
 public:
  Status ValidateParams() override { return ReadSocketAndByte(); }

 protected:
  Status AskProcessor(const SmbiosProcessor& processor, bool& isFound) override;
};

/// The processor's thermal design class, which the BMC knows.
class CCfgProbeProcessorTdc : public CCfgSocketProbe {
 public:
  Status ValidateParams() override { return ReadSocketAndByte(); }

 protected:
  Status AskProcessor(const SmbiosProcessor& processor, bool& isFound) override;
};

Status CCfgSocketProbe::ReadSocket() {
  if (Status status = ReadBytes(1); status != kSuccess) return status;
  if (p_[0] >= 1 && p_[0] <= kMostSockets) return kSuccess;
  CCfgParser::SetLastError("Invalid processor probe number %d, the value must be in the range 1 - %d.", p_[0],
                           kMostSockets);
  return cfg_status::kBadValue;
}

Status CCfgSocketProbe::ReadSocketAndByte() {
  Status status = RequireCount(2, 2);
  if (status == kSuccess) status = ReadSocket();
  return status == kSuccess ? ReadBytes(2) : status;
}

Status CCfgSocketProbe::Ask(bool& isFound) {
  SmbiosProcessor processor;
  if (SmbiosGetProcessorBySocket(p_[0], processor) != kSuccess) return AnswerWithoutRecord(isFound);
  return AskProcessor(processor, isFound);
}

// --- PROCESSOR ---

Status CCfgProbeProcessor::ValidateParams() {
  if (Count() == 0) return Missing("first", cfg_status::kTooManyParameters);
  if (Status status = RequireCount(1, 6); status != kSuccess) return status;
  if (Status status = ReadSocket(); status != kSuccess) return status;
  // One, four or six: any other count lacks a number that has to be read.
  return ReadBytes(Count() == 1 ? 1 : Count() <= 4 ? 4 : 6);
}

Status CCfgProbeProcessor::AskProcessor(const SmbiosProcessor& processor, bool& isFound) {
  Status status = kSuccess;
  if (Count() == 1)
    isFound = processor.IsPopulated();
  else
    status = AskSignature(processor, isFound);
  if (status == kSuccess && isFound) RecordPlatform(processor);
  return status;
}

/// Compares the signature, whether or not the socket is populated.
Status CCfgProbeProcessor::AskSignature(const SmbiosProcessor& processor, bool& isFound) const {
  std::uint32_t signature = processor.Signature();
  if (Count() == 6) {
    isFound = signature == (std::uint32_t{p_[2]} << 24 | p_[3] << 16 | p_[4] << 8 | p_[5]);
    return kSuccess;
  }
  bool isShared = signature == kSharedSignatures[0] || signature == kSharedSignatures[1];
  if (isShared && p_[1] != 0) {
    // The second parameter is the place of a record among the processors, counted from 1: its family and
    // upgrade (SMBIOS 3.5, section 7.5, offsets 06h and 19h) are the third and fourth.
    std::uint32_t count = 0;
    SmbiosProcessor placed;
    if (SmbiosGetProcessorByIndex(p_[1] - 1u, count, placed) != kSuccess) return AnswerWithoutRecord(isFound);
    isFound = placed.family == p_[2] && placed.upgrade == p_[3];
    return kSuccess;
  }
  isFound = Bits(signature, 8, 8) == p_[2] && Bits(signature, 0, 8) == p_[3];
  return kSuccess;
}

/// Socket, family and upgrade; socket and maximum speed in MHz. The parser keeps the first text it is given.
void CCfgProbeProcessor::RecordPlatform(const SmbiosProcessor& processor) const {
  parser_->SetTargetPlatformInfo(Format("P%d_%d%d", p_[0], processor.family, processor.upgrade));
  parser_->SetTargetPlatformInfo(Format("P%d_%04d", p_[0], processor.maximumSpeed));
}

// --- PROCESSOR_FAMILY_MODEL ---

Status CCfgProbeProcFamMod::ValidateParams() {
  if (Count() < 2) return RefuseCount();
  if (Status status = ReadSocket(); status != kSuccess) return status;
  std::uint32_t value = 0, model = 0;
  if (!StringToInt(Parameter(1), value)) return RefuseNumber(Parameter(1));
  if (Count() > 2 && StringToInt(Parameter(2), model)) {
    family_ = static_cast<std::uint16_t>(value);
    model_ = static_cast<std::uint16_t>(model);
  } else {
    family_ = static_cast<std::uint16_t>(value >> 4);
    model_ = static_cast<std::uint16_t>(value & 0xF);
  }
  return kSuccess;
}

Status CCfgProbeProcFamMod::AskProcessor(const SmbiosProcessor& processor, bool& isFound) {
  std::uint32_t signature = processor.Signature();
  std::uint32_t family = Bits(signature, 20, 8) << 8 | Bits(signature, 8, 4);
  std::uint32_t model = Bits(signature, 16, 4) << 4 | Bits(signature, 4, 4);
  isFound = family == family_ && model == model_;
  return kSuccess;
}

// --- PROCESSOR_CORES, PROCESSOR_TDC ---

Status CCfgProbeProcCores::AskProcessor(const SmbiosProcessor& processor, bool& isFound) {
  if (!processor.hasCoreCount) {
    SetFound(false);
    CCfgParser::SetLastError(
        "PROBE PROCESSOR_CORE : This command requires SMBIOS table version 2.5 and above to work.");
    return cfg_status::kUnknownCommand;
  }
  isFound = processor.coreCount == p_[1];
  return kSuccess;
}

Status CCfgProbeProcessorTdc::AskProcessor(const SmbiosProcessor& processor, bool& isFound) {
  IpmiMessage response;
  if (Status status = AskBmc(kBoardNetFunction, kGetProcessorTdc, {p_[0]}, response); status != kSuccess)
    return status;
  isFound = processor.IsPopulated() && ByteAt(response, 0) == p_[1];
  return kSuccess;
}

}  // namespace

ProbeFamily ProcessorProbes() {
  static constexpr ProbeRow kRows[] = {
      {ProbeType{7}, "PROCESSOR", "CCfgProbeProcessor", MakeProbe<CCfgProbeProcessor>},
      {ProbeType{17}, "PROCESSOR_FAMILY_MODEL", "CCfgProbeProcFamMod", MakeProbe<CCfgProbeProcFamMod>},
      {ProbeType{18}, "PROCESSOR_CORES", "CCfgProbeProcCores", MakeProbe<CCfgProbeProcCores>},
      {ProbeType{24}, "PROCESSOR_TDC", "CCfgProbeProcessorTdc", MakeProbe<CCfgProbeProcessorTdc>},
  };
  return kRows;
}

}  // namespace varnok
