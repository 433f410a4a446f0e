#include "boards/traffic.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "app/services/format.h"
#include "firmware/bytes.h"
#include "firmware/ipmi.h"

namespace varnok::boards {
namespace {

std::string ByteText(unsigned value) {
  return Format("%02Xh", value);
}

using Data = const std::vector<std::uint8_t>&;

std::string Place(Data data, std::size_t count) {
  return "device " + std::to_string(data[0]) + ", offset " + std::to_string(WordAt(data, 1)) + ", " +
         std::to_string(count) + " bytes";
}

std::string DeviceRead(Data data) {
  return Place(data, data[3]);
}

std::string DeviceWrite(Data data) {
  return Place(data, data.size() - 3);
}

std::string DeviceNumber(Data data) {
  return "device " + std::to_string(data[0]);
}

std::string RecordPart(Data data) {
  return "record " + std::to_string(WordAt(data, 2)) + ", offset " + std::to_string(data[4]) + ", " +
         (data[5] == 0xFF ? std::string("the rest") : std::to_string(data[5]) + " bytes");
}

std::string RecordPiece(Data data) {
  return "record " + std::to_string(WordAt(data, 2)) + ", offset " + std::to_string(data[4]) + ", " +
         std::to_string(data.size() - 6) + " bytes" + (data[5] == 1 ? ", the last" : "");
}

std::string EraseStep(Data data) {
  return data[5] == 0xAA ? "erase" : "how far is it";
}

std::string BusTransfer(Data data) {
  return "bus " + ByteText(data[0]) + ", address " + ByteText(data[1]) + ", writes " +
         std::to_string(data.size() - 3) + " bytes, reads " + std::to_string(data[2]);
}

std::string BridgedRequest(Data data) {
  return "to " + ByteText(data[1]) + ": " + CommandName(static_cast<std::uint8_t>(data[2] >> 2), data[6]);
}

struct NameRow {
  std::uint8_t netFunction;
  std::uint8_t command;
  const char* name;
  std::size_t length = 0;  ///< of the data that `describe` needs
  std::string (*describe)(Data data) = nullptr;
};

namespace nf = net_function;
namespace cmd = ipmi_command;
constexpr NameRow kNames[] = {
    {nf::kApplication, cmd::kGetDeviceId, "Get Device ID"},
    {nf::kApplication, cmd::kColdReset, "Cold Reset"},
    {nf::kApplication, cmd::kClearMessageFlags, "Clear Message Flags"},
    {nf::kApplication, cmd::kGetMessage, "Get Message"},
    {nf::kApplication, cmd::kSendMessage, "Send Message", 7, BridgedRequest},
    {nf::kApplication, cmd::kGetChannelInfo, "Get Channel Info"},
    {nf::kApplication, cmd::kMasterWriteRead, "Master Write-Read", 3, BusTransfer},
    {nf::kSensorEvent, cmd::kGetSensorReading, "Get Sensor Reading"},
    {nf::kStorage, cmd::kGetFruAreaInfo, "Get FRU Inventory Area Info", 1, DeviceNumber},
    {nf::kStorage, cmd::kReadFruData, "Read FRU Data", 4, DeviceRead},
    {nf::kStorage, cmd::kWriteFruData, "Write FRU Data", 3, DeviceWrite},
    {nf::kStorage, cmd::kGetSdrRepositoryInfo, "Get SDR Repository Info"},
    {nf::kStorage, cmd::kGetSdrAllocationInfo, "Get SDR Repository Allocation Info"},
    {nf::kStorage, cmd::kReserveSdrRepository, "Reserve SDR Repository"},
    {nf::kStorage, cmd::kGetSdr, "Get SDR", 6, RecordPart},
    {nf::kStorage, cmd::kAddSdr, "Add SDR"},
    {nf::kStorage, cmd::kPartialAddSdr, "Partial Add SDR", 6, RecordPiece},
    {nf::kStorage, cmd::kDeleteSdr, "Delete SDR"},
    {nf::kStorage, cmd::kClearSdrRepository, "Clear SDR Repository", 6, EraseStep},
    {nf::kTransport, cmd::kGetLanConfiguration, "Get LAN Configuration Parameters"},
    {nf::kFirmware, cmd::kEnterFirmwareTransfer, "Enter Firmware Transfer Mode"},
    {nf::kFirmware, cmd::kExitFirmwareTransfer, "Exit Firmware Transfer Mode"},
};

const NameRow* FindName(std::uint8_t netFunction, std::uint8_t command) {
  const auto* row = std::ranges::find_if(kNames, [&](const NameRow& each) {
    return each.netFunction == (netFunction & 0xFE) && each.command == command;
  });
  return row == std::end(kNames) ? nullptr : row;
}

/// Takes the columns of a line, one blank apart.
class Columns {
 public:
  explicit Columns(std::string_view text) : rest_(text) {}
  bool IsAtEnd() const { return rest_.empty(); }
  std::string_view Rest() const { return rest_; }
  std::string_view Next() {
    const std::size_t end = std::min(rest_.find(' '), rest_.size());
    std::string_view column = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return column;
  }
  /// Two hexadecimal digits.
  static bool Byte(std::string_view text, std::uint8_t& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return text.size() == 2 && error == std::errc() && end == text.data() + 2;
  }

 private:
  std::string_view rest_;
};

bool ParseTime(std::string_view text, std::uint64_t& microseconds) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos || text.size() != point + 7) return false;
  std::uint64_t seconds = 0;
  std::uint64_t rest = 0;
  const char* end = text.data() + text.size();
  const bool isTime = std::from_chars(text.data(), text.data() + point, seconds).ptr == text.data() + point &&
                      std::from_chars(text.data() + point + 1, end, rest).ptr == end;
  microseconds = seconds * 1'000'000 + rest;
  return isTime;
}

/// The columns behind the mark.
bool ParseMessage(Columns columns, TrafficLine& line) {
  line.place = columns.Next();
  const std::string_view function = columns.Next();  // "0A/0"
  if (function.size() != 4 || function[2] != '/' || function[3] < '0' || function[3] > '3' ||
      !Columns::Byte(function.substr(0, 2), line.netFunction) || !Columns::Byte(columns.Next(), line.command))
    return false;
  line.lun = static_cast<std::uint8_t>(function[3] - '0');
  if (line.kind == TrafficLine::Kind::Answer) {
    const std::string_view result = columns.Next();
    if (result == "lost") line.kind = TrafficLine::Kind::Lost;
    if (result == "refused") line.kind = TrafficLine::Kind::Refused;
    if (line.kind != TrafficLine::Kind::Answer) return columns.IsAtEnd();
    if (!result.starts_with("cc=") || !Columns::Byte(result.substr(3), line.completionCode)) return false;
  }
  while (!columns.IsAtEnd()) {
    std::uint8_t byte = 0;
    if (!Columns::Byte(columns.Next(), byte)) return false;
    line.data.push_back(byte);
  }
  return true;
}

}  // namespace

std::optional<TrafficLine> ParseTrafficLine(std::string_view text) {
  TrafficLine line;
  Columns columns(text);
  if (!ParseTime(columns.Next(), line.microseconds)) return std::nullopt;
  const std::string_view mark = columns.Next();
  if (mark == "!") {
    line.remark = columns.Rest();
    return line;
  }
  if (mark != ">" && mark != ">>" && mark != "<" && mark != "<<") return std::nullopt;
  line.isBridged = mark.size() == 2;
  line.kind = mark[0] == '>' ? TrafficLine::Kind::Request : TrafficLine::Kind::Answer;
  std::string_view rest = columns.Rest();
  if (const std::size_t at = rest.find(" # "); at != std::string_view::npos) {
    line.remark = rest.substr(at + 3);
    rest = rest.substr(0, at);
  }
  if (!ParseMessage(Columns(rest), line)) return std::nullopt;
  return line;
}

std::string SecondsText(std::uint64_t microseconds) {
  return Format("%u.%06u", microseconds / 1'000'000, microseconds % 1'000'000);
}

std::string CommandName(std::uint8_t netFunction, std::uint8_t command) {
  if (const NameRow* row = FindName(netFunction, command)) return row->name;
  return "net function " + ByteText(netFunction & 0xFE) + ", command " + ByteText(command);
}

std::string InWords(const TrafficLine& line) {
  if (line.kind == TrafficLine::Kind::Event) return "";
  std::string words = CommandName(line.netFunction, line.command);
  const NameRow* row = FindName(line.netFunction, line.command);
  if (line.kind == TrafficLine::Kind::Request && row != nullptr && row->describe != nullptr &&
      line.data.size() >= row->length)
    words += ": " + row->describe(line.data);
  if (line.kind == TrafficLine::Kind::Answer && line.completionCode != completion_code::kSuccess)
    words += ": refused with " + ByteText(line.completionCode);
  return words;
}

void TrafficTotals::Add(const TrafficLine& line) {
  using Kind = TrafficLine::Kind;
  microseconds = std::max(microseconds, line.microseconds);
  if (!line.remark.empty()) ++remarks[line.remark];
  if (line.kind == Kind::Event) {
    ++events;
    return;
  }
  const auto key = std::pair(static_cast<std::uint8_t>(line.netFunction & 0xFE), line.command);
  if (line.kind == Kind::Request) {
    ++requests;
    ++commands[key].requests;
    open_.insert_or_assign(line.place, line);
    return;
  }
  if (line.kind == Kind::Answer) ++answers;
  if (line.kind == Kind::Lost) ++lost;
  if (line.kind == Kind::Refused) ++refused;
  if (line.kind == Kind::Answer && line.completionCode != completion_code::kSuccess)
    ++codes[ByteText(line.completionCode) + " " + CommandName(line.netFunction, line.command)];
  const auto asked = open_.find(line.place);
  if (asked == open_.end() || asked->second.command != line.command ||
      line.microseconds < asked->second.microseconds)
    return;
  Command& command = commands[key];
  const std::uint64_t taken = line.microseconds - asked->second.microseconds;
  command.microseconds += taken;
  command.longest = std::max(command.longest, taken);
  open_.erase(asked);
}

}  // namespace varnok::boards
