#include <array>
#include <charconv>
#include <vector>

#include "app/services/text.h"
#include "firmware/ipmi_protocol.h"
#include "firmware/uefi/platform.h"
#include "firmware/uefi/runtime.h"
#include "platform/ipmi.h"
#include "tests/uefi/probe/probe.h"

namespace varnok::probe {
namespace {

IpmiProtocol* FindProtocol() {
  std::size_t bytes = sizeof(Handle);
  Handle handle = nullptr;
  void* interface = nullptr;
  if (TheFirmware().LocateHandles(kIpmiProtocolGuid, bytes, &handle) != kSuccess) return nullptr;
  if (TheFirmware().OpenProtocol(handle, kIpmiProtocolGuid, interface) != kSuccess) return nullptr;
  return static_cast<IpmiProtocol*>(interface);
}

/// Unloads the image that the protocol is part of.
Status UnloadDriver() {
  EFI_BOOT_SERVICES& services = uefi::BootServices();
  const auto* protocol = reinterpret_cast<const std::uint8_t*>(FindProtocol());
  UINTN count = 0;
  EFI_HANDLE* handles = nullptr;
  Status status =
      services.LocateHandleBuffer(ByProtocol, uefi::ToEfi(uefi::kLoadedImageGuid), nullptr, &count, &handles);
  for (UINTN i = 0; status == kSuccess && i < count; ++i) {
    void* interface = nullptr;
    if (services.HandleProtocol(handles[i], uefi::ToEfi(uefi::kLoadedImageGuid), &interface) != EFI_SUCCESS)
      continue;
    const auto& image = *static_cast<EFI_LOADED_IMAGE*>(interface);
    const auto* base = static_cast<const std::uint8_t*>(image.ImageBase);
    if (protocol >= base && protocol < base + image.ImageSize) return services.UnloadImage(handles[i]);
  }
  return uefi_status::kNotFound;
}

std::vector<std::uint8_t> ReadBytes(int count, char* words[]) {
  std::vector<std::uint8_t> bytes;
  for (int i = 0; i < count; ++i) {
    std::string_view word = words[i];
    std::uint8_t byte = 0;
    std::from_chars(word.begin(), word.end(), byte, 16);
    bytes.push_back(byte);
  }
  return bytes;
}

void Receive(IpmiProtocol& protocol, std::uint32_t room) {
  std::array<std::uint8_t, 256> data;
  data.fill(0xEE);
  std::uint8_t netFunction = 0;
  std::uint8_t lun = 0;
  std::uint8_t command = 0;
  std::uint8_t completionCode = 0;
  std::uint32_t length = room;
  Status status =
      protocol.Receive(&protocol, &netFunction, &lun, &command, &completionCode, data.data(), &length);
  if (status != kSuccess) return AnswerStatus(u"receive", status);
  Print("answer: %02X/%d %02X %02X:", netFunction, lun, command, completionCode);
  for (std::uint32_t i = 0; i < length; ++i) Print(" %02X", data[i]);
  Print("%ls\n", data[room] == 0xEE ? u"" : u" OVERRUN");
}

/// send NETFN COMMAND DATA..., and receive with ROOM bytes for data unless the room is "none".
int Exchange(int count, char* words[]) {
  IpmiProtocol* protocol = FindProtocol();
  if (protocol == nullptr || count < 3) return 1;
  std::vector<std::uint8_t> bytes = ReadBytes(count - 1, words + 1);
  AnswerStatus(u"send", protocol->Send(protocol, bytes[0], 0, bytes[1], bytes.data() + 2,
                                       static_cast<std::uint32_t>(bytes.size() - 2)));
  std::string_view room = words[0];
  std::uint32_t size = 0;
  if (std::from_chars(room.begin(), room.end(), size).ec == std::errc{}) Receive(*protocol, size);
  return 0;
}

}  // namespace

int ProbeIpmi(int count, char* words[]) {
  std::string_view action = count > 0 ? words[0] : "";
  if (action == "load") {
    Answer(u"load", IpmiLoadProtocol());
  } else if (action == "start") {
    AnswerStatus(u"start", TheFirmware().StartDriver(Widen(words[1])));
  } else if (action == "handles") {
    std::size_t bytes = 0;
    Status status = TheFirmware().LocateHandles(kIpmiProtocolGuid, bytes, nullptr);
    AnswerStatus(u"locate", status);
    if (status == uefi_status::kBufferTooSmall) Answer(u"handles", bytes / sizeof(Handle));
  } else if (action == "unload") {
    AnswerStatus(u"unload", UnloadDriver());
  } else if (action == "receive") {
    if (IpmiProtocol* protocol = FindProtocol()) Receive(*protocol, 64);
  } else if (action == "send") {
    return Exchange(count - 1, words + 1);
  }
  return 0;
}

}  // namespace varnok::probe
