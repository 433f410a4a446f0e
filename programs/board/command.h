// A command of varnok-board: what its command line takes, as data, and the function that runs it. The parser
// of all of them is programs/varnok_board.cpp; a command is a page of code over boards/.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace varnok::companion {

/// Exit statuses.
enum ExitStatus : int {
  kDone = 0,      ///< done, nothing found
  kFound = 1,     ///< differences or findings
  kWrongUse = 2,  ///< the command line is wrong
  kFailed = 3,    ///< it could not be done
};

/// One row of a command's page.
struct Option {
  std::string_view name;   ///< "--json", or "FOLDER" for an argument without a name
  std::string_view value;  ///< what its value stands for, "FILE"; empty: a switch
  std::string_view help;
  enum Count { Optional, Required, Many, OneOrMore } count = Optional;
};

/// What a command line gave, by the options' names.
class Arguments {
 public:
  bool Has(std::string_view name) const { return values_.contains(name); }
  /// The value, the first of several; `fallback` when the option is not given.
  std::string Value(std::string_view name, std::string_view fallback = {}) const;
  /// All values in their order.
  std::vector<std::string> Values(std::string_view name) const;
  void Add(std::string_view name, std::string value) {
    values_[std::string(name)].push_back(std::move(value));
  }

 private:
  std::map<std::string, std::vector<std::string>, std::less<>> values_;
};

struct Command {
  std::string_view name;
  std::string_view summary;
  std::span<const Option> options;
  std::string_view example;  ///< shown at the end of its help page
  int (*run)(const Arguments& arguments);
};

// Each in its own file of this folder.
extern const Command kCheck;
extern const Command kDiff;
extern const Command kFruText;
extern const Command kImport;
extern const Command kLog;
extern const Command kNew;
extern const Command kRehearse;
extern const Command kRestore;
extern const Command kSdrText;
extern const Command kServe;
extern const Command kShow;
extern const Command kSnapshot;
extern const Command kStick;

inline constexpr const Command* kCommands[] = {&kNew,   &kImport,  &kSnapshot, &kRestore, &kShow,
                                               &kDiff,  &kFruText, &kSdrText,  &kCheck,   &kRehearse,
                                               &kServe, &kStick,   &kLog};

/// The script that completes varnok's and varnok-board's command lines in a shell, "bash" or "zsh"; empty for
/// any other.
std::string CompletionScript(std::string_view shell);

}  // namespace varnok::companion
