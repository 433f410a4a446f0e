// What commands ask of the operator, of files and of the environment.
#include <algorithm>
#include <array>
#include <memory>

#include "app/services/text.h"
#include "app/services/trace.h"
#include "cfg/cfg_command.h"
#include "cfg/cfg_parser.h"
#include "cfg/script_watcher.h"
#include "firmware/firmware.h"
#include "firmware/lasting.h"

namespace varnok {
namespace {

constexpr std::size_t kWideDisplayLength = 1023;
constexpr std::size_t kNarrowDisplayLength = 511;
constexpr char kBackspace = 8;
constexpr char kLineFeed = 10;
constexpr char kReturn = 13;
// Kept: a name this long is reported as found although nothing is read.
constexpr std::size_t kLongestVariableName = 1022;

/// Reads a file in pieces that end with a line feed or at 256 bytes; a longer line counts as several.
class PieceReader {
 public:
  static constexpr std::size_t kPieceLength = 256;

  explicit PieceReader(File& file) : file_(file) {}

  /// False at the end of the file.
  bool Next(std::string& piece) {
    piece.clear();
    while (piece.size() < kPieceLength && (piece.empty() || piece.back() != '\n')) {
      if (position_ == count_ && !Refill()) break;
      piece.push_back(static_cast<char>(block_[position_++]));
    }
    return !piece.empty();
  }

 private:
  bool Refill() {
    position_ = count_ = 0;
    return file_.Read(block_, count_) == kSuccess && count_ > 0;
  }

  File& file_;
  std::array<std::uint8_t, 1024> block_{};
  std::size_t position_ = 0;
  std::size_t count_ = 0;
};

bool RefuseFileValue(std::string_view fileName, std::int32_t line, int place) {
  CCfgParser::SetLastError("Unable to read the FRU field value from the file '%s' at line number: %d",
                           fileName, line);
  Trace("CCfgCommand::GetStringFromFile - (%d)Unable to read the value from the file '%s' at line number: %d",
        1, place, fileName, line);
  return false;
}

}  // namespace

CfgCallbacks& CCfgCommand::Callbacks() {
  return Lasting<CfgCallbacks>();
}

bool CCfgCommand::Show(std::u16string text) {
  TraceScope scope("CCfgCommand::Display");
  text.resize(std::min(text.size(), kWideDisplayLength));
  if (Callbacks().display != nullptr) Callbacks().display(text);
  return true;
}

bool CCfgCommand::Show(std::string text) {
  TraceScope scope("CCfgCommand::Display");
  if (Callbacks().display == nullptr) {
    TraceFailure("CCfgCommand::Display", "Display callback function not set");
    return false;
  }
  text.resize(std::min(text.size(), kNarrowDisplayLength));
  Callbacks().display(Widen(text));
  return true;
}

bool CCfgCommand::GetInputChar(char& character, bool echo) {
  constexpr const char* kName = "CCfgCommand::GetInputChar";
  Trace("%s [ENTRY]", 3, kName);
  if (Callbacks().inputChar == nullptr) {
    Trace("%s [EXIT] - Input callback function not set", 3, kName);
    return false;
  }
  bool isRead = Callbacks().inputChar(character) > 0;
  if (isRead && echo) Display("%c", character);
  Trace("%s [EXIT]", 3, kName);
  return isRead;
}

bool CCfgCommand::GetInputString(std::u16string& text, std::size_t size, bool echo) {
  TraceScope scope("CCfgCommand::GetInputString");
  text.clear();
  if (size < 1) {
    TraceFailure("CCfgCommand::GetInputString", "Invalid parameters");
    return false;
  }
  for (;;) {
    char key = 0;
    if (!GetInputChar(key, false)) {
      TraceFailure("CCfgCommand::GetInputString", "Unable to read a character");
      return false;
    }
    if (key == kReturn || key == kLineFeed) {
      Tell(&ScriptWatcher::IsAnswered, std::u16string_view(text));
      return true;
    }
    // Without echo every key is read and none is kept.
    if (!echo) continue;
    if (key == kBackspace && !text.empty()) {
      text.pop_back();
      Display("%c %c", kBackspace, kBackspace);
    } else if (key >= 32 && key <= 126 && text.size() < size - 1) {
      text.push_back(static_cast<unsigned char>(key));
      Display("%c", key);
    }
  }
}

char CCfgCommand::ReadYesOrNo() {
  char key = 0;
  while (GetInputChar(key, false) && ToUpper(key) != 'Y' && ToUpper(key) != 'N') {
  }
  const char16_t answer = static_cast<unsigned char>(key);
  Tell(&ScriptWatcher::IsAnswered, std::u16string_view(&answer, 1));
  return key;
}

void CCfgCommand::EchoAnswer(char key) {
  DisplayWide("%lc\n", static_cast<char16_t>(static_cast<unsigned char>(key)));
}

bool CCfgCommand::GetStringFromFile(std::string_view fileName, std::string& text, std::size_t size,
                                    std::int32_t line) {
  TraceScope scope("CCfgCommand::GetStringFromFile");
  std::unique_ptr<File> file;
  if (TheFirmware().OpenFile(Widen(fileName), FileMode::Read, file) != kSuccess) {
    Trace("CCfgCommand::GetStringFromFile - Unable to open file %s", 1, fileName);
    return false;
  }
  if (size < 1) {
    CCfgParser::SetLastError("Unable to retrieve file %s.", fileName);
    Trace("CCfgCommand::GetStringFromFile - Unable to retrieve file %s", 1, fileName);
    return false;
  }
  PieceReader reader(*file);
  std::string piece;
  for (std::int32_t i = 0; i < line; ++i) {
    if (reader.Next(piece)) continue;
    text.clear();
    return RefuseFileValue(fileName, line, 1);
  }
  while (!piece.empty() && (piece.back() == '\n' || piece.back() == '\r')) piece.pop_back();
  if (piece.size() + 1 >= size) return RefuseFileValue(fileName, line, 2);
  text = piece;
  return true;
}

bool CCfgCommand::GetEnvVariable(std::string_view name, std::string& text, std::size_t size) {
  TraceScope scope("CCfgCommand::GetEnvVariable");
  if (Callbacks().getEnvVar == nullptr) {
    TraceFailure("CCfgCommand::GetEnvVariable", "Environment callback function not set");
    return false;
  }
  if (name.size() > kLongestVariableName) return true;
  std::u16string value;
  bool isFound = Callbacks().getEnvVar(Widen(name), value, size);
  text = Narrow(value);
  return isFound;
}

bool CCfgCommand::GetFile(std::u16string_view path, std::u16string& fullPath, std::size_t size) {
  TraceScope scope("CCfgCommand::GetFile");
  bool isWhole = path.find(u':') != std::u16string_view::npos;
  std::u16string_view directory =
      isWhole || parser_ == nullptr ? std::u16string_view() : parser_->Directory();
  if (!isWhole && directory.empty()) {
    TraceFailure("CCfgCommand::GetFile", "No script directory");
    return false;
  }
  if (directory.size() + path.size() >= size) {
    CCfgParser::SetLastError("Internal error - file path name to large for buffer.");
    Trace("CCfgCommand::GetFile - File path name to large for buffer(%d)", 2, isWhole ? 2 : 1);
    return false;
  }
  fullPath = directory;
  fullPath += path;
  return true;
}

}  // namespace varnok
