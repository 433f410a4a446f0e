#include "programs/board/output.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "firmware/host/hex.h"
#include "firmware/host/interruption.h"

namespace varnok::companion {
namespace {

constexpr std::string_view kName = "varnok-board: ";
constexpr std::string_view kClearLine = "\r\x1B[K";

void Write(std::FILE* stream, std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stream);
}

}  // namespace

std::string Shown(std::string_view text) {
  std::string shown;
  unsigned char previous = 0;
  for (char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    // C2 80 to C2 9F are control characters too, in UTF-8.
    const bool isControl = (byte < 0x20 && character != '\n' && character != '\t') || byte == 0x7F ||
                           (previous == 0xC2 && byte >= 0x80 && byte < 0xA0);
    if (isControl)
      shown += "\\x" + host::HexByte(byte);
    else
      shown += character;
    previous = byte;
  }
  return shown;
}

void PrintLine(std::string_view text) {
  Write(stdout, Shown(text).append("\n"));
}

int Fail(std::string_view error, int status) {
  std::fflush(stdout);
  Write(stderr, std::string(kName).append(Shown(error)).append("\n"));
  return status;
}

void Note(std::string_view text) {
  std::fflush(stdout);
  Write(stderr, Shown(text).append("\n"));
}

bool Ask(std::string_view question) {
  std::fflush(stdout);
  Write(stderr, Shown(question));
  std::string answer;
  const bool isAnswered = static_cast<bool>(std::getline(std::cin, answer));
  host::EndIfAsked();
  if (!isAnswered) Write(stderr, "\n");
  return isAnswered && (answer.starts_with('y') || answer.starts_with('Y'));
}

void Progress::Show(std::string_view what, std::size_t done, std::size_t total) {
  const auto now = Clock::now();
  if (now - started_ < std::chrono::seconds(1) || now - shown_ < std::chrono::milliseconds(100) ||
      isatty(STDERR_FILENO) == 0)
    return;
  shown_ = now;
  Write(stderr, std::string(kClearLine) + Shown(what) + " " + std::to_string(done) +
                    (total == 0 ? "" : " of " + std::to_string(total)));
}

void Progress::Clear() {
  if (shown_ == Clock::time_point{}) return;
  Write(stderr, kClearLine);
  shown_ = {};
}

}  // namespace varnok::companion
