#include "sim/vm_codec.h"

#include "sim/bridging.h"

namespace varnok::sim {
namespace {

constexpr std::uint8_t kMessageEnd = 0xA0;
constexpr std::uint8_t kCommandEnd = 0xA1;
constexpr std::uint8_t kEscape = 0xAA;
constexpr std::uint8_t kEscapeBit = 0x10;

std::vector<std::uint8_t> Frame(std::span<const std::uint8_t> bytes, std::uint8_t end) {
  std::vector<std::uint8_t> framed;
  for (std::uint8_t byte : bytes) {
    if (byte == kMessageEnd || byte == kCommandEnd || byte == kEscape) {
      framed.push_back(kEscape);
      byte |= kEscapeBit;
    }
    framed.push_back(byte);
  }
  framed.push_back(end);
  return framed;
}

}  // namespace

std::optional<VmInput> VmDecoder::Push(std::uint8_t byte) {
  if (byte == kMessageEnd || byte == kCommandEnd) {
    bool isWhole = !isDamaged_ && !isEscaped_;
    std::optional<VmInput> input;
    if (isWhole) input = byte == kMessageEnd ? TakeMessage() : TakeCommand();
    bytes_.clear();
    isEscaped_ = isDamaged_ = false;
    return input;
  }
  if (byte == kEscape) {
    isDamaged_ = isDamaged_ || isEscaped_;
    isEscaped_ = true;
    return {};
  }
  if (isEscaped_) byte = static_cast<std::uint8_t>(byte & ~kEscapeBit);
  isEscaped_ = false;
  if (bytes_.size() == kLongest)
    isDamaged_ = true;
  else
    bytes_.push_back(byte);
  return {};
}

std::optional<VmInput> VmDecoder::TakeMessage() {
  constexpr std::size_t kShortest = 4;
  if (bytes_.size() < kShortest || IpmiChecksum(bytes_) != 0) return {};
  return VmRequest{bytes_[0],
                   {static_cast<std::uint8_t>(bytes_[1] >> 2),
                    static_cast<std::uint8_t>(bytes_[1] & 3),
                    bytes_[2],
                    {bytes_.begin() + 3, bytes_.end() - 1}}};
}

std::optional<VmInput> VmDecoder::TakeCommand() {
  if (bytes_.empty()) return {};
  return VmCommand{bytes_[0], {bytes_.begin() + 1, bytes_.end()}};
}

std::vector<std::uint8_t> EncodeVmResponse(std::uint8_t sequence, const Response& response) {
  std::vector<std::uint8_t> bytes{sequence,
                                  static_cast<std::uint8_t>(response.netFunction << 2 | (response.lun & 3)),
                                  response.command, response.completionCode};
  bytes.insert(bytes.end(), response.data.begin(), response.data.end());
  bytes.push_back(IpmiChecksum(bytes));
  return Frame(bytes, kMessageEnd);
}

std::vector<std::uint8_t> EncodeVmCommand(const VmCommand& command) {
  std::vector<std::uint8_t> bytes{command.code};
  bytes.insert(bytes.end(), command.parameters.begin(), command.parameters.end());
  return Frame(bytes, kCommandEnd);
}

}  // namespace varnok::sim
