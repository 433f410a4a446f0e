// The program's own statuses, which become its exit status, and the text shown
// for each.
#pragma once

#include <string_view>

namespace varnok {

namespace app_status {
inline constexpr int kSuccess = 0;
inline constexpr int kCommandLine = 1;  ///< no or invalid arguments; the usage text says so, no error line
inline constexpr int kFileIo = 2;       ///< a FRU, SDR or script file, or a temporary file
inline constexpr int kBmcCommunication = 3;    ///< the BMC does not answer or is in firmware-transfer mode
inline constexpr int kUpdate = 4;              ///< a commit to the BMC failed
inline constexpr int kLoad = 5;                ///< a FRU or SDR display or file load failed
inline constexpr int kScriptParsing = 6;       ///< the script could not be loaded
inline constexpr int kScriptProcessing = 7;    ///< executing the script failed
inline constexpr int kSmbios = 8;              ///< SMBIOS initialisation or display failed
inline constexpr int kProtocolInterfaces = 9;  ///< no IPMI protocol, or a manager did not initialise
inline constexpr int kUnknown = 11;            ///< a mode or an argument that cannot be
}  // namespace app_status

/// The text of a status from 1 to 11; a script's error level may be any number,
/// and a higher one reads like 11.
const char* StatusMessage(int status);

/// The trace line of a failure, as the services' Fail writes it, before one of the program's own statuses.
int Fail(const char* operation, const char* reason, int status);

}  // namespace varnok
