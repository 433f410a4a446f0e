#include "sim/vm_codec.h"

#include <gtest/gtest.h>

namespace varnok::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// What the bytes of a line say: "sequence netFunction/lun command: data" of a request, "!code: parameters"
/// of a command.
std::string Decode(VmDecoder& decoder, const Bytes& line) {
  std::string said;
  for (std::uint8_t byte : line) {
    const auto input = decoder.Push(byte);
    if (!input) continue;
    std::vector<int> numbers;
    const Bytes* rest = nullptr;
    if (const auto* request = std::get_if<VmRequest>(&*input)) {
      numbers = {request->sequence, request->request.netFunction, request->request.lun,
                 request->request.command};
      rest = &request->request.data;
    } else {
      numbers = {std::get<VmCommand>(*input).code};
      rest = &std::get<VmCommand>(*input).parameters;
    }
    said += numbers.size() == 1 ? "!" : "?";
    numbers.insert(numbers.end(), rest->begin(), rest->end());
    for (int number : numbers) said += " " + std::to_string(number);
  }
  return said;
}

// Get Device ID, sequence 5; its bytes sum to 0.
const Bytes kRequest{0x05, 0x18, 0x01, 0xE2, 0xA0};
const std::string kRequested = "? 5 6 0 1";

TEST(VmCodec, ReadsRequestsAndCommandsAndDropsWhatIsDamaged) {
  const std::pair<Bytes, const char*> lines[] = {
      // Sequence A0h, net function 0Ah LUN 2, command AAh, data A1h: three escapes.
      {{0xAA, 0xB0, 0x2A, 0xAA, 0xBA, 0xAA, 0xB1, 0xEB, 0xA0}, "? 160 10 2 170 161"},
      {{0xFF, 0x01, 0xA1, 0x08, 0x3F, 0xA1}, "! 255 1! 8 63"},
      {{0xA0}, ""},
      {{0xA1}, ""},                                      // a command without code
      {{0x05, 0x18, 0xE3, 0xA0}, ""},                    // too short, with a good checksum
      {{0x05, 0x18, 0x01, 0xE3, 0xA0}, ""},              // wrong checksum
      {{0x05, 0x18, 0x01, 0xE2, 0xAA, 0xA0}, ""},        // ends in an escape
      {{0x05, 0x18, 0xAA, 0xAA, 0x01, 0xE2, 0xA0}, ""},  // an escape of an escape
  };
  VmDecoder decoder;
  for (const auto& [line, said] : lines) {
    EXPECT_EQ(Decode(decoder, line), said);
    EXPECT_EQ(Decode(decoder, kRequest), kRequested);
  }
  Bytes tooLong(VmDecoder::kLongest + 1, 0x00);
  tooLong.push_back(0xA0);
  EXPECT_EQ(Decode(decoder, tooLong), "");
}

TEST(VmCodec, WritesResponsesWithTheirEscapes) {
  EXPECT_EQ(EncodeVmResponse(0xAA, {0x07, 0, 0x01, 0x00, {0xA0, 0xA1, 0x20}}),
            (Bytes{0xAA, 0xBA, 0x1C, 0x01, 0x00, 0xAA, 0xB0, 0xAA, 0xB1, 0x20, 0xD8, 0xA0}));
}

}  // namespace
}  // namespace varnok::sim
