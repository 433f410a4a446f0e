// Who looks over the engine's shoulder while it runs a script: told of the lines that run, of questions
// before a key is read, of answers and tags, and asked how a probe shall end. For programs of a desk that try
// a script out; an image for the firmware has no watcher, and no code for one.
//
//   class Counter : public ScriptWatcher { void Reaches(std::uint32_t) override { ++lines; } ... };
//   theScriptWatcher = &counter;   // until it is null again
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "firmware/status.h"

namespace varnok {

class CCfgCommand;

enum class ScriptQuestionKind : std::uint8_t {
  Menu,       ///< a number from 1 on, and Enter
  YesOrNo,    ///< PROMPT
  WholeFile,  ///< whether the whole FRU file is to be programmed: Y or N
  Value,      ///< a text, and Enter
  IsCorrect,  ///< whether the value was meant: Y or N
};

struct ScriptQuestion {
  ScriptQuestionKind kind;
  std::string_view text;  ///< the prompt, the menu's title, the FRU file, the field, the value
  std::uint32_t line;     ///< 0-based
  std::span<const std::string_view> items{};  ///< of a menu
  std::size_t longest = 0;                    ///< of a value: characters that can be typed
  bool isChassisType = false;                 ///< the value is a hexadecimal number
};

class ScriptWatcher {
 public:
  virtual ~ScriptWatcher() = default;
  /// A command is about to be processed.
  virtual void Runs(const CCfgCommand&) {}
  /// A line (0-based) that belongs to a command takes effect: a YES, NO, FOUND, ELSE or MENU that was chosen.
  virtual void Reaches(std::uint32_t) {}
  /// The next key that the engine reads answers this. A question is asked again after an answer that will not
  /// do.
  virtual void Asks(const ScriptQuestion&) {}
  /// What was read: a key, or a text without its Enter.
  virtual void IsAnswered(std::u16string_view) {}
  virtual void SetsTag(std::string_view) {}
  virtual void ClearsTag(std::string_view) {}
  /// A probe is about to ask the hardware.
  virtual void Probes(const CCfgCommand&) {}
  /// What the hardware answered, which may be changed to what it might have.
  virtual void IsProbed(Status&, bool&) {}
  /// Every command has been processed; what was registered is about to be written.
  virtual void Commits() {}
};

inline ScriptWatcher* theScriptWatcher = nullptr;

inline bool IsScriptWatched() {
  constexpr bool kIsOnDesk = __STDC_HOSTED__ != 0;
  if constexpr (kIsOnDesk)
    return theScriptWatcher != nullptr;
  else
    return false;
}

/// Calls one of the operations above, if somebody watches.
template <class... Parameters, class... Arguments>
inline void Tell(void (ScriptWatcher::*event)(Parameters...), Arguments&&... arguments) {
  if (IsScriptWatched()) (theScriptWatcher->*event)(arguments...);
}

}  // namespace varnok
