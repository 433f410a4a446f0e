// FRUNAME: the FRU that the commands behind it program, from a file or as it is in the system.
#pragma once

#include <array>

#include "cfg/cfg_command.h"
#include "cfg/file_input_command.h"
#include "cfg/fru_tables.h"
#include "fru/fru_device_address.h"

namespace varnok {

class CCfgFruAddress;
class CCfgFruArea;

class CCfgFruName : public CCfgCommand, public CCfgFileInputCommand {
 public:
  ~CCfgFruName() override;

  Status ReadFromFile(CFileCfg& file) override;
  /// Loads the file and the system's FRU; asks when their headers differ.
  Status Process() override;
  /// Writes the FRU when one of the block's commands has changed it.
  Status Execute() override;
  void DebugPrint() override;

  void Describe(ScriptVisitor& visitor) const override;

  void SetFruAddress(const CCfgFruAddress* command);
  bool IsAddressGiven() const { return isAddressGiven_; }
  void MarkAddressGiven() { isAddressGiven_ = true; }
  void SetFruArea(CCfgFruArea* area);
  CCfgFruArea* GetFruArea() const;

  /// Selects the FRU to read from (`source`: the file's image, if the block has a file) or to change.
  Status SelectFru(bool source);

  const FruDeviceAddress& Address() const { return address_; }
  bool IsWholeFile() const { return isWholeFile_; }
  void MarkValidateOnly() { isValidateOnly_ = true; }
  void MarkModified() { isModified_ = true; }
  void MarkAreaMentioned(FruAreaIndex area) { isMentioned_[static_cast<std::size_t>(area)] = true; }

 private:
  using HeaderBytes = std::array<std::uint8_t, 8>;

  Status LoadFile(HeaderBytes& header);
  Status LoadSystem(HeaderBytes& header);
  Status AskForWholeFile();
  bool AreAllAreasMentioned() const;
  void Register();

  FruDeviceAddress address_;
  const CCfgFruAddress* addressCommand_ = nullptr;
  CCfgFruArea* area_ = nullptr;
  bool isWholeFile_ = false;
  bool isValidateOnly_ = false;
  bool isModified_ = false;
  bool isAddressGiven_ = false;
  bool usesFile_ = true;
  std::array<bool, kFruAreaCount> isMentioned_{};
};

}  // namespace varnok
