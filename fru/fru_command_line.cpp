// The FRU device that the command line names, and its display.
#include <array>
#include <string_view>

#include "app/services/console.h"
#include "app/services/text.h"
#include "fru/fru_data.h"
#include "fru/fru_manager.h"

namespace varnok {
namespace {

/// All kinds but one must match whole, in upper case.
bool ReadNvsType(std::string_view name, std::uint32_t& nvsType) {
  for (const NvsTypeRow& row : kNvsTypes) {
    // Kept: of this kind only the beginning is compared.
    bool isLoose = row.type == nvs_type::kDs1624s;
    if (isLoose ? !name.starts_with(row.name) : name != row.name) continue;
    nvsType = row.type;
    return true;
  }
  return false;
}

/// Reads arguments into an address record, field by field: an error does not undo what was read before it.
class AddressArguments {
 public:
  explicit AddressArguments(FruDeviceAddress& address) : address_(address) {}

  void Take(std::string_view argument) {
    char first = argument.empty() ? '\0' : ToUpper(argument[0]);
    if (first == '/' || first == '-')
      ++switches_;
    else if (first == 'L')
      TakeOnce(hasLun_, argument, address_.lun);
    else if (first == 'C' && argument.size() >= 3)
      TakeOnce(hasController_, argument, address_.controller);
    else if (positionals_++ < positional_.size())
      positional_[positionals_ - 1] = argument;
  }

  /// One value is a device ID, two are bus and device address, three are all of them.
  bool Finish() {
    switch (positionals_) {
      case 1:
        address_.deviceId = ReadByte(positional_[0]);
        break;
      case 2:
        address_.bus = ReadByte(positional_[0]);
        address_.deviceAddress = ReadByte(positional_[1]);
        break;
      case 3:
        address_.deviceId = ReadByte(positional_[0]);
        address_.bus = ReadByte(positional_[1]);
        address_.deviceAddress = ReadByte(positional_[2]);
        break;
      default:
        return false;
    }
    return !hasError_;
  }

  int switches() const { return switches_; }

 private:
  void TakeOnce(bool& wasTaken, std::string_view argument, std::uint8_t& value) {
    if (wasTaken) hasError_ = true;
    wasTaken = true;
    value = ReadByte(argument.substr(1));
  }

  /// The first two characters; one that is missing or no hexadecimal digit is an error and counts as 1.
  std::uint8_t ReadByte(std::string_view text) {
    unsigned value = 0;
    for (std::size_t i = 0; i < 2; ++i) {
      int digit = i < text.size() ? HexDigitValue(text[i]) : -1;
      if (digit < 0) {
        hasError_ = true;
        digit = 1;
      }
      value = value << 4 | static_cast<unsigned>(digit);
    }
    return static_cast<std::uint8_t>(value);
  }

  FruDeviceAddress& address_;
  std::array<std::string_view, 3> positional_;
  std::size_t positionals_ = 0;  ///< all of them, those past the third included
  int switches_ = 0;
  bool hasLun_ = false;
  bool hasController_ = false;
  bool hasError_ = false;
};

}  // namespace

Status FruData::ParseFruAddress(int argumentCount, const char* const arguments[], int& count) {
  constexpr const char* kName = "FruData::ParseFruAddress";
  count = argumentCount;
  return OnManager(kName, [&](FruManager& manager) {
    FruDeviceAddress& address = manager.commandLineAddress;
    if (argumentCount < 1 || arguments == nullptr || !ReadNvsType(arguments[0], address.nvsType))
      return Fail(kName, "Invalid NVS Type", fru_status::kBadAddressArguments);
    AddressArguments reader(address);
    for (int i = 1; i < argumentCount; ++i) reader.Take(arguments[i]);
    count -= reader.switches();
    return reader.Finish() ? kSuccess : Fail(kName, "Invalid Address", fru_status::kBadAddressArguments);
  });
}

Status FruData::DisplaySelectedFru() {
  constexpr const char* kName = "FruData::DisplaySelectedFru";
  return OnManager(kName, [&](FruManager& manager) {
    PoolPtr<CFru> fru = MakeInPool<CFru>();
    if (fru == nullptr) return FailFru(kName, fru_status::kOutOfMemory, fru_text::kNoMemory);
    if (fru->LoadFromSystem(manager.commandLineAddress) == kSuccess) return fru->Display();
    Print("\nCould not find the specified FRU Device.\n\n\n");
    return Fail(kName, "LoadFromSystem failed", fru_status::kDeviceNotFound);
  });
}

}  // namespace varnok
