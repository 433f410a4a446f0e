// The script's tags: named flags in the order in which they were set, found without regard to case.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace varnok {

/// A look-up costs the logarithm of the number of tags; going through them by index costs nothing more each.
class TagList {
 public:
  /// A tag that is already there keeps its place and its spelling.
  void Add(std::string_view name);
  void Remove(std::string_view name);
  bool Contains(std::string_view name) const;
  std::size_t Count() const { return slots_.size(); }
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

  void DropRemoved();

  std::vector<Entry> entries_;                ///< removed tags stay as holes until their number counts
  std::map<std::string, std::size_t> slots_;  ///< upper-cased name -> place in entries_
};

}  // namespace varnok
