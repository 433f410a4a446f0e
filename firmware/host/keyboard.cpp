#include "firmware/host/keyboard.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "firmware/host/host_firmware.h"
#include "firmware/host/interruption.h"
#include "firmware/host/utf8.h"

namespace varnok::host {
namespace {

termios usualMode;
termios keyMode;
bool isRaw = false;

void LeaveRawMode() {
  if (isRaw) tcsetattr(STDIN_FILENO, TCSANOW, &usualMode);
}

void HandleStop(int) {
  LeaveRawMode();
  // The default action must run while this handler is away.
  signal(SIGTSTP, SIG_DFL);
  raise(SIGTSTP);
}

/// A signal that the program was started to ignore, as under nohup, stays ignored; one that is handled
/// already stays with its handler.
void Catch(int number, void (*handler)(int)) {
  struct sigaction now;
  if (sigaction(number, nullptr, &now) == 0 && now.sa_handler == SIG_DFL) signal(number, handler);
}

void HandleContinue(int) {
  Catch(SIGTSTP, HandleStop);
  if (isRaw) tcsetattr(STDIN_FILENO, TCSANOW, &keyMode);
}

void EnterRawMode() {
  if (isRaw || isatty(STDIN_FILENO) == 0 || tcgetattr(STDIN_FILENO, &usualMode) != 0) return;
  keyMode = usualMode;
  keyMode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  keyMode.c_cc[VMIN] = 1;
  keyMode.c_cc[VTIME] = 0;
  isRaw = true;
  std::atexit(LeaveRawMode);
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGABRT, SIGSEGV}) Catch(number, EndBySignal);
  Catch(SIGTSTP, HandleStop);
  signal(SIGCONT, HandleContinue);
  tcsetattr(STDIN_FILENO, TCSANOW, &keyMode);
}

std::optional<char> ReadByte() {
  char byte = 0;
  ssize_t count = 0;
  WaitForInput(STDIN_FILENO);
  while ((count = read(STDIN_FILENO, &byte, 1)) < 0 && (errno == EINTR || errno == EAGAIN)) {
    // Others who share the console may have made it one that does not wait.
    WaitForInput(STDIN_FILENO);
  }
  if (count <= 0) return std::nullopt;
  return byte;
}

/// Bytes of an escape sequence arrive together; a lone Escape is followed by nothing.
bool IsMoreWaiting() {
  constexpr int kMilliseconds = 20;
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, kMilliseconds) > 0 && (input.revents & POLLIN) != 0;
}

/// Swallows what a cursor or function key sends behind its Escape (ECMA-48, section 5.4).
void SkipEscapeSequence() {
  if (!IsMoreWaiting()) return;
  std::optional<char> byte = ReadByte();
  if (!byte || (*byte != '[' && *byte != 'O')) return;
  do byte = ReadByte();
  while (byte && (*byte < 0x40 || *byte > 0x7E));
}

std::size_t TailLength(unsigned char lead) {
  return lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
}

}  // namespace

void EndBySignal(int number) {
  FlushConsoleOutput();
  LeaveRawMode();
  signal(number, SIG_DFL);
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, number);
  raise(number);
  sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
  _exit(128 + number);
}

void EndAtOnce(int status) {
  FlushConsoleOutput();
  LeaveRawMode();
  _exit(status);
}

std::optional<char16_t> ReadKey() {
  FlushConsoleOutput();
  EnterRawMode();
  std::optional<char> byte = ReadByte();
  // No key sends a zero; input that gives nothing else, as /dev/zero, has ended.
  constexpr int kMostZeros = 1000;
  for (int zeros = 1; byte == '\0' && zeros < kMostZeros; ++zeros) byte = ReadByte();
  if (!byte || *byte == '\0') return std::nullopt;
  constexpr char kEscape = 0x1B;
  constexpr char kDelete = 0x7F;
  if (isRaw && *byte == kEscape) {
    SkipEscapeSequence();
    return u'\0';
  }
  // What terminals send for the backspace key.
  if (isRaw && *byte == kDelete) return u'\b';
  std::string character(1, *byte);
  for (std::size_t tail = TailLength(static_cast<unsigned char>(*byte)); tail > 0; --tail) {
    std::optional<char> next = ReadByte();
    if (!next) break;
    character.push_back(*next);
  }
  return FromUtf8(character).front();
}

}  // namespace varnok::host
