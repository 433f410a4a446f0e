// What the commands show. Text of devices and files passes through here: a control byte never reaches a
// terminal raw, it shows as \x1B.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace varnok::companion {

/// `text` with each control character but tab and new line written as \xNN.
std::string Shown(std::string_view text);

/// A result, on stdout, and a new line.
void PrintLine(std::string_view text = {});
/// An error, on stderr, with the program's name in front. Returns `status`.
int Fail(std::string_view error, int status = 3);
/// A remark on stderr.
void Note(std::string_view text);

/// A question on stderr, answered on stdin by a line that begins with y or Y; anything else, and an end of
/// input, is no.
bool Ask(std::string_view question);

/// One line on a terminal, renewed while something takes longer than a second; nothing in a pipe.
class Progress {
 public:
  ~Progress() { Clear(); }
  void Show(std::string_view what, std::size_t done, std::size_t total);
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point started_ = Clock::now();
  Clock::time_point shown_{};
};

}  // namespace varnok::companion
