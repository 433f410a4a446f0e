// FRUAREA: the area that the FRUFIELD lines behind it change; it can also resize, copy, compare or validate
// the area.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "cfg/cfg_command.h"
#include "cfg/fru_tables.h"

namespace varnok {

class CCfgFruName;

class CCfgFruArea : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;
  bool IsValidCommandLocation() override;
  void Describe(ScriptVisitor& visitor) const override;

  FruAreaIndex Index() const { return index_; }
  const char* Keyword() const;
  FruAreaId Id() const;
  bool IsFieldAllowed(std::uint32_t fieldBit) const;
  /// Whether the FRU to be changed has the area.
  bool DoesAreaExistInFru(CCfgFruName& fruName) const;

 private:
  enum class Mode : std::uint32_t { None, Validate, Compare };

  Status ReadArea(std::string_view keyword);
  Status ReadRecordNumber(std::string_view& cursor);
  Status ReadOptions(std::string_view cursor);
  Status ReadValidateTag(std::string_view& cursor);
  Status ReadSize(std::string_view option);
  static Status RefuseOutOfBlock(const char* operation);

  Status CopyFromFile(CCfgFruName& fruName);
  Status Validate(CCfgFruName& fruName);
  Status Select(CCfgFruName& fruName);
  Status Resize(CCfgFruName& fruName);
  Status CopyWhole(CCfgFruName& fruName);
  Status ReadWhole(CCfgFruName& fruName, std::vector<std::uint8_t>& bytes);
  Status ReportFailure(Status status) const;
  FruWriteMode WriteMode() const;

  FruAreaIndex index_ = FruAreaIndex::None;
  Mode mode_ = Mode::None;
  std::string_view validateTag_;
  std::uint8_t recordNumber_ = 0;  ///< 1 to 9 for MultiRec
  std::uint32_t size_ = 0;         ///< bytes; 0 for none
};

}  // namespace varnok
