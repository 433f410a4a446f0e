#include "tests/support/test_firmware.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "app/services/text.h"
#include "tests/support/heap_count.h"

namespace varnok::testing {
namespace {

class MemoryFile : public File {
 public:
  MemoryFile(std::string& bytes, FileMode mode, Status statusAtEnd)
      : bytes_(bytes), statusAtEnd_(statusAtEnd) {
    if (mode == FileMode::Write) bytes_.clear();
  }

  Status Read(std::span<std::uint8_t> buffer, std::size_t& count) override {
    count = std::min(buffer.size(), bytes_.size() - position_);
    std::memcpy(buffer.data(), bytes_.data() + position_, count);
    position_ += count;
    return count == 0 ? statusAtEnd_ : kSuccess;
  }

  Status Write(std::span<const std::uint8_t> bytes) override {
    Uncounted own;
    bytes_.append(bytes.begin(), bytes.end());
    return kSuccess;
  }

 private:
  std::string& bytes_;
  Status statusAtEnd_;
  std::size_t position_ = 0;
};

}  // namespace

TestFirmware::TestFirmware() : previous_(InstallFirmware(this)) {}

TestFirmware::~TestFirmware() {
  ForgetProgramState();
  InstallFirmware(previous_);
}

std::string TestFirmware::TextOf(const std::string& name) const {
  auto found = files.find(name);
  if (found == files.end()) return {};
  std::string text;
  for (std::size_t i = 0; i < found->second.size(); i += 2) text.push_back(found->second[i]);
  return text;
}

std::vector<std::string> TestFirmware::TraceLines() const {
  std::vector<std::string> lines;
  std::string text = TextOf("DBGLOG.txt");
  for (std::size_t start = 0; start < text.size();) {
    std::size_t end = std::min(text.find("\r\n", start), text.size());
    lines.push_back(text.substr(start, end - start));
    start = end + 2;
  }
  return lines;
}

void TestFirmware::WriteConsole(std::u16string_view text) {
  Uncounted own;
  console += Narrow(text);
}

void TestFirmware::WriteErrorOutput(std::u16string_view text) {
  Uncounted own;
  errors += Narrow(text);
}

char16_t TestFirmware::ReadKey() {
  if (keys.empty()) {
    std::fprintf(stderr, "the program waits for a key that the test does not give; console:\n%s\n",
                 console.c_str());
    std::abort();
  }
  char16_t key = keys.front();
  keys.erase(0, 1);
  return key;
}

void TestFirmware::Stall(std::uint64_t microseconds, StallKind kind) {
  Uncounted own;
  (kind == StallKind::Pacing ? pacedMicroseconds : waitedMicroseconds) += microseconds;
  if (!isClockStill) clockMicroseconds += microseconds;
  stalls.push_back(microseconds);
}

WallClock TestFirmware::Now() {
  std::uint64_t seconds = clockMicroseconds / 1'000'000;
  return {2026,
          11,
          static_cast<std::uint8_t>(22 + seconds / 86400),
          static_cast<std::uint8_t>(seconds / 3600 % 24),
          static_cast<std::uint8_t>(seconds / 60 % 60),
          static_cast<std::uint8_t>(seconds % 60)};
}

Status TestFirmware::OpenFile(std::u16string_view path, FileMode mode, std::unique_ptr<File>& file) {
  std::string name = Narrow(path);
  file = nullptr;
  if (auto failure = fileFailures.find(name); failure != fileFailures.end()) return failure->second;
  if (mode == FileMode::Read && !files.contains(name)) return uefi_status::kNotFound;
  auto failure = readFailures.find(name);
  Status statusAtEnd = failure == readFailures.end() ? kSuccess : failure->second;
  file = std::make_unique<MemoryFile>(files[name], mode, statusAtEnd);
  return kSuccess;
}

Status TestFirmware::AppendToFile(std::u16string_view path, std::span<const std::uint8_t> bytes) {
  Uncounted own;
  std::unique_ptr<File> file;
  Status status = OpenFile(path, FileMode::Append, file);
  return status == kSuccess ? file->Write(bytes) : status;
}

bool TestFirmware::GetEnvironmentVariable(std::string_view name, std::u16string& value) {
  auto found = environment.find(std::string(name));
  if (found == environment.end()) return false;
  value = found->second;
  return true;
}

Status TestFirmware::LocateHandles(const Guid& guid, std::size_t& bytes, Handle* handles) {
  if (guid != kIpmiProtocolGuid || protocol == nullptr) return uefi_status::kNotFound;
  std::size_t room = bytes;
  bytes = sizeof(Handle);
  if (room < sizeof(Handle)) return uefi_status::kBufferTooSmall;
  handles[0] = this;
  return kSuccess;
}

Status TestFirmware::OpenProtocol(Handle handle, const Guid& guid, void*& interface) {
  if (handle != this || guid != kIpmiProtocolGuid) return uefi_status::kUnsupported;
  interface = protocol;
  return kSuccess;
}

Status TestFirmware::StartDriver(std::u16string_view path) {
  startedDrivers.emplace_back(path);
  if (!driver) return uefi_status::kNotFound;
  protocol = *driver;
  return kSuccess;
}

const void* TestFirmware::FindConfigurationTable(const Guid&) {
  return smbiosEntryPoint;
}

std::span<const std::uint8_t> TestFirmware::PhysicalMemory(std::uint64_t address, std::size_t length) {
  auto found = memory.upper_bound(address);
  if (found == memory.begin()) return {};
  --found;
  std::uint64_t offset = address - found->first;
  if (offset >= found->second.size()) return {};
  return std::span(found->second)
      .subspan(offset, std::min<std::size_t>(length, found->second.size() - offset));
}

void* TestFirmware::AllocatePool(std::size_t bytes) {
  if (failingAllocation_ > 0 && --failingAllocation_ == 0) return nullptr;
  ++poolBlocks;
  return std::malloc(bytes == 0 ? 1 : bytes);
}

void TestFirmware::FreePool(void* block) {
  if (block != nullptr) --poolBlocks;
  std::free(block);
}

}  // namespace varnok::testing
