#include "boards/load_file.h"

#include <algorithm>
#include <array>
#include <memory>

#include "boards/desk_machine.h"
#include "fru/fru.h"
#include "fru/fru_session.h"
#include "sdr/data_set.h"
#include "sdr/file_lines.h"
#include "sdr/read_file.h"
#include "sdr/record_lists.h"

namespace varnok::boards {
namespace {

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
  error = MessageLine(TheFruSession().lastError.data());
  return std::nullopt;
}

bool ReadSdrFile(const std::string& text, std::vector<Bytes>& records, std::string& error) {
  DeskMachine machine(text);
  TextFile file(text);
  SdrFileLines lines(file, "the file");
  SdrTypeList lists;
  if (SdrReadFile::ReadSdrRecordsFromFile(lines, lists) != kSuccess) {
    error = MessageLine(TheSdr().lastError.data());
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
