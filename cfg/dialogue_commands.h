// Commands that talk to the operator in one line: DISPLAY and PROMPT with its YES and NO.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cfg/cfg_command.h"

namespace varnok {

class CCfgDisplay : public CCfgCommand {
 public:
  CCfgDisplay() : CCfgCommand(CommandType::Display) {}
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;

 private:
  std::string text_;
};

/// A question, whose answer sets the tag of the YES or of the NO line that follows it.
class CCfgPrompt : public CCfgCommand {
 public:
  CCfgPrompt() : CCfgCommand(CommandType::Prompt) {}
  Status ReadFromFile(CFileCfg& file) override;
  Status Process() override;

 private:
  Status ReadAnswers(CFileCfg& file);
  Status ReadTag(std::string_view rest, const char* name, std::optional<std::string>& tag);

  std::string question_;
  std::optional<std::string> yesTag_;
  std::optional<std::string> noTag_;
};

/// A YES line that no PROMPT has taken.
class CCfgYes : public CCfgCommand {
 public:
  CCfgYes() : CCfgCommand(CommandType::Yes) {}
  bool IsValidCommandLocation() override;
};

/// A NO line that no PROMPT has taken.
class CCfgNo : public CCfgCommand {
 public:
  CCfgNo() : CCfgCommand(CommandType::No) {}
  bool IsValidCommandLocation() override;
};

}  // namespace varnok
