#include "rehearsal/command_names.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "firmware/ipmi.h"

namespace varnok::rehearsal {
namespace {

namespace command = ipmi_command;

struct Row {
  std::uint8_t netFunction;
  std::uint8_t command;
  const char* name;
  bool canWrite = false;
};

/// IPMI v2.0, appendix G, but for the firmware's own.
constexpr Row kRows[] = {
    {net_function::kApplication, command::kGetDeviceId, "Get Device ID"},
    {net_function::kApplication, command::kColdReset, "Cold Reset"},
    {net_function::kApplication, command::kClearMessageFlags, "Clear Message Flags"},
    {net_function::kApplication, command::kGetMessage, "Get Message"},
    {net_function::kApplication, command::kSendMessage, "Send Message"},
    {net_function::kApplication, command::kGetChannelInfo, "Get Channel Info"},
    {net_function::kApplication, command::kMasterWriteRead, "Master Write-Read"},
    {net_function::kSensorEvent, command::kGetSensorReading, "Get Sensor Reading"},
    {net_function::kFirmware, command::kEnterFirmwareTransfer, "Enter Firmware Transfer"},
    {net_function::kFirmware, command::kExitFirmwareTransfer, "Exit Firmware Transfer"},
    {net_function::kStorage, command::kGetFruAreaInfo, "Get FRU Inventory Area Info"},
    {net_function::kStorage, command::kReadFruData, "Read FRU Data"},
    {net_function::kStorage, command::kWriteFruData, "Write FRU Data", true},
    {net_function::kStorage, command::kGetSdrRepositoryInfo, "Get SDR Repository Info"},
    {net_function::kStorage, command::kGetSdrAllocationInfo, "Get SDR Repository Allocation Info"},
    {net_function::kStorage, command::kReserveSdrRepository, "Reserve SDR Repository"},
    {net_function::kStorage, command::kGetSdr, "Get SDR"},
    {net_function::kStorage, command::kAddSdr, "Add SDR", true},
    {net_function::kStorage, command::kPartialAddSdr, "Partial Add SDR", true},
    {net_function::kStorage, command::kDeleteSdr, "Delete SDR", true},
    {net_function::kStorage, command::kClearSdrRepository, "Clear SDR Repository", true},
    {net_function::kTransport, command::kGetLanConfiguration, "Get LAN Configuration Parameters"},
};

const Row* Find(std::uint8_t netFunction, std::uint8_t number) {
  const auto* row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) {
    return each.netFunction == netFunction && each.command == number;
  });
  return row == std::end(kRows) ? nullptr : row;
}

}  // namespace

std::string CommandName(std::uint8_t netFunction, std::uint8_t number) {
  if (const Row* row = Find(netFunction, number)) return row->name;
  char text[48];
  std::snprintf(text, sizeof text, "net function %02Xh, command %02Xh", unsigned{netFunction},
                unsigned{number});
  return text;
}

bool CanWrite(std::uint8_t netFunction, std::uint8_t number, std::span<const std::uint8_t> data) {
  // Bus, slave address and count; then what is written: with more than an address it is stored.
  constexpr std::size_t kHead = 3;
  constexpr std::size_t kLongestAddress = 2;
  const Row* row = Find(netFunction, number);
  if (row == nullptr) return false;
  return row->canWrite || (number == command::kMasterWriteRead && netFunction == net_function::kApplication &&
                           data.size() > kHead + kLongestAddress);
}

}  // namespace varnok::rehearsal
