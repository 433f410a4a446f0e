#include "cfg/tag_list.h"

#include <algorithm>
#include <bit>

#include "app/services/text.h"

namespace varnok {
namespace {

constexpr std::size_t kSmallestTable = 16;

/// FNV-1a of the upper-cased name, its high bits folded in.
std::size_t Hash(std::string_view name) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (char character : name) hash = (hash ^ static_cast<std::uint8_t>(ToUpper(character))) * 0x100000001B3;
  return hash ^ hash >> 32;
}

}  // namespace

std::size_t TagList::PlaceOf(std::string_view name) const {
  if (slots_.empty()) return kNone;
  for (std::size_t slot = Hash(name);; ++slot) {
    std::size_t place = slots_[slot & (slots_.size() - 1)];
    if (place == 0) return kNone;
    const Entry& entry = entries_[place - 1];
    if (entry.isSet && EqualsIgnoreCase(entry.name, name)) return place - 1;
  }
}

void TagList::Enter(std::size_t place) {
  std::size_t slot = Hash(entries_[place].name);
  while (slots_[slot & (slots_.size() - 1)] != 0) ++slot;
  slots_[slot & (slots_.size() - 1)] = static_cast<std::uint32_t>(place + 1);
}

void TagList::MakeSlots() {
  slots_.assign(std::max(kSmallestTable, std::bit_ceil(4 * entries_.size())), 0);
  for (std::size_t place = 0; place < entries_.size(); ++place) Enter(place);
}

void TagList::Add(std::string_view name) {
  if (Contains(name)) return;
  entries_.push_back({std::string(name), true});
  ++count_;
  if (2 * entries_.size() > slots_.size()) return MakeSlots();
  Enter(entries_.size() - 1);
}

void TagList::Remove(std::string_view name) {
  std::size_t place = PlaceOf(name);
  if (place == kNone) return;
  entries_[place].isSet = false;
  --count_;
  if (entries_.size() > 2 * count_ + kSmallestTable) DropRemoved();
}

int TagList::Find(std::string_view name) {
  DropRemoved();
  std::size_t place = PlaceOf(name);
  return place == kNone ? -1 : static_cast<int>(place);
}

const std::string& TagList::At(std::size_t index) {
  DropRemoved();
  return entries_[index].name;
}

void TagList::Clear() {
  *this = TagList();
}

void TagList::DropRemoved() {
  if (entries_.size() == count_) return;
  std::erase_if(entries_, [](const Entry& entry) { return !entry.isSet; });
  MakeSlots();
}

}  // namespace varnok
