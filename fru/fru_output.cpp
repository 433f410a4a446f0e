#include "fru/fru_output.h"

#include "app/services/console.h"
#include "app/services/text_output.h"
#include "fru/fru_session.h"

namespace varnok {

bool FruOutput::Open() {
  std::u16string_view name = TheFruSession().outputFileName;
  return name.empty() || TheFirmware().OpenFile(name, FileMode::Append, file_) == kSuccess;
}

void FruOutput::PrintWith(const char* format, const FormatArgument* arguments, std::size_t count) {
  varnok::PrintWith(format, arguments, count);
  if (file_ == nullptr) return;
  // A file that takes no more does not stop the programming.
  GatheredText file([this](std::span<char16_t> text) {
    Discard(WriteText(*file_, {text.data(), text.size()}));
  });
  FormatTo(file, format, arguments, count);
}

void FruOutput::PrintAddress(const char* prefix, const FruDeviceAddress& address) {
  if (const NvsTypeRow* row = FindNvsType(address.nvsType))
    Print("%sFRU %s ", prefix, row->fileName);
  else
    Print("\nFRU type not recognized\n\n");
  Print("on bus %02Xh, Device ID %02xh, IPMB adresss %02Xh, Lun %02Xh\n", address.bus, address.deviceId,
        address.deviceAddress, address.lun);
}

void FruOutput::DumpBlock(std::span<const std::uint8_t> bytes) {
  if (file_ != nullptr && TheFruSession().displayHex != nullptr)
    TheFruSession().displayHex(bytes.data(), bytes.size(), file_.get());
}

}  // namespace varnok
