#include "programs/start/menu.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>

#include "app/services/console.h"
#include "app/services/prepared_text.h"
#include "app/services/text.h"
#include "app/services/text_file.h"
#include "firmware/firmware.h"

namespace varnok::start {
namespace {

constexpr std::string_view kKeys = "123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
static_assert(kKeys.size() == kMostEntries);

Menu LoadMenu(Station& station) {
  Menu menu;
  std::unique_ptr<File> file;
  Status status = OpenTextFile(kMenuFile, file);
  const bool isThere = status != uefi_status::kNotFound;
  std::string text;
  if (status == kSuccess) status = ReadTextFile(*file, kMenuFile, text);
  if (isThere && status != kSuccess) Print("%s cannot be read (status %llX).\n", kMenuFile, status);
  if (isThere && status == kSuccess)
    for (const Problem& problem : ReadMenu(std::move(text), menu)) Print("%s\n", problem.Text());
  if (menu.entries.empty()) (void)ReadMenu(UsualMenu(ScriptsAmong(station.Files())), menu);
  return menu;
}

void WaitForKey() {
  Print("\nPress a key for the menu.");
  (void)GetKey(0);
  Print("\n");
}

/// One of the titles by its key, from 0; nothing for key 0 where `leaves` tells what that does.
std::optional<std::size_t> Choose(std::string_view title, const std::vector<std::string_view>& titles,
                                  const char* leaves) {
  Print("\n%s\n\n", title);
  for (std::size_t i = 0; i < titles.size(); ++i)
    if (!titles[i].empty()) Print("  %c  %s\n", kKeys[i], titles[i]);
  if (leaves != nullptr) Print("  0  %s\n", leaves);
  Print("\nPress the key of your choice: ");
  for (;;) {
    const char16_t key = ToUpper(GetKey(0));
    const std::size_t index = key < 0x80 ? kKeys.find(static_cast<char>(key)) : kKeys.npos;
    const bool isChoice = index < titles.size() && !titles[index].empty();
    if (!isChoice && (key != u'0' || leaves == nullptr)) continue;
    Print("%lc\n\n", key);
    return isChoice ? std::optional(index) : std::nullopt;
  }
}

void Tell(std::string_view program, const Ending& ending) {
  Print("\n%s\n", EndingText(program, ending));
  WaitForKey();
}

void RestoreBoard(Station& station) {
  std::vector<std::string> names = station.Snapshots();
  if (names.empty()) {
    Print("There is no snapshot on the stick.\n");
    return WaitForKey();
  }
  if (names.size() > kMostEntries) names.resize(kMostEntries);
  if (const auto chosen = Choose("Which one?", {names.begin(), names.end()}, "None, back to the menu"))
    Tell("SNAPSHOT", station.Run("SNAPSHOT /restore \"" + names[*chosen] + '"'));
}

void ShowPage(Station& station, const std::string& name) {
  PreparedText page;
  if (page.Load(name) != kSuccess) {
    Print("%s is not on the stick.\n", name);
    return WaitForKey();
  }
  // The prompt and a blank line above it stand below the page.
  const std::size_t rows = std::max<std::size_t>(station.Rows(), 8) - 3;
  SetPaging(true);
  for (std::size_t i = 0; i < page.LineCount(); ++i) {
    if (i != 0 && i % rows == 0 && IsPagingOn() && !PromptMore()) return Print("\n");
    Print("%s\n", page.Line(i));
  }
  WaitForKey();
}

/// True when the menu is left.
bool Do(Station& station, const Entry& entry) {
  switch (entry.action) {
    case Action::Program:
      Tell(ProgramName(entry.text), station.Run(entry.text));
      return false;
    case Action::Restore:
      RestoreBoard(station);
      return false;
    case Action::Page:
      ShowPage(station, entry.text);
      return false;
    case Action::Shell:
      if (station.IsInShell()) return true;
      if (const Ending ending = station.RunShell(); !ending.isStarted || ending.status != kSuccess)
        Tell("The shell", ending);
      return false;
    case Action::Restart:
      station.Restart();
      return true;
    case Action::Exit:
      return true;
  }
  return false;
}

/// True when no key came.
bool CountDown(Station& station, const Entry& entry, unsigned seconds) {
  constexpr unsigned kLooksPerSecond = 10;
  Print("\n");
  for (unsigned left = seconds; left > 0; --left) {
    Print("\"%s\" starts in %u s; any key stops this. \r", entry.title, left);
    for (unsigned look = 0; look < kLooksPerSecond; ++look) {
      if (station.HasKey()) {
        (void)GetKey(0);
        Print("\n");
        return false;
      }
      TheFirmware().Stall(1'000'000 / kLooksPerSecond, StallKind::Waiting);
    }
  }
  Print("\n");
  return true;
}

}  // namespace

void ServeMenu(Station& station) {
  const Menu menu = LoadMenu(station);
  const bool hasShell = station.IsInShell() || station.HasShell();
  // An entry that is not offered keeps its key.
  std::vector<std::string_view> titles;
  for (const Entry& entry : menu.entries)
    titles.push_back(entry.action != Action::Shell || hasShell ? std::string_view(entry.title) : "");
  bool isLeft = menu.runs != 0 && CountDown(station, menu.entries[menu.runs - 1], menu.seconds) &&
                Do(station, menu.entries[menu.runs - 1]);
  while (!isLeft) isLeft = Do(station, menu.entries[*Choose(menu.title, titles, nullptr)]);
}

}  // namespace varnok::start
