// The base of every script command: the operations that the parser runs, the factory that turns a line into a
// command, and the helpers that commands share (arguments, numbers, console, files, environment).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "app/services/callbacks.h"
#include "app/services/format.h"
#include "cfg/cfg_status.h"
#include "cfg/command_type.h"
#include "cfg/file_cfg.h"
#include "firmware/pool.h"

namespace varnok {

class CCfgBlock;
class CCfgCommand;
class CCfgParser;

/// Commands in the order of the script. A command lives in pool memory: the parser stops reading when it is
/// exhausted.
using CommandList = std::vector<PoolPtr<CCfgCommand>>;

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

  explicit CCfgCommand(CommandType type) : type_(type) {}
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
  virtual void ResetLink() { link_ = nullptr; }
  /// Whether the command may stand at the top level or in a block's body; sets the message when not.
  virtual bool IsValidCommandLocation() { return true; }
  /// The command as one with a body; null for any other.
  virtual CCfgBlock* AsBlock() { return nullptr; }

  /// Reads the next command of the script and lets it read its line. Returns kEndOfScript at the end,
  /// kSuccess with a null command when the pool is exhausted.
  static Status CreateCommand(CFileCfg* file, PoolPtr<CCfgCommand>& command, CCfgParser* parser);
  /// As CreateCommand, but the new command has read nothing yet. kSuccess with a null command: the pool is
  /// exhausted.
  static Status MakeCommand(CFileCfg* file, PoolPtr<CCfgCommand>& command, CCfgParser* parser);
  /// Whether a keyword belongs to a smaller management controller's scripts and is passed over.
  static bool IsSkipCmd(std::string_view keyword);

  CommandType Type() const { return type_; }
  const char* GetDisplayName() const;
  void SetParser(CCfgParser* parser) { parser_ = parser; }

  static CfgCallbacks& Callbacks();

  /// Takes the next argument off `cursor`: a double-quoted text or a word. False when there is none.
  static bool GetNextInput(std::string_view& cursor, std::string& token);
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
  bool ReadLineFromFile(CFileCfg& file, std::string& text, std::size_t size = kLineCapacity);
  /// A path with ':' as it is, any other behind the script's directory.
  bool GetFile(std::u16string_view path, std::u16string& fullPath, std::size_t size);

 protected:
  /// Sets "The %hs command is missing its %ls parameter." and returns `status`.
  Status MissingParameter(const char* which, Status status, const char* name = nullptr);
  /// Refuses what `cursor` still holds with "Too many parameters ..." and `status`; kSuccess when it is
  /// empty.
  Status RefuseExtra(std::string_view cursor, Status status, const char* name = nullptr);
  /// Reads the line of a command that takes exactly one parameter.
  Status ReadOneParameter(CFileCfg& file, std::string& parameter, Status extraStatus);

  CCfgParser* parser_ = nullptr;
  CCfgCommand* link_ = nullptr;

 private:
  static bool Show(std::u16string text);
  static bool Show(std::string text);

  CommandType type_;
};

}  // namespace varnok
