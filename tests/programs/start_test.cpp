// The stick's menu: START.CFG, what it shows, what the keys do, how it tells of a program's end.
#include <gmock/gmock.h>

#include "programs/start/menu.h"
#include "tests/support/test_firmware.h"

namespace varnok::start {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string Problems(const std::string& text) {
  Menu menu;
  std::string all;
  for (const Problem& problem : ReadMenu(text, menu)) all += problem.Text() + '\n';
  return all;
}

TEST(StartMenuFile, WrongLinesAreTold) {
  const std::string kGood = "ENTRY \"a\" X\n";
  const struct {
    const char* line;
    const char* problem;
  } kRows[] = {
      {"entry \"b\" exit // and a comment", ""},
      {"TITLE \"t\"", ""},
      {"RUN 1 AFTER 3600", ""},
      {"ENTRI \"b\" X", "START.CFG, line 2: \"ENTRI\" is none"},
      {"TITLE \"t\" u", "TITLE takes"},
      {"ENTRY \"\" X", "ENTRY takes"},
      {"ENTRY \"b\"", "ENTRY takes"},
      {"ENTRY \"b\" page", "PAGE takes the name of a file"},
      {"ENTRY \"b\" SHELL x", "SHELL takes nothing"},
      {"RUN 0 AFTER 1", "RUN takes"},
      {"RUN 1 AFTER 3601", "RUN takes"},
      {"RUN 1 AFTER 99999999999", "RUN takes"},
      {"RUN 1 AFTER 1 s", "RUN takes"},
      {"RUN 2 AFTER 1", "START.CFG: RUN names entry 2, there are 1"},
  };
  for (const auto& row : kRows) {
    const std::string problems = Problems(kGood + row.line + "\r\n");
    EXPECT_EQ(problems.empty(), *row.problem == 0) << row.line;
    EXPECT_THAT(problems, HasSubstr(row.problem)) << row.line;
  }
  EXPECT_THAT(Problems("TITLE \"t\"\n"), HasSubstr("START.CFG: there is no ENTRY"));
  std::string many;
  for (std::size_t i = 0; i <= kMostEntries; ++i) many += kGood;
  EXPECT_THAT(Problems(many), HasSubstr("line 36: there are more than 35 entries"));
}

TEST(StartMenuFile, UsualMenuRunsTheScriptsOfTheStick) {
  EXPECT_THAT(ScriptsAmong({"B.CFG", "Master.cfg", "start.cfg"}), ElementsAre("Master.cfg"));
  EXPECT_THAT(ScriptsAmong({"START.CFG", "x.cfg", "A B.CFG", "cfg", "x.txt"}),
              ElementsAre("A B.CFG", "x.cfg"));
  Menu menu;
  EXPECT_TRUE(ReadMenu(UsualMenu({"A B.CFG"}), menu).empty());
  EXPECT_EQ(menu.entries[0].text, "VARNOK /cfg \"A B.CFG\"");
}

class Machine : public Station {
 public:
  Machine(int look, bool shell) : keyAtLook(look), hasShell(shell) {}
  bool HasKey() override { return ++looks == keyAtLook; }
  std::size_t Rows() override { return 8; }
  std::vector<std::string> Files() override { return {}; }
  std::vector<std::string> Snapshots() override { return {"BOARD001", "B2"}; }
  Ending Run(const std::string& command) override {
    done += command + ';';
    return {true, 5};
  }
  bool IsInShell() override { return false; }
  bool HasShell() override { return hasShell; }
  Ending RunShell() override { return Run("shell"); }
  void Restart() override { done += "restart"; }

  /// What is shown and done when the keys are struck.
  std::string Serve(std::u16string keys, const std::string& file) {
    testing::TestFirmware firmware;
    firmware.keys = std::move(keys);
    if (!file.empty()) firmware.files[kMenuFile] = file;
    firmware.files["README.TXT"] = "1\n2\n3\n4\n5\n6\nlast";
    ServeMenu(*this);
    return firmware.console;
  }

  int looks = 0;
  int keyAtLook;
  bool hasShell;
  std::string done;
};

TEST(StartMenu, KeysDoWhatTheEntriesSay) {
  const std::string file =
      "TITLE \"Hearth\"\nENTRY \"Go\" VARNOK /cfg X\nENTRY \"Back\" RESTORE\nENTRY \"Page\" PAGE README.TXT\n"
      "ENTRY \"Sh\" SHELL\nENTRY \"Off\" RESTART\nENTRY \"Gone\" PAGE NONE.TXT\n";
  const std::string run = file + "RUN 1 AFTER 2";
  struct Row {
    std::u16string keys;
    std::string file, done;
    const char* shown;
    int keyAtLook = 0;
    bool hasShell = true;
  } const rows[] = {
      {u"1x5", file, "VARNOK /cfg X;restart",
       "VARNOK ended with 5: FRU, SDR or a file of them could not be read."},
      {u"205", file, "restart", "  1  BOARD001\n  2  B2\n  0  None"},
      {u"22x5", file, "SNAPSHOT /restore \"B2\";restart", "Which one?"},
      {u"3s5", file, "restart", "5\n\n[S]top"},
      {u"3mx5", file, "restart", "last\n\nPress a key"},
      {u"4x5", file, "shell;restart", "The shell ended with 5."},
      {u"6x5", file, "restart", "NONE.TXT is not on the stick."},
      {std::u16string(u"\u20AC\0z5", 4), file, "restart", "Hearth\n\n  1  Go\n"},
      {u"x5", run, "VARNOK /cfg X;restart", "\"Go\" starts in 1 s; any key stops this."},
      {u"15", run, "restart", "any key stops this.", 15},  // the key that stops is no choice
      {u"78", "", "restart", "  6  Read the technician's page\n  8  Restart the board\n", 0, false},
      {u"8", "FOO", "restart", "START.CFG: there is no ENTRY\n\nVARNOK\n\n  1  Show the FRU\n"},
  };
  for (const Row& row : rows) {
    Machine machine(row.keyAtLook, row.hasShell);
    EXPECT_THAT(machine.Serve(row.keys, row.file), HasSubstr(row.shown));
    EXPECT_EQ(machine.done, row.done);
  }
}

TEST(StartEnding, IsToldInWords) {
  const std::tuple<const char*, Ending, const char*> kRows[] = {
      {"\\tools\\varnok.efi /cfg a.b", {true, 0x20}, "varnok ended with 32 (20h): the script's error level."},
      {"VARNOK", {true, uefi_status::kOutOfResources}, "VARNOK ended with 8000000000000009: memory ran out."},
      {"OTHER a.b", {true, 9}, "OTHER ended with 9."},
      {"VARNOK",
       {false, uefi_status::kAccessDenied},
       "VARNOK was not started: the firmware refuses it: Secure Boot"},
      {"VARNOK",
       {false, uefi_status::kEndOfFile},
       "VARNOK was not started: the firmware says 800000000000001F."},
  };
  for (const auto& [command, ending, text] : kRows)
    EXPECT_THAT(EndingText(ProgramName(command), ending), HasSubstr(text));
}

}  // namespace
}  // namespace varnok::start
