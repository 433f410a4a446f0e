// The record of one input file of a script: the second base of every command that names a file to load.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/services/text.h"
#include "cfg/cfg_status.h"

namespace varnok {

enum class InputFileKind : std::uint32_t { Fru = 4, Sdr = 5 };

class CCfgFileInputCommand {
 public:
  /// Room for the resolved path, the terminating NUL included.
  static constexpr std::size_t kPathCapacity = 256;

  explicit CCfgFileInputCommand(InputFileKind kind) : kind_(kind) {}
  virtual ~CCfgFileInputCommand() = default;

  virtual std::u16string_view GetWideName() const { return wideName_; }
  virtual std::u16string_view GetPath() const { return path_; }
  virtual std::string_view GetName() const { return name_; }
  virtual InputFileKind GetKind() const { return kind_; }
  virtual Status Reload() { return cfg_status::kNotSupported; }

 protected:
  void SetName(std::string name) {
    name_ = std::move(name);
    wideName_ = Widen(name_);
  }

  std::u16string path_;

 private:
  std::string name_;
  std::u16string wideName_;
  InputFileKind kind_;
};

}  // namespace varnok
