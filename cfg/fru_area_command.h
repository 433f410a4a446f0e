// FRUAREA: the area that the FRUFIELD lines behind it change; it can also resize, copy, compare or validate
// the area.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cfg/cfg_command.h"
#include "cfg/fru_tables.h"

namespace varnok {

class CCfgFruName;

class CCfgFruArea : public CCfgCommand {
 public:
  CCfgFruArea() : CCfgCommand(CommandType::FruArea) {}

  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;
  bool IsValidCommandLocation() override;

  FruAreaIndex Index() const { return index_; }
  const char* Keyword() const;
  FruAreaId Id() const;
  bool IsFieldAllowed(std::uint32_t fieldBit) const;
  /// Whether the FRU to be changed has the area.
  bool DoesAreaExistInFru(CCfgFruName& fruName) const;

 private:
  enum class Mode : std::uint32_t { None, Validate, Compare };

  Status ReadArea(const std::string& keyword);
  Status ReadRecordNumber(std::string_view& cursor);
  Status ReadOptions(std::string_view cursor);
  Status ReadValidateTag(std::string_view& cursor);
  Status ReadSize(const std::string& option);
  Status RefuseOutOfBlock() const;

  Status CopyFromFile(CCfgFruName& fruName);
  Status Validate(CCfgFruName& fruName);
  Status Select(CCfgFruName& fruName);
  Status Resize(CCfgFruName& fruName);
  Status CopyWhole(CCfgFruName& fruName);
  Status ReadWhole(CCfgFruName& fruName, std::vector<std::uint8_t>& bytes);
  Status Fail(Status status) const;
  FruWriteMode WriteMode() const;

  FruAreaIndex index_ = FruAreaIndex::None;
  Mode mode_ = Mode::None;
  std::string validateTag_;
  std::uint8_t recordNumber_ = 0;  ///< 1 to 9 for MultiRec
  std::uint32_t size_ = 0;         ///< bytes; 0 for none
};

}  // namespace varnok
