// The Linux program as its users run it: a process, its files, its board folder.
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>

#include "tests/support/session.h"

namespace varnok::testing {
namespace {

TEST(Varnok, SessionsEndAsTheyAreWritten) {
  PlaySessions("programs/sessions.txt",
               "samples=" VARNOK_SAMPLES
               " v=program; program() { "
               "env -i XDG_STATE_HOME=\"$PWD\" ${VARNOK_BOARD:+VARNOK_BOARD=\"$VARNOK_BOARD\"} "
               "${VARNOK_TRAFFIC:+VARNOK_TRAFFIC=\"$VARNOK_TRAFFIC\"} " VARNOK_PROGRAM " \"$@\"; }");
}

TEST(Varnok, ConsoleThatDoesNotWaitLosesNothing) {
  const TemporaryFolder temporary;
  const std::string folder = temporary.Path(), home = "XDG_STATE_HOME=" + folder;
  ASSERT_EQ(std::system((home + " " VARNOK_PROGRAM " /d sdr 2>/dev/null >" + folder + "/output").c_str()), 0);
  const std::string output = ContentOf(folder + "/output");
  int console[2];
  ASSERT_EQ(pipe2(console, O_NONBLOCK | O_CLOEXEC), 0);
  ASSERT_EQ(fcntl(console[1], F_SETPIPE_SZ, 4096), 4096);
  if (fork() == 0) {
    dup2(console[1], STDOUT_FILENO);
    const char* const environment[] = {home.c_str(), nullptr};
    execle(VARNOK_PROGRAM, "varnok", "/d", "sdr", nullptr, environment);
    _exit(127);
  }
  close(console[1]);
  usleep(100'000);  // the console is full by now
  std::string shown;
  std::array<char, 512> part;
  pollfd ready{console[0], POLLIN, 0};
  while (poll(&ready, 1, 10'000) > 0) {
    const ssize_t count = read(console[0], part.data(), part.size());
    if (count <= 0) break;
    shown.append(part.data(), static_cast<std::size_t>(count));
  }
  wait(nullptr);
  EXPECT_TRUE(shown == output) << shown.size() << " of " << output.size();
}

}  // namespace
}  // namespace varnok::testing
