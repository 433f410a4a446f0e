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
const char16_t* FindNvsTypeName(std::uint32_t nvsType);

class FruOutput {
 public:
  /// Opens the output file for appending when one is named; false when that fails.
  bool Open() {
    std::u16string_view name = TheFruSession().outputFileName;
    return name.empty() || TheFirmware().OpenFile(name, FileMode::Append, file_) == kSuccess;
  }

  template <class... Arguments>
  void Print(std::u16string_view format, const Arguments&... arguments) {
    std::u16string text = Format(format, arguments...);
    PrintText(text);
    if (file_ != nullptr) (void)WriteText(*file_, text);
  }

  /// The storage kind behind `prefix`, or that it is none.
  void PrintAddress(std::u16string_view prefix, const FruDeviceAddress& address) {
    if (const char16_t* name = FindNvsTypeName(address.nvsType))
      Print(u"%lsFRU %s ", prefix, name);
    else
      Print(u"\n%ls\n\n", u"FRU type not recognized");
    Print(u"on bus %02Xh, Device ID %02xh, IPMB adresss %02Xh, Lun %02Xh\n", address.bus, address.deviceId,
          address.deviceAddress, address.lun);
  }

  /// Into the output file only.
  void DumpBlock(std::span<const std::uint8_t> bytes) {
    if (file_ != nullptr && TheFruSession().displayHex != nullptr)
      TheFruSession().displayHex(bytes.data(), bytes.size(), file_.get());
  }

 private:
  std::unique_ptr<File> file_;
};

}  // namespace varnok
