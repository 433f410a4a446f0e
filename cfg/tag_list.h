// The script's tags: named flags in the order in which they were set, found without regard to case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace varnok {

/// A look-up costs the same with any number of tags; so does going through them by index.
class TagList {
 public:
  /// A tag that is already there keeps its place and its spelling.
  void Add(std::string_view name);
  void Remove(std::string_view name);
  bool Contains(std::string_view name) const { return PlaceOf(name) != kNone; }
  std::size_t Count() const { return count_; }
  /// The place of a tag in the order of setting; -1 when it is not set.
  int Find(std::string_view name);
  /// `index` must be below Count().
  const std::string& At(std::size_t index);
  void Clear();

 private:
  struct Entry {
    std::string name;
    bool isSet;
  };

  static constexpr std::size_t kNone = SIZE_MAX;

  std::size_t PlaceOf(std::string_view name) const;
  void Enter(std::size_t place);
  void MakeSlots();
  void DropRemoved();

  std::vector<Entry> entries_;  ///< removed tags stay as holes until their number counts
  std::size_t count_ = 0;       ///< entries that are no holes
  /// A hash table of places in entries_, plus 1; 0 is a free slot. At most half of the slots are taken.
  std::vector<std::uint32_t> slots_;
};

}  // namespace varnok
