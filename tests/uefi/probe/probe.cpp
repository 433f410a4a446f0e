#include "tests/uefi/probe/probe.h"

#include <utility>
#include <vector>

#include "app/services/text.h"
#include "firmware/entry.h"
#include "firmware/uefi/runtime.h"
#include "platform/smbios.h"

namespace varnok {
namespace probe {
namespace {

int ProbeArguments(int count, char* words[]) {
  Answer(u"count", count);
  for (int i = 0; i < count; ++i) Print("<%hs>\n", words[i]);
  Answer(u"end", words[count] == nullptr ? u"null" : u"missing");
  return 0;
}

int ProbeText(int, char*[]) {
  // As the display of a long run writes: bare and doubled line ends, rewritten lines, tabs, characters past
  // ASCII.
  Print("one\ntwo\r\nthree\r");
  Print("\nfour\n\nfive\tsix\n%ls\n", u"\u00E9");
  for (int i = 0; i < 3; ++i) Print("progress %d%%\r", i);
  Print("\n%ls\n", std::u16string(100, u'x'));
  return 0;
}

int ProbeKeys(int, char* words[]) {
  int count = words[0][0] - '0';
  Print("keys?\n");
  for (int i = 0; i < count; ++i) Answer(u"key", static_cast<std::uint32_t>(GetKey(0)));
  return 0;
}

int ProbePrompt(int, char*[]) {
  SetPaging(true);
  for (int i = 0; i < 3; ++i) Answer(u"go on", PromptMore() ? 1 : 0);
  Answer(u"paging", IsPagingOn() ? 1 : 0);
  return 0;
}

int ProbeVariable(int, char* words[]) {
  std::u16string value;
  if (TheFirmware().GetEnvironmentVariable(words[0], value))
    Answer(u"value", value);
  else
    Print("no variable\n");
  return 0;
}

std::uint32_t SecondOfDay(const WallClock& clock) {
  return (clock.hour * 60u + clock.minute) * 60u + clock.second;
}

void ShowTwoSeconds(std::u16string_view name) {
  WallClock before = TheFirmware().Now();
  TheFirmware().Stall(2'000'000, StallKind::Waiting);
  WallClock after = TheFirmware().Now();
  Answer(name, (SecondOfDay(after) + 86400 - SecondOfDay(before)) % 86400);
}

EFI_STATUS EFIAPI BrokenGetTime(EFI_TIME*, EFI_TIME_CAPABILITIES*) {
  return EFI_DEVICE_ERROR;
}

int ProbeClock(int, char*[]) {
  Answer(u"year", std::uint32_t{TheFirmware().Now().year});
  ShowTwoSeconds(u"seconds");
  EFI_RUNTIME_SERVICES& services = *uefi::SystemTable().RuntimeServices;
  auto getTime = std::exchange(services.GetTime, BrokenGetTime);
  ShowTwoSeconds(u"seconds without a clock");
  services.GetTime = getTime;
  return 0;
}

int ProbeTables(int, char*[]) {
  const void* entry = TheFirmware().FindConfigurationTable(kSmbiosTableGuid);
  Answer(u"SMBIOS", entry != nullptr ? u"found" : u"missing");
  Answer(u"unknown", TheFirmware().FindConfigurationTable(Guid{}) == nullptr ? u"missing" : u"found");
  auto address = reinterpret_cast<std::uint64_t>(entry);
  Answer(u"readable", TheFirmware().PhysicalMemory(address, 31).size());
  Answer(u"past the top", TheFirmware().PhysicalMemory(std::uint64_t{1} << 50, 16).size());
  Answer(u"image handle", TheFirmware().HasImageHandle() ? 1 : 0);
  return 0;
}

/// Leaves the newer SMBIOS table alone, as firmware of today does.
int ProbeForget(int, char*[]) {
  AnswerStatus(u"forget",
               uefi::BootServices().InstallConfigurationTable(uefi::ToEfi(kSmbiosTableGuid), nullptr));
  return 0;
}

int ProbeAlignment(int, char*[]) {
  std::uintptr_t bits = 0;
  std::vector<void*> blocks;
  for (std::size_t size = 0; size < 200; size += 7) {
    blocks.push_back(TheFirmware().AllocatePool(size));
    blocks.push_back(::operator new(size));
    bits |= reinterpret_cast<std::uintptr_t>(blocks[blocks.size() - 2]) |
            reinterpret_cast<std::uintptr_t>(blocks.back());
  }
  Answer(u"odd bits", bits % 16);
  Answer(u"too much", TheFirmware().AllocatePool(SIZE_MAX) == nullptr ? u"refused" : u"given");
  // Some blocks stay, as an end in mid-work would leave them.
  for (std::size_t i = 0; i < blocks.size(); i += 3) TheFirmware().FreePool(blocks[i]);
  return 0;
}

/// Takes much memory and an open file, and returns neither.
int ProbeLeak(int, char*[]) {
  constexpr std::size_t kMuch = 32 << 20;
  Answer(u"memory", TheFirmware().AllocatePool(kMuch) != nullptr ? u"given" : u"refused");
  static std::unique_ptr<File> file;
  AnswerStatus(u"open", TheFirmware().OpenFile(u"leak.txt", FileMode::Append, file));
  if (file) AnswerStatus(u"write", file->Write(std::vector<std::uint8_t>{'L'}));
  (void)file.release();
  return 0;
}

int ProbeExhaustion(int, char*[]) {
  std::unique_ptr<File> file;
  AnswerStatus(u"open", TheFirmware().OpenFile(u"exhausted.txt", FileMode::Write, file));
  if (file) AnswerStatus(u"write", file->Write(std::vector<std::uint8_t>{'E'}));
  void* volatile block = nullptr;  // else the compiler leaves the allocations out
  do {
    block = ::operator new(1 << 20);
  } while (block != nullptr);
  return 1;
}

using Probe = int (*)(int count, char* words[]);
struct ProbeRow {
  std::string_view name;
  Probe run;
};
constexpr ProbeRow kProbes[] = {
    {"args", ProbeArguments},      {"text", ProbeText},         {"keys", ProbeKeys},
    {"prompt", ProbePrompt},       {"variable", ProbeVariable}, {"clock", ProbeClock},
    {"tables", ProbeTables},       {"forget", ProbeForget},     {"files", ProbeFiles},
    {"alignment", ProbeAlignment}, {"leak", ProbeLeak},         {"exhaustion", ProbeExhaustion},
    {"ipmi", ProbeIpmi},
};

}  // namespace
}  // namespace probe

int Main(int argc, char* argv[]) {
  for (const probe::ProbeRow& row : probe::kProbes)
    if (argc > 1 && row.name == argv[1]) return row.run(argc - 2, argv + 2);
  Print("no such probe\n");
  return 99;
}

}  // namespace varnok
