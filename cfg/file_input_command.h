// The record of one input file of a script: the second base of every command that names a file to load.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "app/services/text.h"

namespace varnok {

class CCfgFileInputCommand {
 public:
  /// Room for the resolved path, the terminating NUL included.
  static constexpr std::size_t kPathCapacity = 256;

  std::u16string_view GetWideName() const { return wideName_; }
  std::string_view GetName() const { return name_; }

 protected:
  ~CCfgFileInputCommand() = default;

  void SetName(std::string name) {
    name_ = std::move(name);
    wideName_ = Widen(name_);
  }

  std::u16string path_;

 private:
  std::string name_;
  std::u16string wideName_;
};

}  // namespace varnok
