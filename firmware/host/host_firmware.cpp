#include "firmware/host/host_firmware.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

#include "firmware/host/file_system.h"
#include "firmware/host/interruption.h"
#include "firmware/host/keyboard.h"
#include "firmware/host/utf8.h"

namespace varnok::host {

namespace {

/// Writes text as UTF-8, and takes no memory; 0, or the errno at which it gave up.
int WriteUtf8(int descriptor, std::u16string_view text) {
  std::array<char, 1024> room;
  while (!text.empty()) {
    std::string_view bytes = TakeUtf8(text, room);
    while (!bytes.empty()) {
      ssize_t result = write(descriptor, bytes.data(), bytes.size());
      if (result < 0 && (errno == EINTR || errno == EAGAIN)) {
        EndIfAsked();
        // Others who share the console may have made it one that does not wait.
        pollfd output{descriptor, POLLOUT, 0};
        poll(&output, 1, -1);
        continue;
      }
      if (result < 0) return errno;
      bytes.remove_prefix(static_cast<std::size_t>(result));
    }
  }
  return 0;
}

/// What is gathered for the console: a write of its own for each byte of a display is most of its cost.
class ConsoleOutput {
 public:
  ~ConsoleOutput() { Flush(); }

  void Add(std::u16string_view text) {
    while (!text.empty()) {
      if (count_ == text_.size()) Flush();
      const std::size_t part = std::min(text.size(), text_.size() - count_);
      std::copy_n(text.begin(), part, text_.begin() + count_);
      count_ += part;
      text.remove_prefix(part);
    }
    if (isTerminal_) Flush();
  }

  // A console that is gone must not stop a board from being programmed to the end.
  int Flush() {
    const int error = WriteUtf8(STDOUT_FILENO, {text_.data(), std::exchange(count_, 0)});
    const bool isUnread = error == EPIPE || error == EBADF;
    if (error != 0 && !isUnread) error_ = error;
    return error_;
  }

 private:
  const bool isTerminal_ = isatty(STDOUT_FILENO) != 0;
  std::array<char16_t, 1 << 14> text_;
  std::size_t count_ = 0;
  int error_ = 0;  ///< why text was lost, an errno; 0: none was
};

ConsoleOutput& TheConsole() {
  static ConsoleOutput console;
  return console;
}

[[noreturn]] void EndWithoutMemory() {
  static bool isEnding = false;
  constexpr std::string_view kMessage = "varnok: out of memory; stopped.\n";
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kMessage.data(), kMessage.size());
  // What runs at the end, such as putting the terminal back, may need memory as well.
  if (std::exchange(isEnding, true)) _exit(kOutOfMemoryStatus);
  std::exit(kOutOfMemoryStatus);
}

}  // namespace

void PrepareProcess() {
  signal(SIGPIPE, SIG_IGN);
  std::set_new_handler(EndWithoutMemory);
}

int FlushConsoleOutput() {
  return TheConsole().Flush();
}

void Complain(std::string_view text) {
  FlushConsoleOutput();
  std::u16string line = FromUtf8(text);
  for (char16_t& character : line)
    if (character < 0x20 || (character >= 0x7F && character <= 0x9F)) character = u'?';
  WriteUtf8(STDERR_FILENO, FromUtf8(program_invocation_short_name) + u": " + line + u"\n");
}

void HostFirmware::WriteConsole(std::u16string_view text) {
  TheConsole().Add(text);
}

void HostFirmware::WriteErrorOutput(std::u16string_view text) {
  FlushConsoleOutput();
  WriteUtf8(STDERR_FILENO, text);
}

char16_t HostFirmware::ReadKey() {
  std::optional<char16_t> key = host::ReadKey();
  if (!key) {
    WriteErrorOutput(u"\nvarnok: the console's input ended while the program waited for a key; stopped.\n");
    std::exit(kInputEndedStatus);
  }
  return *key;
}

Status HostFirmware::OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) {
  return host::OpenFile(path, mode, file);
}

Status HostFirmware::AppendToFile(std::u16string_view path, std::span<const std::uint8_t> bytes) {
  if (path != appendedPath_) {
    appendedFile_ = ResolvePath(path);
    appendedPath_ = path;
  }
  return host::AppendToFile(appendedFile_.c_str(), bytes);
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
