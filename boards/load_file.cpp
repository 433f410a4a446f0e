#include "boards/load_file.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

#include "firmware/firmware.h"
#include "fru/fru.h"
#include "fru/fru_session.h"
#include "sdr/data_set.h"
#include "sdr/file_lines.h"
#include "sdr/read_file.h"
#include "sdr/record_lists.h"

namespace varnok::boards {
namespace {

class MemoryFile : public File {
 public:
  explicit MemoryFile(const std::string& text) : text_(text) {}

  Status Read(std::span<std::uint8_t> buffer, std::size_t& count) override {
    count = std::min(buffer.size(), text_.size() - position_);
    std::copy_n(text_.begin() + static_cast<std::ptrdiff_t>(position_), count, buffer.begin());
    position_ += count;
    return kSuccess;
  }
  Status Write(std::span<const std::uint8_t>) override { return uefi_status::kWriteProtected; }

 private:
  const std::string& text_;
  std::size_t position_ = 0;
};

/// A machine with one file and memory, installed for its lifetime: all that the file readers ask for.
class DeskMachine : public Firmware {
 public:
  explicit DeskMachine(const std::string& text) : text_(text), previous_(InstallFirmware(this)) {}
  ~DeskMachine() override { InstallFirmware(previous_); }
  DeskMachine(const DeskMachine&) = delete;
  DeskMachine& operator=(const DeskMachine&) = delete;

  void WriteConsole(std::u16string_view) override {}
  void WriteErrorOutput(std::u16string_view) override {}
  void FlushConsole() override {}
  char16_t ReadKey() override { return 0; }
  void Stall(std::uint64_t, StallKind) override {}
  WallClock Now() override { return {}; }
  Status OpenFile(std::u16string_view, FileMode mode, std::unique_ptr<File>& file) override {
    if (mode != FileMode::Read) return uefi_status::kWriteProtected;
    file = std::make_unique<MemoryFile>(text_);
    return kSuccess;
  }
  Status AppendToFile(std::u16string_view, std::span<const std::uint8_t>) override {
    return uefi_status::kWriteProtected;
  }
  bool GetEnvironmentVariable(std::string_view, std::u16string&) override { return false; }
  Status LocateHandles(const Guid&, std::size_t&, Handle*) override { return uefi_status::kNotFound; }
  Status OpenProtocol(Handle, const Guid&, void*&) override { return uefi_status::kNotFound; }
  Status StartDriver(std::u16string_view) override { return uefi_status::kNotFound; }
  const void* FindConfigurationTable(const Guid&) override { return nullptr; }
  std::span<const std::uint8_t> PhysicalMemory(std::uint64_t, std::size_t) override { return {}; }
  bool HasImageHandle() override { return false; }
  void* AllocatePool(std::size_t bytes) override { return std::malloc(bytes); }
  void FreePool(void* memory) override { std::free(memory); }

 private:
  const std::string& text_;
  Firmware* previous_;
};

std::string Narrow(const char16_t* text) {
  std::string narrow;
  for (; *text != 0; ++text)
    if (*text != u'\n') narrow += static_cast<char>(*text);
  return narrow;
}

void Append(Bytes& bytes, std::span<const std::uint8_t> more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

/// The areas one behind the other, as they are written.
Bytes ImageOf(CFru& fru) {
  Bytes image(fru.Header().GetData().begin(), fru.Header().GetData().end());
  if (fru.HasInternalArea()) Append(image, fru.InternalUse().GetData());
  for (FruAreaId area : {FruAreaId::ChassisInfoArea, FruAreaId::BoardInfoArea, FruAreaId::ProductInfoArea}) {
    if (!fru.HasArea(area)) continue;
    InfoArea& info = *fru.FindInfoArea(area);
    Append(image, info.GetData().first(std::min(info.GetLength(), kMaxAreaLength)));
  }
  if (fru.HasMultiRecArea())
    for (const MultiRecord& record : fru.MultiRecords()) {
      Append(image, record.header);
      Append(image, record.Data());
    }
  return image;
}

}  // namespace

std::optional<Bytes> ReadFruFile(const std::string& text, std::string& error) {
  DeskMachine machine(text);
  auto fru = std::make_unique<CFru>();
  if (fru->ReadFRUFromFile("the file") == kSuccess) return ImageOf(*fru);
  error = Narrow(TheFruSession().lastError.data());
  return std::nullopt;
}

bool ReadSdrFile(const std::string& text, std::vector<Bytes>& records, std::string& error) {
  DeskMachine machine(text);
  MemoryFile file(text);
  SdrFileLines lines(file, "the file");
  SdrTypeList lists;
  if (SdrReadFile::ReadSdrRecordsFromFile(lines, lists) != kSuccess) {
    error = Narrow(TheSdr().lastError.data());
    return false;
  }
  for (const auto& list : lists)
    for (const auto& record : list) records.emplace_back(record->Raw().begin(), record->Raw().end());
  return true;
}

bool IsRecordForFile(std::span<const std::uint8_t> record) {
  static const std::string kNoFile;
  DeskMachine machine(kNoFile);
  PoolPtr<CSdr> object;
  return record.size() >= SdrRecordHeader::kSize && record.size() <= 0xFF &&
         SdrUtility::CreateSDRTypeObject(record[3], object) == kSuccess &&
         object->DecodeSDR(record) == kSuccess;
}

std::size_t WritingOrder(std::uint8_t recordType) {
  return SdrUtility::PositionOfType(recordType);
}

}  // namespace varnok::boards
