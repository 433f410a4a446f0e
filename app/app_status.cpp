#include "app/app_status.h"

#include <array>

namespace varnok {
namespace {

// Indexed by status minus 1.
constexpr std::array<std::u16string_view, 11> kMessages{
    u"Command Line Error.",
    u"File IO Error.",
    u"Error communicating with BMC.",
    u"Error Updating/Validating/Comparing FRU / SDR.",
    u"Error Loading FRU / SDR Information",
    u"Error Parsing Configuration File",
    u"Error Processing Configuration File",
    u"SMBIOS Interface Error",
    u"Error Initalizing Protocol Interfaces.",
    u"Unknown Error.",
    u"Unknown Error.",
};

}  // namespace

std::u16string_view StatusMessage(int status) {
  bool isListed = status >= 1 && status <= static_cast<int>(kMessages.size());
  return isListed ? kMessages[static_cast<std::size_t>(status - 1)] : kMessages.back();
}

}  // namespace varnok
