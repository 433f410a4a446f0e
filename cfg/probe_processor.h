// Probes for one processor socket: PROCESSOR, PROCESSOR_FAMILY_MODEL, PROCESSOR_CORES, PROCESSOR_TDC. The
// first parameter of each is the socket; its SMBIOS record is looked up before the probe's own question.
#pragma once

#include "cfg/probe.h"
#include "platform/smbios_records.h"

namespace varnok {

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

}  // namespace varnok
