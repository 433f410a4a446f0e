// Where a commit prints: the console and, when the manager names one, the output file.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "app/services/console.h"
#include "app/services/format.h"
#include "app/services/text_output.h"
#include "firmware/firmware.h"
#include "fru/fru_device_address.h"
#include "fru/fru_session.h"

namespace varnok {

/// The name by which files and the console know a storage kind; null for a kind without one.
const char* FindNvsTypeName(std::uint32_t nvsType);

class FruOutput {
 public:
  /// Opens the output file for appending when one is named; false when that fails.
  bool Open() {
    std::u16string_view name = TheFruSession().outputFileName;
    return name.empty() || TheFirmware().OpenFile(name, FileMode::Append, file_) == kSuccess;
  }

  template <class... Arguments>
  void Print(const char* format, const Arguments&... arguments) {
    const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
    PrintWith(format, list.data(), list.size());
  }

  /// The storage kind behind `prefix`, or that it is none.
  void PrintAddress(const char* prefix, const FruDeviceAddress& address);

  /// Into the output file only.
  void DumpBlock(std::span<const std::uint8_t> bytes) {
    if (file_ != nullptr && TheFruSession().displayHex != nullptr)
      TheFruSession().displayHex(bytes.data(), bytes.size(), file_.get());
  }

 private:
  void PrintWith(const char* format, const FormatArgument* arguments, std::size_t count);

  std::unique_ptr<File> file_;
};

}  // namespace varnok
