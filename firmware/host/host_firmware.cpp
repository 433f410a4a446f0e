#include "firmware/host/host_firmware.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "firmware/host/file_system.h"
#include "firmware/host/keyboard.h"
#include "firmware/host/utf8.h"

namespace varnok::host {

namespace {

void WriteAll(int descriptor, const std::string& bytes) {
  // A console that is gone must not stop a board from being programmed to the end.
  for (std::size_t done = 0; done < bytes.size();) {
    ssize_t result = write(descriptor, bytes.data() + done, bytes.size() - done);
    if (result < 0 && (errno == EINTR || errno == EAGAIN)) {
      // Others who share the console may have made it one that does not wait.
      pollfd output{descriptor, POLLOUT, 0};
      poll(&output, 1, -1);
      continue;
    }
    if (result < 0) return;
    done += static_cast<std::size_t>(result);
  }
}

}  // namespace

void HostFirmware::WriteConsole(std::u16string_view text) {
  WriteAll(STDOUT_FILENO, ToUtf8(text));
}

void HostFirmware::WriteErrorOutput(std::u16string_view text) {
  WriteAll(STDERR_FILENO, ToUtf8(text));
}

char16_t HostFirmware::ReadKey() {
  std::optional<char16_t> key = host::ReadKey();
  if (!key) {
    std::fputs("\nvarnok: the console's input ended while the program waited for a key; stopped.\n", stderr);
    std::exit(kInputEndedStatus);
  }
  return *key;
}

Status HostFirmware::OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) {
  return host::OpenFile(path, mode, file);
}

Status HostFirmware::MakeFolder(std::u16string_view path) {
  return host::MakeFolder(path);
}

Status HostFirmware::ListFolder(std::u16string_view path, std::vector<std::u16string>& names) {
  return host::ListFolder(path, names);
}

bool HostFirmware::GetEnvironmentVariable(std::string_view name, std::u16string& value) {
  const char* found = std::getenv(Utf8FromLatin1(name).c_str());
  if (found == nullptr) return false;
  value = FromUtf8(found);
  return true;
}

Status HostFirmware::LocateHandles(const Guid& protocol, std::size_t& bytes, Handle* handles) {
  if (protocol != kIpmiProtocolGuid || machine_.InstalledIpmi() == nullptr) return uefi_status::kNotFound;
  std::size_t room = bytes;
  bytes = sizeof(Handle);
  if (room < bytes) return uefi_status::kBufferTooSmall;
  handles[0] = &machine_;
  return kSuccess;
}

Status HostFirmware::OpenProtocol(Handle handle, const Guid& protocol, void*& interface) {
  if (handle != &machine_ || protocol != kIpmiProtocolGuid) return uefi_status::kUnsupported;
  interface = machine_.InstalledIpmi();
  return kSuccess;
}

Status HostFirmware::StartDriver(std::u16string_view) {
  // Linux has its own drivers; an image for the firmware cannot run here.
  return uefi_status::kUnsupported;
}

const void* HostFirmware::FindConfigurationTable(const Guid& guid) {
  if (guid != kSmbiosTableGuid || machine_.SmbiosEntryPoint().empty()) return nullptr;
  return machine_.SmbiosEntryPoint().data();
}

std::span<const std::uint8_t> HostFirmware::PhysicalMemory(std::uint64_t address, std::size_t length) {
  return machine_.PhysicalMemory(address, length);
}

void* HostFirmware::AllocatePool(std::size_t bytes) {
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void HostFirmware::FreePool(void* memory) {
  std::free(memory);
}

}  // namespace varnok::host
