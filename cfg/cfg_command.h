// The base of every script command: the operations that the parser runs, the factory that turns a line into a
// command, and the helpers that commands share (arguments, numbers, console, files, environment).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "app/services/callbacks.h"
#include "app/services/format.h"
#include "cfg/cfg_status.h"
#include "cfg/command_list.h"
#include "cfg/command_table.h"
#include "cfg/file_cfg.h"
#include "cfg/script_visitor.h"

namespace varnok {

class CCfgBlock;
class CCfgParser;

/// What the engine may ask of its user; null where nothing is installed.
struct CfgCallbacks {
  ProgressCallback progress = nullptr;
  DisplayCallback display = nullptr;
  InputCharCallback inputChar = nullptr;
  GetEnvVarCallback getEnvVar = nullptr;
};

class CCfgCommand {
 public:
  /// Room for a keyword or the rest of a line, the terminating NUL included.
  static constexpr std::size_t kLineCapacity = 256;

  CCfgCommand() = default;
  virtual ~CCfgCommand() = default;
  CCfgCommand(const CCfgCommand&) = delete;
  CCfgCommand& operator=(const CCfgCommand&) = delete;

  // In the order in which a command meets them: its line is read and its place checked while the script
  // loads, then it is processed, and executed if it has registered itself for the commit.

  /// Reads the command's parameters and the lines that belong to it.
  virtual Status ReadFromFile(CFileCfg& file);
  virtual Status WriteToFile() { return kSuccess; }
  virtual Status Process() { return kSuccess; }
  virtual Status Execute() { return kSuccess; }
  /// Undoes what Execute did; no command can.
  virtual Status Revert() { return kSuccess; }
  virtual void DebugPrint() {}
  /// The command to go on with; null for no jump.
  virtual CCfgCommand* Next() { return nullptr; }
  virtual CCfgCommand* Previous() { return nullptr; }
  virtual void ResetLink() {}
  /// Whether the command may stand at the top level or in a block's body; sets the message when not.
  virtual bool IsValidCommandLocation() { return true; }
  /// The command as one with a body; null for any other.
  virtual CCfgBlock* AsBlock() { return nullptr; }
  /// Whether the commit executes the command before all others.
  virtual bool IsWriteFirst() const { return false; }
  /// Tells a reader of the script what the command means to it.
  virtual void Describe(ScriptVisitor&) const {}

  /// Reads the next command of the script and lets it read its line. Returns kEndOfScript at the end,
  /// kSuccess with a null command when the pool is exhausted.
  static Status CreateCommand(CFileCfg* file, PoolPtr<CCfgCommand>& command, CCfgParser* parser);
  /// As CreateCommand, but the new command has read nothing yet. kSuccess with a null command: the pool is
  /// exhausted.
  static Status MakeCommand(CFileCfg* file, PoolPtr<CCfgCommand>& command, CCfgParser* parser);
  /// Whether a keyword belongs to a smaller management controller's scripts and is passed over.
  static bool IsSkipCmd(std::string_view keyword);

  /// What the factory knows of the command. Without a row it is one that is passed over.
  void Adopt(const CommandRow* row, CCfgParser* parser, std::uint32_t line);

  CommandType Type() const { return row_ != nullptr ? row_->type : CommandType::Skip; }
  const char* GetDisplayName() const;
  std::string_view Keyword() const { return row_ != nullptr ? row_->keyword : std::string_view(); }
  /// The line in the script, 0-based.
  std::uint32_t Line() const { return line_; }
  /// What the line holds behind the keyword. It lives as long as the parser keeps the script.
  std::string_view Parameters() const;

  static CfgCallbacks& Callbacks();

  /// Takes the next argument off `cursor`: a double-quoted text or a word, within the same text. False when
  /// there is none.
  static bool GetNextInput(std::string_view& cursor, std::string_view& token);
  /// True when the text is exactly one hexadecimal number.
  static bool StringToInt(std::string_view text, std::uint32_t& value);
  /// As above; stores the low byte.
  static bool StringToInt(std::string_view text, std::uint8_t& value);
  /// True when the text begins with a decimal number.
  static bool StringToDec(std::string_view text, std::int32_t& value);
  static bool IsBufferEmpty(std::string_view text);
  /// Index of the `occurrence`-th (from 1) `character` among the first `length`; -1 when there is none.
  static int FindCharacter(std::string_view text, char character, int occurrence, std::size_t length);

  /// Shows formatted text through the display callback, at most 1023 characters of it.
  template <class... Arguments>
  static bool DisplayWide(const char* format, const Arguments&... arguments) {
    return Show(FormatWide(format, arguments...));
  }
  /// The same, but at most 511 characters; false when no callback is set. Text of a script is harmless as a
  /// format: a conversion without an argument shows as it stands.
  template <class... Arguments>
  static bool Display(std::string_view format, const Arguments&... arguments) {
    return Show(Format(format, arguments...));
  }

  /// False without an input callback or when it fails.
  static bool GetInputChar(char& character, bool echo);
  /// Reads up to the return key, at most `size` - 1 characters. Without echo nothing is stored.
  static bool GetInputString(std::u16string& text, std::size_t size, bool echo);
  /// Reads keys until one of y, Y, n, N; others are passed over. A failing input callback ends the reading
  /// with the last key.
  static char ReadYesOrNo();
  /// Shows the answer and ends its line.
  static void EchoAnswer(char key);
  /// The given line (from 1) of a text file; false, with the message, when it has none or the line does not
  /// fit.
  static bool GetStringFromFile(std::string_view fileName, std::string& text, std::size_t size,
                                std::int32_t line);
  static bool GetEnvVariable(std::string_view name, std::string& text, std::size_t size);

  /// Reads the rest of the line for its parameters; false, with the message, for a line that is too long or
  /// holds an odd number of quotes.
  bool ReadLineFromFile(CFileCfg& file, std::string_view& text, std::size_t size = kLineCapacity);
  /// A path with ':' as it is, any other behind the script's directory.
  bool GetFile(std::u16string_view path, std::u16string& fullPath, std::size_t size);

 protected:
  // Each `operation` is the name in the log of the operation that reads, "CLASS::METHOD".

  /// ReadLineFromFile as a status.
  Status ReadLine(const char* operation, CFileCfg& file, std::string_view& text);
  /// Sets "The %hs command is missing its %ls parameter." and returns `status`.
  Status MissingParameter(const char* operation, const char* which, Status status,
                          const char* name = nullptr) const;
  /// Refuses what `cursor` still holds with "Too many parameters ..." and `status`; kSuccess when it is
  /// empty.
  Status RefuseExtra(const char* operation, std::string_view cursor, Status status,
                     const char* name = nullptr) const;
  /// Reads the line of a command that takes exactly one parameter.
  Status ReadOneParameter(const char* operation, CFileCfg& file, Status extraStatus);

  /// GetNextInput once more, for a text that it has accepted, without a word in the log.
  static bool TakeArgument(std::string_view& cursor, std::string_view& argument);
  /// The first argument of the command's line.
  std::string_view FirstParameter() const;

  CCfgParser* parser_ = nullptr;

 private:
  static bool Show(std::u16string text);
  static bool Show(std::string text);

  friend class CommandList;

  PoolPtr<CCfgCommand> next_;
  const CommandRow* row_ = nullptr;
  // Last, so that a command's own flags take the room behind it: a script may have a million of them.
  std::uint32_t line_ = 0;
};

}  // namespace varnok
