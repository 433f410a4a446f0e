// Keys from a terminal and from a pipe, in a process of their own.
#include "firmware/host/keyboard.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace varnok::host {
namespace {

using Keys = std::vector<int>;

/// Reads keys until 'q' or the end, which counts as -1, and reports their numbers.
[[noreturn]] void ReportKeys(int report) {
  for (;;) {
    std::optional<char16_t> key = ReadKey();
    int number = key ? *key : -1;
    if (write(report, &number, sizeof number) < 0 || !key || *key == u'q') EndAtOnce(0);
  }
}

Keys Collect(int report) {
  Keys keys;
  int number = 0;
  while (read(report, &number, sizeof number) == static_cast<ssize_t>(sizeof number)) keys.push_back(number);
  return keys;
}

bool HasEcho(int terminal) {
  termios mode;
  return tcgetattr(terminal, &mode) == 0 && (mode.c_lflag & ECHO) != 0;
}

TEST(Keyboard, PipeGivesItsCharactersAndThenEnds) {
  int input[2];
  int report[2];
  ASSERT_EQ(pipe(input) + pipe(report), 0);
  // Whoever shares the pipe does not wait at it.
  ASSERT_EQ(fcntl(input[0], F_SETFL, O_NONBLOCK), 0);
  pid_t child = fork();
  if (child == 0) {
    close(input[1]);
    dup2(input[0], STDIN_FILENO);
    ReportKeys(report[1]);
  }
  close(report[1]);
  pollfd end{report[0], POLLIN, 0};
  EXPECT_EQ(poll(&end, 1, 50), 0);
  std::string text = "y\x1B\x7F\n\u00E4\u20AC";
  ASSERT_EQ(write(input[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  close(input[1]);
  EXPECT_EQ(Collect(report[0]), (Keys{'y', 0x1B, 0x7F, '\n', 0xE4, 0x20AC, -1}));
  waitpid(child, nullptr, 0);
}

TEST(Keyboard, InputOfNothingButZerosEnds) {
  int report[2];
  ASSERT_EQ(pipe(report), 0);
  pid_t child = fork();
  if (child == 0) {
    dup2(open("/dev/zero", O_RDONLY), STDIN_FILENO);
    ReportKeys(report[1]);
  }
  close(report[1]);
  EXPECT_EQ(Collect(report[0]), Keys{-1});
  waitpid(child, nullptr, 0);
}

TEST(Keyboard, TerminalGivesSingleKeysWithoutEcho) {
  int report[2];
  ASSERT_EQ(pipe(report), 0);
  int terminal = -1;
  signal(SIGHUP, SIG_IGN);  // as nohup starts a program
  pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) ReportKeys(report[1]);
  signal(SIGHUP, SIG_DFL);
  close(report[1]);
  while (HasEcho(terminal)) usleep(1000);
  kill(child, SIGHUP);
  // Cursor up, F5, backspace as terminals send it, Enter, a key of a Russian keyboard.
  std::string keys = "a\x1B[A\x1B[15~\x7F\r\u0442q";
  ASSERT_EQ(write(terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  EXPECT_EQ(Collect(report[0]), (Keys{'a', 0, 0, 8, '\n', 0x442, 'q'}));
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(HasEcho(terminal));
  close(terminal);
}

TEST(Keyboard, TerminalIsPutBackWhenASignalEndsTheProgram) {
  for (int number : {SIGINT, SIGTERM, SIGHUP}) {
    int report[2];
    ASSERT_EQ(pipe(report), 0);
    int terminal = -1;
    pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) ReportKeys(report[1]);
    close(report[1]);
    while (HasEcho(terminal)) usleep(1000);
    kill(child, number);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == number);
    EXPECT_TRUE(HasEcho(terminal)) << "after signal " << number;
    close(terminal);
    close(report[0]);
  }
}

}  // namespace
}  // namespace varnok::host
