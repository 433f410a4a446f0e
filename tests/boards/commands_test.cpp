// show, diff, fru-text and sdr-text as their users run them: results, statuses, errors, JSON.
#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "sim/board.h"
#include "tests/support/host_files.h"

namespace varnok::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class Commands : public ::testing::Test {
 protected:
  Commands() {
    std::string failure;
    EXPECT_TRUE(sim::Board::CreateDefault(folder.Path() / "a", failure)) << failure;
    std::filesystem::copy(folder.Path() / "a", folder.Path() / "b");
    Change("b/board.bin", [](std::string& image) { image[600] = 0x1B; });
  }

  template <class Work>
  void Change(const std::string& name, Work work) {
    std::string content = ContentOf(folder.Path() / name);
    work(content);
    std::ofstream(folder.Path() / name, std::ios::binary) << content;
  }

  void Put(const char* in, const char* name, const char* content) {
    std::filesystem::create_directory(folder.Path() / in);
    std::ofstream(folder.Path() / in / name) << content;
  }

  int Run(const std::string& arguments) {
    const std::string command = "cd " + folder.Path().string() + " && " VARNOK_BOARD_PROGRAM " " + arguments +
                                " >output 2>error; echo $? >status";
    EXPECT_EQ(std::system(command.c_str()), 0);
    output = ContentOf(folder.Path() / "output");
    error = ContentOf(folder.Path() / "error");
    return std::stoi(ContentOf(folder.Path() / "status"));
  }

  TemporaryFolder folder;
  std::string output;
  std::string error;
};

TEST_F(Commands, StatusesAndWhatTheySay) {
  std::ofstream(folder.Path() / "log") << "000000.000001 > 20 0A/0 12 00 08 01 FF\n"
                                          "000000.000041 < 20 0B/0 12 cc=C0 # faults[0] x\n"
                                          "000000.000050 > 20 30/0 14 0F\n"
                                          "000000.000060 < 20 31/0 14 lost\n"
                                          "000000.000070 ! power\n000000.0000";
  struct Row {
    const char* arguments;
    int status;
    const char* output;
    const char* error;
  };
  const Row kRows[] = {
      {"show a", 0, "    Product Serial Number      VWS225060417\n", ""},
      {"show 'a#2@C0'", 3, "", "a: there is no device 2@C0; there is 0, 1, 2"},
      {"show 'a#x'", 3, "", "\"x\" names no device"},
      {"show nowhere", 3, "", "nowhere"},
      {"show a --as x", 2, "", "\"x\" is not fru, sdr or smbios"},
      {"show a/board.bin --hex", 0, "  -- Chassis Info Area\n", ""},
      {"show a/sdr.bin", 0, "Inlet Temp", ""},
      {"show a/sdr.bin --as fru", 1, "  ! byte 7: Common Header: checksum", ""},
      {"diff a a", 0, "", ""},
      {"diff a b", 1, "FRU 0\n  No area\n    Byte 600: FF \u2192 1B\n", ""},
      {"diff 'a#0' b/board.bin", 1, "Byte 600", ""},
      {"diff a a/sdr.bin", 2, "", "are parts of it), a/sdr.bin is an SDR dump"},
      {"log log", 1, "2 requests, 1 answers, 1 lost, 0 refused, 1 events in 0.000070 s\n", ""},
      {"log log", 1, "         1              0.000040     0.000040  Write FRU Data\n", ""},
      {"log log", 1, "  1 times C0h Write FRU Data\n\nFaults and events:\n  1 times faults[0] x\n", ""},
      {"log log --names", 1, "FF  Write FRU Data: device 0, offset 264, 1 bytes\n", ""},
      {"log log --names", 1, "lost                 net function 30h, command 14h\n", ""},
      {"log log --json", 1, "\"longestMicroseconds\": 40", ""},
      {"log a/board.json", 3, "", "a/board.json:1: is no line of a traffic log"},
      {"fru-text a", 2, "", "name one device of the folder, such as a#0"},
      {"fru-text 'a#0'", 0, "    'VWS225060417'\n", "behind the last area"},
      {"fru-text 'b#0'", 1, "//   - 641 bytes behind the last area", "not in the load file: 641 bytes"},
      {"fru-text a/spare.bin", 3, "", "no load file can be made of it"},
      {"sdr-text a", 0, "   'Inlet Temp'\n", ""},
      {"sdr-text a --output /nowhere/x", 3, "", "/nowhere/x: cannot be written: No such file or directory"},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(Run(row.arguments), row.status) << row.arguments;
    EXPECT_THAT(output, *row.output == 0 ? IsEmpty() : ::testing::Matcher<std::string>(HasSubstr(row.output)))
        << row.arguments;
    EXPECT_THAT(error, HasSubstr(row.error)) << row.arguments;
  }
}

TEST_F(Commands, StickRefusesWhatABoardWouldMeet) {
  for (const char* name : {"VARNOK.EFI", "SNAPSHOT.EFI", "START.EFI", "ipmi.efi"}) Put("efi", name, "");
  Put("menu", "start.cfg", "ENTRY \"x\" FOO\nENTRY \"y\" PAGE a.txt\nFOO\n");
  for (const char* package : {"menu", "twice"}) Put(package, "A.TXT", "");
  Put("twice", "a.txt", "");
  Put("own", "varnok.efi", "");
  Put("script", "s.Cfg", "FRUNAME none.fru\n");
  const std::tuple<const char*, int, const char*> kRows[] = {
      {"menu s.txt", 2, "s.txt: a stick is an .img or a .zip"},
      {"menu s.zip", 1,
       "menu/start.cfg, line 3: error: \"FOO\" is none of the keywords TITLE, ENTRY and RUN\n"
       "    docs/uefi.md has the lines of START.CFG.\n"
       "menu/start.cfg: error: \"x\" wants FOO.EFI, which is not on the stick\n"
       "    Put it into the package, or name another one.\n2 files, 2 errors"},
      {"script s.zip", 1, "there is no file script/none.fru"},
      {"own s.zip", 3, "own/varnok.efi: has the name of the stick's own program"},
      {"twice s.zip", 3, "has the name of "},
      {"none s.zip", 3, "none: is no folder"},
  };
  for (const auto& [arguments, status, text] : kRows) {
    EXPECT_EQ(Run(std::string("stick --efi efi --package ") + arguments), status) << arguments;
    EXPECT_THAT(output + error, HasSubstr(text)) << arguments;
  }
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "s.zip"));
}

TEST_F(Commands, JsonHasWhatThePageSays) {
  EXPECT_EQ(Run("show a --json"), 0);
  const auto shown = nlohmann::json::parse(output);
  EXPECT_EQ(shown["version"], 1);
  EXPECT_EQ(shown["devices"][0]["areas"][3]["id"], "board");
  EXPECT_EQ(shown["devices"][0]["areas"][3]["checksum"], "good");
  for (const auto& field : shown["records"][0]["fields"])
    if (field["name"] == "Upper Critical Threshold") {
      EXPECT_EQ(field["number"], 45);
      EXPECT_EQ(field["unit"], "degrees C");
    }
  EXPECT_EQ(Run("diff a b --json"), 1);
  EXPECT_EQ(nlohmann::json::parse(output)["differences"][0]["after"], "1B");
}

TEST_F(Commands, TextOfADeviceCannotReachTheTerminalRaw) {
  Change("b/board.bin", [](std::string& image) { image.replace(image.find("Varnok Works"), 3, "\x1B[2"); });
  EXPECT_EQ(Run("show b"), 1);
  EXPECT_THAT(output, HasSubstr("\\x1B[2nok Works"));
  EXPECT_THAT(output, Not(HasSubstr("\x1B")));
  (void)Run("fru-text 'b#0'");
  EXPECT_THAT(output, Not(HasSubstr("\x1B")));
}

}  // namespace
}  // namespace varnok::testing
