#include "rehearsal/stage.h"

#include <algorithm>
#include <map>

#include "boards/folder.h"
#include "boards/fru_image.h"
#include "boards/sdr_record.h"
#include "sim/error.h"

namespace varnok::rehearsal {
namespace {

namespace fs = std::filesystem;

std::vector<Area> AreasOf(const Bytes& image) {
  std::vector<Area> areas;
  for (const boards::Section& section : boards::DecodeFru(image).sections)
    areas.push_back({section.id, section.offset, section.length});
  return areas;
}

std::vector<Area> AreasOf(const std::vector<Bytes>& records) {
  std::vector<Area> areas;
  std::size_t offset = 0;
  for (const Bytes& record : records) {
    const boards::SdrHead head = boards::HeadOf(record);
    areas.push_back({head.name.empty() ? head.typeName : head.name, offset, record.size()});
    offset += record.size();
  }
  return areas;
}

Bytes ContentOf(const sim::Image& image) {
  return {image.Content().begin(), image.Content().end()};
}

}  // namespace

std::unique_ptr<Stage> Stage::Open(const fs::path& folder, std::vector<std::string> arguments,
                                   std::string& error) {
  std::unique_ptr<Stage> stage(new Stage);
  stage->folder_ = folder;
  stage->arguments_ = std::move(arguments);
  stage->arguments_.insert(stage->arguments_.begin(), "varnok");
  stage->source_.name = folder.string();
  stage->board_ = sim::Board::Play(folder, error);
  if (stage->board_ == nullptr || !boards::LoadFolder(folder, stage->source_.board, error)) return nullptr;
  for (const auto& [name, image] : stage->board_->Images().Names()) stage->names_.push_back(name);
  stage->before_ = stage->ImagesNow();
  stage->script_ = ReadScript(stage->arguments_);
  return stage;
}

Images Stage::ImagesNow() {
  Images images;
  for (const auto& [name, image] : board_->Images().Names()) images.push_back(ContentOf(*image));
  return images;
}

std::uint64_t Stage::Changes() {
  std::uint64_t changes = 0;
  for (const auto& [name, image] : board_->Images().Names()) changes += image->Changes();
  return changes;
}

bool Stage::AreAlike(const Images& left, const Images& right) const {
  if (left == right) return true;
  for (std::size_t i = 0; i < names_.size(); ++i) {
    if (left[i] == right[i]) continue;
    if (names_[i] != fs::path(board_->Config().sdrs.file).lexically_normal().string()) return false;
    std::vector<Bytes> records, others;
    const auto rest = boards::SplitRecords(left[i], records);
    const auto otherRest = boards::SplitRecords(right[i], others);
    if (!std::equal(rest.begin(), rest.end(), otherRest.begin(), otherRest.end())) return false;
    constexpr std::ptrdiff_t kIdSize = 2;
    const auto areEqual = [](const Bytes& one, const Bytes& other) {
      return std::equal(one.begin() + kIdSize, one.end(), other.begin() + kIdSize, other.end());
    };
    if (!std::equal(records.begin(), records.end(), others.begin(), others.end(), areEqual)) return false;
  }
  return true;
}

void Stage::Put(const Images& images) {
  std::size_t next = 0;
  for (const auto& [name, image] : board_->Images().Names()) image->Replace(images[next++]);
  board_->TheBmc().Sdrs().Reload();
}

boards::Board Stage::BoardWith(const Images& images) const {
  const auto content = [&](const std::string& file) -> const Bytes* {
    const auto name = std::find(names_.begin(), names_.end(), fs::path(file).lexically_normal().string());
    return name == names_.end() ? nullptr : &images[static_cast<std::size_t>(name - names_.begin())];
  };
  boards::Board board = source_.board;
  for (boards::Device& device : board.devices)
    if (const Bytes* bytes = content(device.file)) device.bytes = *bytes;
  if (const Bytes* bytes = content(board_->Config().sdrs.file); bytes != nullptr && board.hasRepository) {
    board.records.clear();
    (void)boards::SplitRecords(*bytes, board.records);
  }
  return board;
}

BoardAfter Stage::Describe(const Images& after) const {
  BoardAfter result;
  if (after == before_) return result;
  boards::Source changed = source_;
  changed.board = BoardWith(after);
  result.differences = boards::Compare(source_, changed).differences;
  for (std::size_t i = 0; i < changed.board.devices.size(); ++i) {
    const Bytes& old = source_.board.devices[i].bytes;
    const boards::Device& device = changed.board.devices[i];
    if (device.bytes == old) continue;
    const bool isFru = device.address.kind == boards::DeviceKind::Fru;
    result.devices.push_back({.device = (isFru ? "FRU " : "") + NameOf(device.address),
                              .before = old,
                              .after = device.bytes,
                              .areasBefore = AreasOf(old),
                              .areasAfter = AreasOf(device.bytes)});
  }
  if (changed.board.records != source_.board.records)
    result.devices.push_back({.device = "SDR",
                              .before = boards::JoinRecords(source_.board.records),
                              .after = boards::JoinRecords(changed.board.records),
                              .areasBefore = AreasOf(source_.board.records),
                              .areasAfter = AreasOf(changed.board.records)});
  return result;
}

bool Stage::Save(const fs::path& folder, const Images& images, std::string& error) const {
  if (!boards::MakeFreeFolder(folder, error)) return false;
  try {
    const std::map<std::string, sim::Image*>& opened = board_->Images().Names();
    std::map<const sim::Image*, fs::path> written;
    std::size_t next = 0;
    for (const auto& [name, image] : opened) {
      const fs::path file = folder / name;
      fs::create_directories(file.parent_path());
      // Two names of one image stay so.
      const auto [first, isNew] = written.emplace(image, file);
      if (isNew)
        sim::ReplaceFile(file, images[next]);
      else
        fs::create_hard_link(first->second, file);
      ++next;
    }
    // Last, so that a folder with it is whole.
    sim::ReplaceFile(folder / sim::kBoardFile, sim::ReadWholeFile(folder_ / sim::kBoardFile));
    return true;
  } catch (const std::exception& failure) {
    error = failure.what();
    return false;
  }
}

}  // namespace varnok::rehearsal
