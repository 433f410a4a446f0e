// The stick's menu on the console: a count-down, a choice by one key, and what is done then.
#pragma once

#include <string>
#include <vector>

#include "programs/start/ending.h"
#include "programs/start/menu_file.h"

namespace varnok::start {

/// What the menu asks of the machine beside its console and its files.
class Station {
 public:
  virtual ~Station() = default;
  /// A key was struck and waits to be read.
  virtual bool HasKey() = 0;
  /// The lines of the screen.
  virtual std::size_t Rows() = 0;
  /// The names of the files of the stick, and of its folders that a snapshot made.
  virtual std::vector<std::string> Files() = 0;
  virtual std::vector<std::string> Snapshots() = 0;
  /// Starts a program of the stick by its name and arguments, and waits for its end.
  virtual Ending Run(const std::string& command) = 0;
  /// START came from a shell, which goes on when it ends.
  virtual bool IsInShell() = 0;
  /// There is one that can be started.
  virtual bool HasShell() = 0;
  virtual Ending RunShell() = 0;
  virtual void Restart() = 0;
};

/// Reads START.CFG, tells what is wrong with it, and serves the menu until it is left. The usual menu comes
/// where there is no file, or no entry in it.
void ServeMenu(Station& station);

}  // namespace varnok::start
