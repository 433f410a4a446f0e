// START.CFG: what the stick's menu offers, one line each. Text behind // is a comment, keywords are compared
// without regard to case.
//
//   TITLE "TEXT"              what stands above the menu
//   ENTRY "TEXT" WHAT         an entry; WHAT is one of
//     PROGRAM ARGUMENTS...      PROGRAM.EFI of the stick, with the arguments
//     RESTORE                   a snapshot of the stick, after asking which
//     PAGE FILE                 a text file, page by page
//     SHELL                     the shell that START came from, or one that can be started
//     RESTART                   the board
//     EXIT                      back to what started START
//   RUN NUMBER AFTER SECONDS  the entry that is started unless a key comes first
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace varnok::start {

inline constexpr const char* kMenuFile = "START.CFG";
/// The script that VARNOK runs when none is named.
inline constexpr std::string_view kMasterScript = "MASTER.CFG";

enum class Action { Program, Restore, Page, Shell, Restart, Exit };

struct Entry {
  std::string title;
  Action action = Action::Program;
  std::string text;  ///< a program's name and arguments, a page's file
};

struct Menu {
  std::string title = "VARNOK";
  std::vector<Entry> entries;
  std::size_t runs = 0;  ///< the entry that starts by itself, from 1; 0: none
  unsigned seconds = 0;  ///< and how long it waits for a key
};

struct Problem {
  std::size_t line;  ///< from 1; 0: the file as a whole
  std::string text;

  /// "START.CFG, line 3: what is wrong".
  std::string Text() const;
};

/// Keys are the digits from 1 on, then the letters.
inline constexpr std::size_t kMostEntries = 35;

/// Reads the text of a START.CFG. A line that is wrong is left out and told.
std::vector<Problem> ReadMenu(std::string text, Menu& menu);

/// The scripts among the names of a stick's files that a menu offers: MASTER.CFG when it is there, else all.
std::vector<std::string> ScriptsAmong(std::vector<std::string> names);

/// A START.CFG for a stick with these scripts: all that its programs do.
std::string UsualMenu(const std::vector<std::string>& scripts);

}  // namespace varnok::start
