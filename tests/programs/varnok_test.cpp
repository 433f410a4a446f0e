// The Linux program as its users run it: a process, its files, its board folder.
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <numeric>

#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

const std::string kProgramSample = "/fru " VARNOK_SAMPLES "/server-board.fru";
const std::string kImage = "varnok/board/board.bin";

class Varnok : public BoardTest {
 protected:
  /// Runs the program in the folder, which is the place of its state as well; the exit status.
  int Run(const std::string& arguments, const std::string& environment = "XDG_STATE_HOME=$PWD",
          const std::string& console = ">output") {
    const std::string command = "cd " + folder.string() + " && { env -i " + environment +
                                " " VARNOK_PROGRAM " " + arguments +
                                " </dev/null 2>error; echo $? >status; } " + console;
    EXPECT_EQ(std::system(command.c_str()), 0);
    output = TextOf("output");
    error = TextOf("error");
    return std::stoi(TextOf("status"));
  }

  std::string output;
  std::string error;
};

TEST_F(Varnok, DefaultBoardIsMadeOnceAndNamedAtEveryStart) {
  const std::string named = "simulated board " + (folder / "varnok/board").string() +
                            "; set VARNOK_BOARD for another, /dev/ipmi0 for this computer's BMC\n";
  EXPECT_EQ(Run("/d fru"), 0);
  EXPECT_EQ(error, "varnok: created the default " + named);
  const std::string first = output;
  EXPECT_EQ(Run("/d fru"), 0);
  EXPECT_EQ(error, "varnok: " + named);
  EXPECT_EQ(output, first);
  EXPECT_EQ(Run("/d fru", "VARNOK_BOARD=varnok/board"), 0);
  EXPECT_EQ(error, "");
}

TEST_F(Varnok, BoardThatIsNoneIsSaid) {
  EXPECT_EQ(Run("/d fru", "VARNOK_BOARD=/nowhere/board"), 9);
  EXPECT_EQ(output, "");
  EXPECT_NE(error.find("/nowhere/board"), std::string::npos) << error;
  const TemporaryFolder shared("/dev/shm");
  EXPECT_EQ(Run("/d fru", "VARNOK_BOARD=" + shared.Path().string()), 9);
  EXPECT_NE(error.find("board.json"), std::string::npos) << "a folder, wherever it lies: " << error;
}

TEST_F(Varnok, SampleIsProgrammedVerifiedAndShown) {
  EXPECT_EQ(Run(kProgramSample), 0) << output;
  EXPECT_NE(output.find("\nFRU File Area(s) successfully loaded into FRU memory.\n"), std::string::npos);
  EXPECT_TRUE(output.ends_with("\nA system reset is required for the update to take effect.\n\n"));
  const Bytes image = ReadFile(kImage);
  EXPECT_EQ(std::accumulate(image.begin(), image.begin() + 8, 0) % 256, 0);
  EXPECT_EQ(Run("/d fru"), 0);
  EXPECT_EQ(Run(kProgramSample), 0);
  EXPECT_EQ(ReadFile(kImage), image) << "programming twice changes nothing";
}

TEST_F(Varnok, ConsoleThatIsGoneDoesNotStopTheProgramming) {
  EXPECT_EQ(Run(kProgramSample, "XDG_STATE_HOME=$PWD", "| true"), 0);
  const Bytes image = ReadFile(kImage);
  EXPECT_EQ(Run(kProgramSample), 0);
  EXPECT_EQ(ReadFile(kImage), image) << "the first run wrote everything";
}

TEST_F(Varnok, ConsoleThatDoesNotWaitLosesNothing) {
  EXPECT_EQ(Run("/d sdr"), 0);
  int console[2];
  ASSERT_EQ(pipe2(console, O_NONBLOCK | O_CLOEXEC), 0);
  ASSERT_EQ(fcntl(console[1], F_SETPIPE_SZ, 4096), 4096);
  if (fork() == 0) {
    dup2(console[1], STDOUT_FILENO);
    const std::string home = "XDG_STATE_HOME=" + folder.string();
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

TEST_F(Varnok, ErrorLevelIsTheExitStatusAndNeverASuccess) {
  for (auto [level, status] : {std::pair("2A", 0x2A), std::pair("FF", 0xFF), std::pair("100", 0xFF)}) {
    WriteFile("T.CFG", std::string("ERRORLEVEL ") + level + "\n");
    EXPECT_EQ(Run("/cfg T.CFG"), status) << level;
  }
}

TEST_F(Varnok, TrafficLogIsItsOwnFile) {
  EXPECT_EQ(Run("/d smb", "XDG_STATE_HOME=$PWD VARNOK_TRAFFIC=$PWD/log", ">&- <&-"), 0);
  const std::string log = TextOf("log");
  EXPECT_TRUE(log.starts_with("000000.") && log.find("SMBIOS") == std::string::npos) << log;
  EXPECT_EQ(Run("/d smb", "VARNOK_BOARD=varnok/board VARNOK_TRAFFIC=/dev/full"), 0);
  EXPECT_EQ(error,
            "varnok: /dev/full: cannot be written: No space left on device; the traffic log ends here\n");
}

TEST_F(Varnok, FilesThatAreNoneAndOutputThatIsLostAreSaid) {
  struct Row {
    const char* setup;
    const char* arguments;
    int status;
    const char* said;  ///< on the console or the error output
    const char* console = ">output";
  };
  const Row rows[] = {
      {"mkdir a.cfg", "/cfg a.cfg", 2, "a.cfg is a folder, or may not be read"},
      {"mkfifo b.fru", "/fru b.fru", 5, "b.fru is a device or a pipe, not a file"},
      {"truncate -s 4G c.sdr", "/sdr c.sdr", 5, "c.sdr is larger than 64 MiB"},
      {"ln -s /dev/zero d.cfg", "/cfg d.cfg", 2, "d.cfg is a device or a pipe, not a file"},
      {R"((printf 'DISPLAY "'; head -c 10M /dev/zero | tr '\0' x) >e.cfg)", "/cfg e.cfg", 6,
       "Too many characters on the line: 10485769."},
      {R"(printf '_FRU (\0_FRU_TITLE' >f.fru)", "/fru f.fru", 5, "ERROR:"},
      {R"(printf '\377\376D\0' >g.cfg)", "/cfg g.cfg", 6, "UTF-16 text: save the file as ANSI or ASCII"},
      {"true", "/d sdr", 2, "the output is not complete: No space left on device", ">/dev/full"},
      {"true", "/d sdr", 0, "", ">&-"},
  };
  for (const Row& row : rows) {
    ASSERT_EQ(std::system(("cd " + folder.string() + " && " + row.setup).c_str()), 0) << row.setup;
    EXPECT_EQ(Run(row.arguments, "XDG_STATE_HOME=$PWD", row.console), row.status) << row.setup;
    EXPECT_NE((output + error).find(row.said), std::string::npos) << row.setup << output << error;
  }
}

TEST_F(Varnok, TraceLogIsLeftInTheCurrentFolder) {
  EXPECT_EQ(Run("'/?' -debug3"), 1) << "the trace switch is no option of the command line";
  EXPECT_EQ(TextOf("DBGLOG.txt").substr(0, 4), std::string("V\0A\0", 4));
}

}  // namespace
}  // namespace varnok::testing
