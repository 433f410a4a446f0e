// Where a commit prints: the console and, when the manager names one, the output file.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "app/services/format.h"
#include "firmware/firmware.h"
#include "fru/fru_device_address.h"

namespace varnok {

class FruOutput {
 public:
  /// Opens the output file for appending when one is named; false when that fails.
  bool Open();

  template <class... Arguments>
  void Print(const char* format, const Arguments&... arguments) {
    const FormatArguments<sizeof...(Arguments)> list{FormatArgument(arguments)...};
    PrintWith(format, list.data(), list.size());
  }

  /// The storage kind behind `prefix`, or that it is none.
  void PrintAddress(const char* prefix, const FruDeviceAddress& address);

  /// Into the output file only.
  void DumpBlock(std::span<const std::uint8_t> bytes);

 private:
  void PrintWith(const char* format, const FormatArgument* arguments, std::size_t count);

  std::unique_ptr<File> file_;
};

}  // namespace varnok
