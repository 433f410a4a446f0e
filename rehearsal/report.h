// What a rehearsal found, as data. Text, JSON, JUnit and HTML are made from this and from nothing else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "boards/board_data.h"
#include "boards/compare.h"

namespace varnok::rehearsal {

using boards::Bytes;

/// What decides where a run goes on.
enum class QuestionKind : std::uint8_t {
  Menu,    ///< one of several items
  Prompt,  ///< a question of the script, yes or no
  Header,  ///< the program's own question before it writes another header
  Value,   ///< a text that the operator types
  Probe,   ///< what the board answers: yes, no or failing
};

/// A question as the program puts it, the same one each time that a road comes by.
struct Question {
  QuestionKind kind = QuestionKind::Prompt;
  std::string text{};                  ///< the prompt, the menu's title, the field, the probe as written
  std::size_t line = 0;                ///< of the script, from 1; 0 where no line asks it
  std::vector<std::string> choices{};  ///< a menu's items

  bool operator==(const Question&) const = default;
};

/// One step of a road.
struct Answer {
  std::size_t question = 0;  ///< index into Report::questions
  std::string text{};        ///< "2", "Y", "yes", "failing", what was typed
  bool isInvalid = false;    ///< a value that the program must refuse; it asks again
};

/// One request and what came of it.
struct Exchange {
  std::uint64_t begun = 0;  ///< virtual microseconds since the start
  std::uint64_t ended = 0;
  std::uint8_t controller = kBmcAddress;
  std::uint8_t channel = 0;
  std::uint8_t netFunction = 0;
  std::uint8_t command = 0;
  std::string name{};  ///< "Write FRU Data"
  Bytes request{};     ///< the data bytes
  bool isAnswered = true;
  std::uint8_t completionCode = 0;
  Bytes answer{};        ///< behind the completion code
  bool isWrite = false;  ///< it can change what the board stores
};

/// What a device holds: the wanted bytes and where its areas lie.
struct Area {
  std::string name{};  ///< "board", "header"
  std::size_t offset = 0;
  std::size_t length = 0;
};
struct DeviceImage {
  std::string device{};  ///< "FRU 0", "SDR"
  Bytes before{};
  Bytes after{};
  std::vector<Area> areasBefore{};
  std::vector<Area> areasAfter{};
};

/// How one run of the program ended.
struct Run {
  int exitStatus = 0;
  std::string message{};  ///< the last line that starts with "ERROR:", or a signal's name; empty on success
  std::string transcript{};   ///< UTF-8, what the console showed
  std::string errorOutput{};  ///< UTF-8
  std::vector<Exchange> traffic{};
  std::size_t requests = 0;
  std::size_t writes = 0;          ///< requests that changed what the board stores
  std::uint64_t microseconds = 0;  ///< virtual time of the whole run, the operator's thinking left out
  std::uint64_t stalled = 0;       ///< of them in waits that the program makes of itself
  std::size_t board = 0;           ///< index into Report::boards: runs that end with equal boards share it
};

/// Whether the script ended the run itself, by ERRORLEVEL with an error.
bool IsEndedByScript(const Run& run);

/// What a board holds after a run, against the board that the rehearsal began with.
struct BoardAfter {
  std::vector<boards::Difference> differences{};
  std::vector<DeviceImage> devices{};  ///< those that changed
  std::vector<Bytes> images{};         ///< the board's files, in the stage's order
};

struct Road {
  std::vector<Answer> answers{};
  Run run{};
  std::optional<std::size_t>
      joins{};                       ///< from here on it goes as this road did: no run of its own to the end
  std::size_t joinsAt = 0;           ///< behind so many of that road's answers
  std::vector<std::size_t> lines{};  ///< of the script that it reached, from 1
};

/// What one disturbed run came to.
enum class FaultOutcome : std::uint8_t {
  Wanted,   ///< the board holds what the undisturbed run leaves
  Old,      ///< it holds what it held before
  Between,  ///< neither
};
/// What it showed on the console, against the undisturbed run.
enum class FaultOutput : std::uint8_t {
  Same,
  Repeats,  ///< the same but for lines that come again
  Other,
};
struct FaultRun {
  std::size_t road = 0;
  std::string kind{};       ///< "no-answer (not done)", "completion code C3h"
  std::size_t request = 0;  ///< its number on the road, from 1
  std::string name{};       ///< of the request, "Write FRU Data"
  int exitStatus = 0;
  std::string message{};
  std::string errorOutput{};
  FaultOutcome outcome = FaultOutcome::Wanted;
  bool isEndless = false;   ///< stopped by the rehearsal: it waits for ever
  bool hasCrashed = false;  ///< the program's process ended by a signal, or without a word
  FaultOutput output = FaultOutput::Same;
  bool isTold = false;         ///< the error output says what it does not say undisturbed
  bool canBeShown = true;      ///< the board's devices and records can be read by the program afterwards
  bool rerunReaches = true;    ///< the same package again leaves the wanted board
  bool restoreReaches = true;  ///< restore of the snapshot leaves the old board
};
/// What matters most comes first.
enum class Gravity : std::uint8_t {
  Crashed,        ///< the program did not come to an end of its own
  FalseSuccess,   ///< status 0, another board or output than the wanted one, and not a word of it
  CannotBeShown,  ///< the board cannot be shown any more
  NoWayBack,      ///< neither a rerun nor restore leaves that state
  ToldSuccess,    ///< as a false success, and the error output tells it
  Stuck,          ///< a rerun does not reach the wanted board; restore helps
  Endless,
  Harmless,
};
Gravity GravityOf(const FaultRun& run);

struct ScriptLine {
  std::string text{};       ///< UTF-8
  bool isCommand = false;   ///< a line that a road can reach
  std::size_t reached = 0;  ///< roads that reached it
};

struct Report {
  std::string package{};               ///< the script or load file, or the command line
  std::vector<std::string> command{};  ///< the program's arguments
  std::string board{};                 ///< the folder
  std::vector<ScriptLine> script{};    ///< empty when no script was rehearsed
  std::vector<Question> questions{};
  std::vector<Road> roads{};
  std::vector<BoardAfter> boards{};
  bool isAllRoads = false;
  std::size_t roadsCut = 0;                ///< alternatives that were left out because of the limit
  std::vector<std::string> unsetTags{};    ///< tags that the script tests or sets and no road set
  std::vector<std::size_t> brokenRoads{};  ///< roads that end in an error after something was written
  bool hasFaults = false;
  std::size_t faultStep = 1;  ///< every so-manieth of all faults was tried
  std::vector<FaultRun> faults{};
  std::size_t runs = 0;  ///< of the program, beginnings shared or not
  double seconds = 0;    ///< on this computer
  unsigned cores = 1;

  /// Lines of the script, from 1, that no road reached.
  std::vector<std::size_t> UnreachedLines() const;
  /// Roads whose boards are equal, in groups of two and more.
  std::vector<std::vector<std::size_t>> EqualRoads() const;
};

}  // namespace varnok::rehearsal
