#include "sim/vm_codec.h"

#include <gmock/gmock.h>

#include <random>

namespace varnok::sim {
namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

std::vector<VmInput> Decode(VmDecoder& decoder, const Bytes& line) {
  std::vector<VmInput> inputs;
  for (std::uint8_t byte : line)
    if (auto input = decoder.Push(byte)) inputs.push_back(*input);
  return inputs;
}

// Get Device ID, sequence 5; its bytes sum to 0.
const Bytes kRequest{0x05, 0x18, 0x01, 0xE2, 0xA0};

TEST(VmCodec, ReadsRequestsWithTheirEscapes) {
  VmDecoder decoder;
  // Sequence A0h, net function 0Ah LUN 2, command AAh, data A1h: three escapes.
  auto inputs = Decode(decoder, {0xAA, 0xB0, 0x2A, 0xAA, 0xBA, 0xAA, 0xB1, 0xEB, 0xA0});
  ASSERT_EQ(inputs.size(), 1u);
  const auto& message = std::get<VmRequest>(inputs[0]);
  EXPECT_EQ(message.sequence, 0xA0);
  EXPECT_EQ(message.request.netFunction, 0x0A);
  EXPECT_EQ(message.request.lun, 2);
  EXPECT_EQ(message.request.command, 0xAA);
  EXPECT_THAT(message.request.data, ElementsAre(0xA1));
}

TEST(VmCodec, ReadsCommands) {
  VmDecoder decoder;
  auto inputs = Decode(decoder, {0xFF, 0x01, 0xA1, 0x08, 0x3F, 0xA1});
  ASSERT_EQ(inputs.size(), 2u);
  EXPECT_EQ(std::get<VmCommand>(inputs[0]).code, vm_command::kVersion);
  EXPECT_THAT(std::get<VmCommand>(inputs[0]).parameters, ElementsAre(1));
  EXPECT_EQ(std::get<VmCommand>(inputs[1]).code, vm_command::kCapabilities);
}

TEST(VmCodec, WritesResponsesAndCommands) {
  EXPECT_THAT(EncodeVmResponse(0xAA, {0x07, 0, 0x01, 0x00, {0xA0, 0xA1, 0x20}}),
              ElementsAre(0xAA, 0xBA, 0x1C, 0x01, 0x00, 0xAA, 0xB0, 0xAA, 0xB1, 0x20, 0xD8, 0xA0));
  EXPECT_THAT(EncodeVmCommand({vm_command::kVersion, {kVmProtocolVersion}}), ElementsAre(0xFF, 0x01, 0xA1));
}

TEST(VmCodec, DropsWhatIsDamagedAndGoesOn) {
  const Bytes damages[] = {
      {0xA0},                                      // nothing
      {0xA1},                                      // a command without code
      {0x05, 0x18, 0xE3, 0xA0},                    // too short, with a good checksum
      {0x05, 0x18, 0x01, 0xE3, 0xA0},              // wrong checksum
      {0x05, 0x18, 0x01, 0xE2, 0xAA, 0xA0},        // ends in an escape
      {0x05, 0x18, 0xAA, 0xAA, 0x01, 0xE2, 0xA0},  // an escape of an escape
      Bytes(VmDecoder::kLongest + 1, 0x00),
  };
  for (const Bytes& damage : damages) {
    VmDecoder decoder;
    EXPECT_TRUE(Decode(decoder, damage).empty());
    if (damage.back() == 0) {
      EXPECT_TRUE(Decode(decoder, {0xA0}).empty());
    }
    EXPECT_EQ(Decode(decoder, kRequest).size(), 1u);
  }
}

TEST(VmCodec, TakesAnyNoise) {
  std::mt19937 random(7);
  VmDecoder decoder;
  for (int i = 0; i < 200'000; ++i) (void)decoder.Push(static_cast<std::uint8_t>(random()));
  (void)Decode(decoder, {0xA0});
  EXPECT_EQ(Decode(decoder, kRequest).size(), 1u);
}

}  // namespace
}  // namespace varnok::sim
