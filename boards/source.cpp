#include "boards/source.h"

#include <algorithm>
#include <filesystem>
#include <numeric>

#include "boards/folder.h"
#include "boards/sdr_record.h"

namespace varnok::boards {
namespace {

constexpr std::size_t kFruHeader = 8;

bool BeginsWith(const Bytes& bytes, std::string_view text) {
  return bytes.size() >= text.size() && std::equal(text.begin(), text.end(), bytes.begin());
}

bool IsFruHeader(const Bytes& bytes) {
  return bytes.size() >= kFruHeader && (bytes[0] & 0x0F) == 1 &&
         static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.begin() + kFruHeader, 0)) == 0;
}

/// True when the bytes begin with a record of a known version and type.
bool IsRecord(const Bytes& bytes) {
  constexpr std::uint8_t kVersions[] = {0x51, 0x02, 0x01, 0x10, 0x20};
  return bytes.size() >= kSdrHeaderLength &&
         std::find(std::begin(kVersions), std::end(kVersions), bytes[2]) != std::end(kVersions) &&
         (SdrKeyLength(bytes[3]) != 0 || bytes[3] == 0x14) && bytes[4] != 0;
}

SourceKind KindOf(const Bytes& bytes) {
  if (BeginsWith(bytes, "_SM_") || BeginsWith(bytes, "_SM3_")) return SourceKind::SmbiosDump;
  if (!IsFruHeader(bytes) && IsRecord(bytes)) return SourceKind::SdrDump;
  return SourceKind::FruImage;
}

bool LoadFile(const std::string& file, std::optional<SourceKind> kind, Source& source, std::string& error) {
  Bytes bytes;
  if (!ReadFile(file, bytes, error)) return false;
  if (bytes.empty()) {
    error = file + ": the file is empty";
    return false;
  }
  source.kind = kind.value_or(KindOf(bytes));
  source.board.hasRepository = source.kind == SourceKind::SdrDump;
  switch (source.kind) {
    case SourceKind::SdrDump: {
      const auto rest = SplitRecords(bytes, source.board.records);
      source.rest.assign(rest.begin(), rest.end());
      break;
    }
    case SourceKind::SmbiosDump:
      source.board.smbios = std::move(bytes);
      break;
    default:
      source.board.devices.push_back({.address = {}, .bytes = std::move(bytes), .file = file});
      break;
  }
  return true;
}

/// Keeps one device of a folder.
bool ChooseDevice(const std::string& folder, const std::string& name, Source& source, std::string& error) {
  const std::optional<DeviceAddress> address = ParseDeviceName(name);
  if (!address) {
    error = source.name + ": \"" + name + "\" names no device; write 0, 2@C0 or AT24C02:03:A0";
    return false;
  }
  const Device* device = source.board.Find(*address);
  if (device == nullptr) {
    error = folder + ": there is no device " + NameOf(*address);
    for (std::size_t i = 0; i < source.board.devices.size(); ++i)
      error += (i == 0 ? "; there is " : ", ") + NameOf(source.board.devices[i].address);
    return false;
  }
  Board board;
  board.devices.push_back(*device);
  board.hasRepository = false;
  source.board = std::move(board);
  source.kind = SourceKind::Device;
  return true;
}

}  // namespace

std::optional<SourceKind> KindByWord(std::string_view word) {
  if (word == "fru") return SourceKind::FruImage;
  if (word == "sdr") return SourceKind::SdrDump;
  if (word == "smbios") return SourceKind::SmbiosDump;
  return std::nullopt;
}

bool LoadSource(const std::string& argument, std::optional<SourceKind> kind, Source& source,
                std::string& error) {
  source = {};
  source.name = argument;
  std::error_code ignored;
  if (std::filesystem::is_directory(argument, ignored)) return LoadFolder(argument, source.board, error);
  const std::size_t mark = argument.rfind('#');
  const std::string folder = argument.substr(0, mark);
  if (mark != std::string::npos && !std::filesystem::exists(argument, ignored) &&
      std::filesystem::is_directory(folder, ignored))
    return LoadFolder(folder, source.board, error) &&
           ChooseDevice(folder, argument.substr(mark + 1), source, error);
  return LoadFile(argument, kind, source, error);
}

}  // namespace varnok::boards
