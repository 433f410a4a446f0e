// The IPMI transport protocol: the one road from the program to the BMC. ipmi.efi installs it on a board; on
// Linux the simulated board or the kernel's IPMI device fills the same struct.
#pragma once

#include <cstddef>
#include <cstdint>

#include "firmware/guid.h"
#include "firmware/status.h"

namespace varnok {

inline constexpr Guid kIpmiProtocolGuid{
    0x767F1800, 0x91C2, 0x11D3, {0x93, 0x98, 0x00, 0x80, 0xC7, 0x2A, 0x36, 0xC6}};

inline constexpr std::uint64_t kIpmiProtocolRevision = 0x10002;

/// The platform's calling convention. Under UEFI the program's own functions use another one.
#ifdef _WIN64
#define VARNOK_PLATFORM_CALL __attribute__((ms_abi))
#else
#define VARNOK_PLATFORM_CALL
#endif

struct IpmiProtocol {
  std::uint64_t revision;

  /// Hands one request to the BMC. `data` holds the bytes after the command. Returns a UEFI status.
  Status(VARNOK_PLATFORM_CALL* Send)(IpmiProtocol* self, std::uint8_t netFunction, std::uint8_t lun,
                                     std::uint8_t command, const std::uint8_t* data,
                                     std::uint32_t dataLength);

  /// Fetches one response. `netFunction` is the request's plus 1; `data` receives the bytes after the
  /// completion code; `dataLength` holds the room on entry and the length on return. Returns a UEFI status.
  Status(VARNOK_PLATFORM_CALL* Receive)(IpmiProtocol* self, std::uint8_t* netFunction, std::uint8_t* lun,
                                        std::uint8_t* command, std::uint8_t* completionCode,
                                        std::uint8_t* data, std::uint32_t* dataLength);
};
static_assert(offsetof(IpmiProtocol, Send) == 8 && sizeof(IpmiProtocol) == 24);

}  // namespace varnok
