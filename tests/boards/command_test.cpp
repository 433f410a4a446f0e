// varnok-board as its users type it: one session, line by line.
#include <sys/wait.h>

#include <cstdlib>

#include "tests/sim/board_fixture.h"

namespace varnok::testing {
namespace {

struct Line {
  std::string command;
  int status;
  std::string shown;  ///< on stdout
  std::string error;  ///< on stderr
};

class Session : public BoardTest {
 protected:
  void Type(const std::vector<Line>& lines) {
    const std::string head = "cd " + folder.string() + " && b=" VARNOK_BOARD_PROGRAM " && { ";
    for (const Line& line : lines) {
      const int ended = std::system((head + line.command + "; } </dev/null >output 2>error").c_str());
      EXPECT_EQ(WEXITSTATUS(ended), line.status) << line.command << "\n" << TextOf("error");
      EXPECT_NE(TextOf("output").find(line.shown), std::string::npos) << line.command << "\n"
                                                                      << TextOf("output");
      EXPECT_TRUE(!line.shown.empty() || TextOf("output").empty()) << line.command;
      const std::string error = line.error.empty() ? "" : "varnok-board: " + line.error;
      EXPECT_EQ(TextOf("error").substr(0, error.size() + error.empty()), error) << line.command;
    }
  }
};

TEST_F(Session, TakesABoardHomeAndPutsItBack) {
  Type({
      {"$b new a", 0, "Made the board a;", ""},
      {"$b new a", 3, "", "a: holds a board already; name a new folder\n"},
      {"VARNOK_BOARD=a $b snapshot s", 0, "Device DS1624S:05:90      256 bytes\n", ""},
      {"$b snapshot s --from a", 3, "", "s: holds a board already"},
      {"$b snapshot t --from a --device 7@B4 --json", 1, R"("what": "controller B4h",
      "completionCode": 131,
      "text": "completion code 83h")",
       ""},
      {"$b restore s --to a", 0, "0: equal\n", ""},
      {"printf WRONG | dd of=a/board.bin bs=1 seek=100 conv=notrunc 2>/dev/null; : >a/sdr.bin; $b restore s --to a 2>/dev/null",
       1, "SDR repository: its 0 records are erased, 60 are written\nNothing was written.\n", ""},
      {"echo yes | $b restore s --to a --fru 0 2>/dev/null", 0,
       "0: 5 of 1024 bytes differ, from offset 100 on\n0: restored\n", ""},
      {"$b restore s --to a --sdr --yes --json", 0, R"("what": "SDR repository",
      "state": "restored",
      "completionCode": null)",
       ""},
      {"$b restore s --to a && cmp a/board.bin s/fru-0.bin && cmp a/sdr.bin s/sdr.bin", 0,
       "SDR repository: equal\n", ""},
      {"sed -i 's/0x4311/0x4312/' a/board.json; $b restore s --to a --yes", 3, "",
       "a is another product than"},
      {"$b restore s --to a --other-board", 0, "0: equal\n", ""},
      {"$b restore s --to /dev/nowhere", 3, "", "/dev/nowhere: No such file or directory"},
  });
}

TEST_F(Session, RefusesWhatIsWrongByItsName) {
  Type({
      {"$b", 2, "", "a command is required\n"},
      {"$b bord", 2, "", "there is no command \"bord\"\n"},
      {"$b new", 2, "", "FOLDER is required\nSee varnok-board new --help.\n"},
      {"$b new a --empty --emty", 2, "", "The following argument was not expected: --emty\n"},
      {"$b import i", 2, "", "name at least one file to import\n"},
      {"touch f; $b new f/a", 3, "", "f/a: cannot be made: Not a directory\n"},
      {"mkfifo p; $b check p", 1, "p: error: is a folder, a device or a pipe, not a file\n", ""},
      {"echo \"_LF_NAME 'a'\" >f.fru; $b check f.fru", 1, "    Write _LF_VERSION, which no line has", ""},
      {"$b check 'no #1' --format sarif", 1, "\"uri\": \"no%20%231\"", ""},
      {"$b new a >/dev/full", 3, "", "the output cannot be written\n"},
      {"cp a/sdr.bin long.bin; printf x >>long.bin; $b import i --sdr long.bin", 3, "",
       "long.bin: the record at byte 2537 goes past the end of the file\n"},
      {"cat a/sdr.bin a/sdr.bin >twice.bin; $b import i --sdr twice.bin", 3, "",
       "twice.bin: two records have the ID 1\n"},
      {"$b import i --fru 0=none.bin", 3, "", "none.bin: cannot be read: No such file or directory\n"},
      {"$b import i --fru none.bin", 2, "",
       "--fru: \"none.bin\" is not like 0=board.bin or 2@C0=backplane.bin\n"},
      {"$b import i --fru 0=a/board.bin --fru 0=a/spare.bin", 2, "", "--fru: 0 is named twice\n"},
      {"$b import i --eeprom DS1624S:05:90=a/board.bin", 3, "",
       "a/board.bin: has 1024 bytes; such a device has 1 to 256\n"},
      {"$b import i --smbios a/sdr.bin", 3, "", "a/sdr.bin: does not begin with an SMBIOS entry point"},
      {"echo 'Device ID : x' >id; $b import i --identity id", 3, "",
       "id: line 1: \"Device ID : x\" is not what"},
      {"$b import i --fru 3@2C=a/spare.bin --sdr a/sdr.bin --smbios a/smbios.bin", 0,
       "Made the board i: 1 device, 60 SDRs.", ""},
      {"$b snapshot j --from i --device 3@2C | grep 3@2C", 0, "Device 3@2C               256 bytes\n", ""},
      {"$b restore i --to a --json", 2, "", "--json needs --yes\n"},
      {"$b restore i --to a --fru 5", 2, "", "--fru: the folder has no device 5\n"},
      {"$b snapshot k --device x", 2, "", "--device: \"x\" is no device like 2@C0 or AT24C02:03:A0\n"},
      {"printf '{\"x\\\\u001b\": 1}' >a/board.json; $b snapshot k --from a", 3, "", "a/board.json: x\\x1B"},
  });
}

}  // namespace
}  // namespace varnok::testing
