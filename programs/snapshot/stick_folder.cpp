#include "programs/snapshot/stick_folder.h"

#include <algorithm>
#include <array>
#include <memory>

#include "app/services/format.h"
#include "app/services/text.h"
#include "firmware/firmware.h"

namespace varnok::snapshot {
namespace {

// More than any device or repository has.
constexpr std::size_t kLargestFile = 1024 * 1024;
constexpr std::string_view kSdrFile = "sdr.bin";
constexpr unsigned kLastNumber = 999;

std::string StatusText(Status status) {
  if (status == uefi_status::kVolumeFull) return "the stick is full";
  if (status == uefi_status::kWriteProtected) return "the stick is write-protected";
  if (status == uefi_status::kNotFound) return "not found";
  return Format("status %llX", status.value);
}

}  // namespace

Status StickFolder::Write(std::string_view name, std::span<const std::uint8_t> bytes) {
  std::unique_ptr<File> file;
  Status status = TheFirmware().OpenFile(path_ + u'\\' + Widen(name), FileMode::Write, file);
  return status == kSuccess && !bytes.empty() ? file->Write(bytes) : status;
}

bool StickFolder::ReadFile(std::u16string_view name, boards::Bytes& bytes, std::string& error) const {
  std::u16string path = path_ + u'\\';
  path += name;
  std::unique_ptr<File> file;
  Status status = TheFirmware().OpenFile(path, FileMode::Read, file);
  std::array<std::uint8_t, 4096> part;
  for (std::size_t count = 1; status == kSuccess && count != 0 && bytes.size() <= kLargestFile;) {
    status = file->Read(part, count);
    if (status == kSuccess) bytes.insert(bytes.end(), part.begin(), part.begin() + count);
  }
  if (status != kSuccess) error = Format("%ls: %s", path, StatusText(status));
  if (bytes.size() > kLargestFile) error = Format("%ls: is larger than 1 MiB", path);
  return error.empty();
}

bool StickFolder::Read(boards::Board& board, std::string& error) const {
  std::vector<std::u16string> names;
  if (Status status = TheFirmware().ListFolder(path_, names); status != kSuccess) {
    error = Format("%ls: %s", path_, StatusText(status));
    return false;
  }
  std::sort(names.begin(), names.end());
  board.hasRepository = false;
  for (const std::u16string& name : names) {
    boards::Device device;
    const std::string narrow = Narrow(name);
    if (const auto address = boards::ParseFileName(narrow)) {
      device.address = *address;
      if (!ReadFile(name, device.bytes, error)) return false;
      board.devices.push_back(std::move(device));
    } else if (EqualsIgnoreCase(narrow, kSdrFile)) {
      board.hasRepository = true;
      if (!ReadFile(name, device.bytes, error)) return false;
      if (!boards::SplitRecords(device.bytes, board.records).empty()) {
        error = Format("%ls: ends in the middle of a record", name);
        return false;
      }
    }
  }
  if (board.devices.empty() && !board.hasRepository)
    error = Format("%ls: holds no file that SNAPSHOT has written (fru-0.bin, sdr.bin ...)", path_);
  return error.empty();
}

bool MakeStickFolder(std::string_view name, std::u16string& path, std::string& error) {
  Status status = uefi_status::kAlreadyStarted;
  if (!name.empty()) {
    path = Widen(name);
    status = TheFirmware().MakeFolder(path);
  }
  for (unsigned number = 1; name.empty() && number <= kLastNumber && status == uefi_status::kAlreadyStarted;
       ++number) {
    path = FormatWide("BOARD%03u", number);
    status = TheFirmware().MakeFolder(path);
  }
  if (status == kSuccess) return true;
  error = status == uefi_status::kAlreadyStarted ? "is there already; name a new folder" : StatusText(status);
  error = Format("%ls: %s", path, error);
  return false;
}

}  // namespace varnok::snapshot
