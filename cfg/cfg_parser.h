// The parser of a script: reads it into commands, processes them in order, and commits those that write
// something. It holds what the commands share: tags, the current FRUNAME, the update list, the script's
// directory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/services/format.h"
#include "cfg/cfg_command.h"
#include "cfg/file_input_command.h"
#include "cfg/last_error.h"
#include "cfg/ref_node.h"
#include "cfg/tag_list.h"
#include "firmware/firmware.h"

namespace varnok {

class CCfgFruName;

class CCfgParser {
 public:
  CCfgParser() = default;
  ~CCfgParser();
  CCfgParser(const CCfgParser&) = delete;
  CCfgParser& operator=(const CCfgParser&) = delete;

  /// Reads a script. `name`, when not null, is the name whose extension is checked. kFileNotFound,
  /// kBadExtension or the status of the line that failed.
  Status ParseFile(const char16_t* path, const char16_t* name);
  /// Reads the script's lines into `commands`.
  Status ReadFile(CommandList& commands);
  /// Processes every command in order up to the first that returns a status other than 0.
  Status Process();
  /// Executes the registered commands, SDR first, then refreshes the BMC when the script asks for it.
  Status Execute();
  /// Forgets the script.
  void Free();
  void DebugPrint();

  /// A name without text (no data) does nothing; one ends at its first NUL.
  void SetTag(std::string_view name);
  void ClearTag(std::string_view name);
  bool IsTagSet(std::string_view name) const;
  int FindTag(std::string_view name);
  std::size_t TagCount() const { return tags_.Count(); }
  Status GetTag(std::int64_t index, std::string& name);

  /// While a script is read: moves the reader to a line (from 0).
  void GotoLineInFile(std::uint32_t line);

  /// Registers a command for the commit, with the file that it loads (null for none). With `replace` an
  /// SDRNAME takes the place of one registered before.
  void AddUpdateCommand(CCfgCommand& command, CCfgFileInputCommand* file, bool replace);
  void ClearUpdateFileList();
  std::size_t UpdateFileCount() const { return updateFiles_.size(); }

  void ClearConfigNameList();
  const CCfgRefNode* ConfigNames() const { return configNames_ ? &*configNames_ : nullptr; }
  /// The first text given stays.
  void SetTargetPlatformInfo(std::string_view text);
  std::u16string_view TargetPlatformInfo() const { return targetPlatform_; }

  /// The sequence number of the next request that a probe bridges: 1 to 63 in turn, shared by all probes.
  std::uint8_t TakeProbeSequence();

  /// Sets the engine's message, at most 511 characters.
  template <class... Arguments>
  static void SetLastError(const char* format, const Arguments&... arguments) {
    const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
    SetLastErrorWith(format, list.data(), list.size());
  }
  static void SetLastErrorWith(const char* format, const FormatArgument* arguments, std::size_t count);
  static std::u16string_view GetLastError();

  /// The directory of the script with its last separator; empty before a script was named.
  std::u16string_view Directory() const { return directory_; }
  const CommandList& Commands() const { return commands_; }
  /// A line of the script (from 0), trimmed and without its comment; empty before a script was read.
  std::string_view Line(std::uint32_t line) const;

  /// The FRUNAME that registered itself last; its FRU commands follow it.
  CCfgFruName* CurrentFruName() const { return currentFruName_; }
  void SetCurrentFruName(CCfgFruName* fruName) { currentFruName_ = fruName; }

  /// Names a file to which every command line read is appended; an empty name ends that.
  void SetEchoFile(std::string_view name) { echoName_ = name; }
  void EchoLine(std::string_view line);

 private:
  using UpdateFileList = std::list<CCfgFileInputCommand*>;
  struct Update {
    CCfgCommand* command;
    UpdateFileList::iterator file;  ///< end of the list for none
  };
  using UpdateList = std::list<Update>;

  Status DerivePaths();
  Status ReadCommands(CommandList& commands);
  void ReportLine();
  void ForgetUpdates();
  void RemoveFirstSdrName();
  Status ExecuteWriteFirst();
  Status ExecuteOthers();

  std::u16string fileName_;
  std::u16string directory_;
  std::u16string fullPath_;
  std::unique_ptr<CFileCfg> reader_;  ///< kept with the script: its commands' parameters lie in its text
  TagList tags_;
  CommandList commands_;
  UpdateFileList updateFiles_;
  UpdateList updates_;
  std::list<UpdateList::iterator> sdrUpdates_;  ///< the SDRNAME entries of updates_, in order of registration
  bool isProcessed_ = false;
  bool isRefreshRequested_ = false;
  std::u16string targetPlatform_;
  std::optional<CCfgRefNode> configNames_;
  CCfgFruName* currentFruName_ = nullptr;
  std::uint8_t probeSequence_ = 1;
  std::string echoName_;
  std::unique_ptr<File> echo_;
};

}  // namespace varnok
