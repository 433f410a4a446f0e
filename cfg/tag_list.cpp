#include "cfg/tag_list.h"

#include <algorithm>

#include "app/services/text.h"

namespace varnok {
namespace {

std::string Key(std::string_view name) {
  std::string key(name);
  std::transform(key.begin(), key.end(), key.begin(), [](char character) { return ToUpper(character); });
  return key;
}

}  // namespace

void TagList::Add(std::string_view name) {
  if (!slots_.try_emplace(Key(name), entries_.size()).second) return;
  entries_.push_back({std::string(name), true});
}

void TagList::Remove(std::string_view name) {
  auto found = slots_.find(Key(name));
  if (found == slots_.end()) return;
  entries_[found->second].isSet = false;
  slots_.erase(found);
  if (entries_.size() > 2 * slots_.size() + 16) DropRemoved();
}

bool TagList::Contains(std::string_view name) const {
  return slots_.contains(Key(name));
}

int TagList::Find(std::string_view name) {
  DropRemoved();
  auto found = slots_.find(Key(name));
  return found == slots_.end() ? -1 : static_cast<int>(found->second);
}

const std::string& TagList::At(std::size_t index) {
  DropRemoved();
  return entries_[index].name;
}

void TagList::Clear() {
  entries_.clear();
  slots_.clear();
}

void TagList::DropRemoved() {
  if (entries_.size() == slots_.size()) return;
  std::erase_if(entries_, [](const Entry& entry) { return !entry.isSet; });
  for (std::size_t slot = 0; slot < entries_.size(); ++slot) slots_[Key(entries_[slot].name)] = slot;
}

}  // namespace varnok
