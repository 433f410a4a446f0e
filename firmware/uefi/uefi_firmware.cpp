#include "firmware/uefi/uefi_firmware.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "firmware/bytes.h"
#include "firmware/uefi/driver_image.h"
#include "firmware/uefi/files.h"
#include "firmware/uefi/pool_blocks.h"
#include "firmware/uefi/runtime.h"

namespace varnok::uefi {
namespace {

// Where the table of a 3.x entry point is said to be, for it may lie above what a 2.x one can tell. The
// firmware's flash is here, never memory.
constexpr std::uint32_t kSmbiosWindow = 0xFFFF0000;

}  // namespace

UefiFirmware::UefiFirmware() : previous_(InstallFirmware(this)) {
  shell_.Connect();
  // A boot manager starts images under a watchdog of five minutes, which would reset the board in mid-update.
  BootServices().SetWatchdogTimer(0, 0, 0, nullptr);
}

UefiFirmware::~UefiFirmware() {
  InstallFirmware(previous_);
}

void UefiFirmware::Stall(std::uint64_t microseconds, StallKind) {
  stalled_ += microseconds;
  BootServices().Stall(microseconds);
}

WallClock UefiFirmware::Now() {
  EFI_TIME time{};
  if (IsError(SystemTable().RuntimeServices->GetTime(&time, nullptr))) {
    // Waits are measured by the clock: where it is broken, what was stalled goes on counting.
    std::uint64_t seconds = stalled_ / 1'000'000;
    WallClock clock;
    clock.hour = static_cast<std::uint8_t>(seconds / 3600 % 24);
    clock.minute = static_cast<std::uint8_t>(seconds / 60 % 60);
    clock.second = static_cast<std::uint8_t>(seconds % 60);
    return clock;
  }
  return {time.Year, time.Month, time.Day, time.Hour, time.Minute, time.Second};
}

Status UefiFirmware::OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) {
  return OpenShellFile(shell_, path, mode, file);
}

Status UefiFirmware::AppendToFile(std::u16string_view path, std::span<const std::uint8_t> bytes) {
  if (path != appendedPath_) {
    Place place;
    if (!FindPlace(shell_, path, place)) return uefi_status::kNotFound;
    appendedFile_ = std::move(place);
    appendedPath_ = path;
  }
  return AppendAt(appendedFile_, bytes);
}

Status UefiFirmware::MakeFolder(std::u16string_view path) {
  return MakeShellFolder(shell_, path);
}

Status UefiFirmware::ListFolder(std::u16string_view path, std::vector<std::u16string>& names) {
  return ListShellFolder(shell_, path, names);
}

bool UefiFirmware::GetEnvironmentVariable(std::string_view name, std::u16string& value) {
  std::u16string wideName;
  for (char character : name) wideName += static_cast<unsigned char>(character);
  // Without a name the shell answers with the list of all names.
  return !wideName.empty() && shell_.GetVariable(wideName, value);
}

Status UefiFirmware::LocateHandles(const Guid& protocol, std::size_t& bytes, Handle* handles) {
  UINTN size = bytes;
  Status status = BootServices().LocateHandle(ByProtocol, ToEfi(protocol), nullptr, &size, handles);
  bytes = size;
  return status;
}

Status UefiFirmware::OpenProtocol(Handle handle, const Guid& protocol, void*& interface) {
  return BootServices().HandleProtocol(handle, ToEfi(protocol), &interface);
}

Status UefiFirmware::StartDriver(std::u16string_view path) {
  return StartDriverImage(shell_, path);
}

const void* UefiFirmware::FindConfigurationTable(const Guid& guid) {
  const EFI_SYSTEM_TABLE& table = SystemTable();
  for (UINTN i = 0; i < table.NumberOfTableEntries; ++i)
    if (std::memcmp(&table.ConfigurationTable[i].VendorGuid, &guid, sizeof(guid)) == 0)
      return table.ConfigurationTable[i].VendorTable;
  return guid == kSmbiosTableGuid ? OlderSmbiosEntryPoint() : nullptr;
}

const void* UefiFirmware::OlderSmbiosEntryPoint() {
  const auto* newer = static_cast<const std::uint8_t*>(FindConfigurationTable(kSmbios3TableGuid));
  if (newer == nullptr) return nullptr;
  const std::span<const std::uint8_t> entryPoint(newer, smbios::kEntryPoint3Length);
  smbiosTable_ = memoryMap_.Readable(NumberAt(entryPoint, 16, 8), DwordAt(entryPoint, 12));
  smbios::TableFacts facts = smbios::OlderFacts(entryPoint, smbiosTable_);
  if (facts.structures == 0) return nullptr;
  facts.address = kSmbiosWindow;
  smbios::WriteEntryPoint(facts, smbiosEntryPoint_);
  return smbiosEntryPoint_.data();
}

std::span<const std::uint8_t> UefiFirmware::PhysicalMemory(std::uint64_t address, std::size_t length) {
  if (address == kSmbiosWindow) return smbiosTable_.first(std::min(length, smbiosTable_.size()));
  return memoryMap_.Readable(address, length);
}

bool UefiFirmware::HasImageHandle() {
  return ImageHandle() != nullptr;
}

void* UefiFirmware::AllocatePool(std::size_t bytes) {
  return AllocatePoolBlock(bytes);
}
void UefiFirmware::FreePool(void* memory) {
  FreePoolBlock(memory);
}

}  // namespace varnok::uefi
