// What a reader outside the engine sees of a script: its commands with their lines, and what each means to
// the script. Nothing is asked, loaded or written.
//
//   CCfgParser parser;
//   parser.ParseFile(u"MASTER.CFG", nullptr);   // the script must be one that loads
//   WalkScript(parser.Commands(), visitor);
//
// For IFSET a / SET b / ELSE / BOOT / ENDIF the visitor is told: Command IFSET, Fact TestsTag a, EnterBranch,
// Command SET, Fact SetsTag b, LeaveBranch, Command ELSE, EnterBranch, Command BOOT, LeaveBranch. Lines that
// belong to a command before them (FOUND, YES, NO, the items of a menu) are facts of that command. Lines of a
// smaller controller's scripts are no commands here.
#pragma once

#include <cstdint>
#include <string_view>

namespace varnok {

class CCfgCommand;
class CommandList;

/// What a text of a command is to the script.
enum class ScriptFact : std::uint8_t {
  TestsTag,      ///< IFSET: one for each tag; the branch runs when all are set
  SetsTag,       ///< SET, and MENU for the item before it
  SetsTagOnYes,  ///< YES, FOUND's first, VALIDATE
  SetsTagOnNo,   ///< NO, FOUND's second
  ClearsTag,     ///< CLEAR
  Question,      ///< PROMPT, and the title of a menu (empty without one): the operator answers
  Item,          ///< MENU: one for each item, in the order of their numbers; the last one sets no tag
  AsksValue,     ///< FRUFIELD @STDIN: the field's keyword
  FruFile,       ///< FRUNAME with a file, as written: it is looked for beside the script
  SdrFile,       ///< SDRNAME, the same
  ValueFile,     ///< FRUFIELD @FILE, the same
  Variable,      ///< FRUFIELD @ENV and @ENVFILE: a name of the environment
};

class ScriptVisitor {
 public:
  virtual ~ScriptVisitor() = default;
  /// The next command in the order of the lines. Its Keyword(), Line() and Parameters() say what was written.
  virtual void Command(const CCfgCommand& command) = 0;
  /// Something of the command told last, from this line of the script (0-based).
  virtual void Fact(ScriptFact kind, std::string_view text, std::uint32_t line) = 0;
  /// The body of the IFSET or ELSE told last, up to its LeaveBranch.
  virtual void EnterBranch() {}
  virtual void LeaveBranch() {}
};

/// Tells a visitor everything. Blocks may nest to any depth: this takes no stack for them.
void WalkScript(const CommandList& commands, ScriptVisitor& visitor);

}  // namespace varnok
