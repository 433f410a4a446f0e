// FRUFIELD: sets one field of the FRUAREA before it, from the script, the operator, a file or the
// environment.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cfg/cfg_command.h"
#include "cfg/fru_tables.h"

namespace varnok {

class CCfgFruArea;
class CCfgFruName;

class CCfgFruField : public CCfgCommand {
 public:
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;
  void DebugPrint() override;
  bool IsValidCommandLocation() override;
  void Describe(ScriptVisitor& visitor) const override;

  /// The most that the field holds, in bytes.
  std::size_t GetMaxFieldSize() const;
  /// Whether the operator's text can be the field's value; shows why when not.
  bool IsValidInput(std::string_view text) const;
  /// Turns a chassis type's digits into its byte.
  Status DoSpecialFieldConversions(std::string& value) const;
  Status AssignValueToFruField(CCfgFruName& fruName, const std::string& value) const;
  /// Selects the field within the FRU that is selected.
  Status SelectField(const CCfgFruArea& area) const;

 private:
  enum class Source : std::uint32_t { File = 0, Env = 1, EnvFile = 2, Stdin = 3, Literal = 4 };

  Status ReadField(std::string_view keyword);
  Status ReadValue(std::string_view cursor);
  Status ReadRedirection(std::string_view text);
  Status ReadInputType(std::string_view name) const;
  Status ReadSourceName(std::string_view text, std::string_view rest);
  Status ReadLineNumber(std::string_view text, std::string_view digits);
  Status CheckArea() const;
  static bool RefuseOutOfBlock(const char* operation, const char* message);

  Status GetValue(CCfgFruName& fruName, std::string& value);
  Status GetCurrentValue(CCfgFruName& fruName, std::string& value) const;
  Status GetValueFromVariable(std::string& value, std::size_t size) const;
  Status GetValueFromFile(std::string_view fileName, std::string& value);
  Status AskOperator(std::string& value);
  void TellQuestion(const CCfgFruName& fruName, std::size_t size) const;
  Status LongestAnswer(CCfgFruName& fruName, std::size_t& size) const;
  Status ReportFailure(const char* operation, Status status) const;
  bool IsChassisType() const { return field_ == fru_field::kChassisType; }
  const FruFieldRow& Row() const { return kFruFields[field_]; }

  std::uint32_t field_ = fru_field::kNone;
  Source source_ = Source::Literal;
  std::optional<std::string_view> value_;
  std::string_view sourceName_;
  std::int32_t sourceLine_ = 0;
  std::int32_t customNumber_ = 0;  ///< 1 to 9 for AMx
};

}  // namespace varnok
