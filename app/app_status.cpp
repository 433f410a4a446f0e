#include "app/app_status.h"

#include <array>

#include "app/services/trace.h"

namespace varnok {
namespace {

// Indexed by status minus 1.
constexpr std::array<const char*, 11> kMessages{
    "Command Line Error.",
    "File IO Error.",
    "Error communicating with BMC.",
    "Error Updating/Validating/Comparing FRU / SDR.",
    "Error Loading FRU / SDR Information",
    "Error Parsing Configuration File",
    "Error Processing Configuration File",
    "SMBIOS Interface Error",
    "Error Initalizing Protocol Interfaces.",
    "Unknown Error.",
    "Unknown Error.",
};

}  // namespace

const char* StatusMessage(int status) {
  bool isListed = status >= 1 && status <= static_cast<int>(kMessages.size());
  return isListed ? kMessages[static_cast<std::size_t>(status - 1)] : kMessages.back();
}

int Fail(const char* operation, const char* reason, int status) {
  Trace("%s - %s", 1, operation, reason);
  return status;
}

}  // namespace varnok
