// MENUTITLE, MENU and MENUPROMPT: a numbered menu, whose answer sets the tag of the item chosen.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cfg/cfg_command.h"

namespace varnok {

struct MenuItem {
  std::string tag;   ///< what choosing the item sets
  std::string text;  ///< what is shown for it
};

class CCfgMenu : public CCfgCommand {
 public:
  /// MENU and MENUTITLE make the same command; a menu that MENU begins has no title.
  explicit CCfgMenu(bool hasTitle) : CCfgCommand(CommandType::MenuTitle), hasTitle_(hasTitle) {}

  Status ReadFromFile(CFileCfg& file) override;
  Status ReadAnswersFromFile(CFileCfg& file);
  Status Process() override;
  void DebugPrint() override;

  const std::vector<MenuItem>& Items() const { return items_; }

 private:
  Status ReadItem(std::string_view rest);
  void Show();

  bool hasTitle_;
  std::optional<std::string> title_;
  std::vector<MenuItem> items_;
};

}  // namespace varnok
