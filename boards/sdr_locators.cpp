// Associations, locators, and the records of controllers, channels and makers (IPMI v2.0, sections 43.4
// to 43.12).
#include <algorithm>
#include <iterator>

#include "boards/field_text.h"
#include "boards/sdr_codes.h"
#include "boards/sdr_decoder.h"

namespace varnok::boards {
namespace {

std::string FlagText(std::uint8_t flags) {
  std::string text = (flags & 0x80) != 0 ? "ranges" : "list";
  if ((flags & 0x40) != 0) text += ", linked to a further record";
  if ((flags & 0x20) != 0) text += ", a presence sensor is always there";
  return text;
}

std::string AddressText(std::uint8_t address) {
  return Hex(address) + (address == 0x20 ? ", the BMC" : "");
}

/// Bytes 11 to 15, which the generic and the FRU locator have alike.
void PutDevice(SdrDecoder& decoder) {
  decoder.PutCode("Device Type", 11, SdrCodeText(SdrCode::DeviceType, decoder.At(11)));
  decoder.PutCode("Device Type Modifier", 12, DeviceModifierText(decoder.At(11), decoder.At(12)));
  decoder.PutEntity("Entity", 13);
  decoder.Put("OEM", 15, 1, Hex(decoder.At(15)));
}

}  // namespace

void DecodeAssociation(SdrDecoder& decoder) {
  decoder.PutEntity("Container Entity", 6);
  decoder.Put("Flags", 8, 1, FlagText(decoder.At(8)));
  constexpr const char* kLabels[] = {"Contained Entity 1", "Contained Entity 2", "Contained Entity 3",
                                     "Contained Entity 4"};
  for (std::size_t i = 0; i < std::size(kLabels); ++i) decoder.PutEntity(kLabels[i], 9 + 2 * i);
}

void DecodeDeviceRelative(SdrDecoder& decoder) {
  decoder.PutEntity("Container Entity", 6);
  decoder.Put("Container Device Address", 8, 1, AddressText(decoder.At(8)));
  decoder.Put("Container Device Channel", 9, 1, std::to_string(decoder.At(9) >> 4));
  decoder.Put("Flags", 10, 1, FlagText(decoder.At(10)));
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t byte = 11 + 4 * i;
    const std::string name = "Contained Entity " + std::to_string(i + 1);
    decoder.Put(name + " Device Address", byte, 1, AddressText(decoder.At(byte)));
    decoder.Put(name + " Device Channel", byte + 1, 1, std::to_string(decoder.At(byte + 1) >> 4));
    decoder.PutEntity(name.c_str(), byte + 2);
  }
}

void DecodeGenericLocator(SdrDecoder& decoder) {
  const std::uint8_t access = decoder.At(8);
  decoder.Put("Device Access Address", 6, 1, AddressText(decoder.At(6)));
  decoder.Put("Device Slave Address", 7, 1, Hex(decoder.At(7) & 0xFE));
  decoder.Put("Channel", 7, 2, std::to_string((decoder.At(7) & 1) << 3 | access >> 5));
  decoder.Put("Access LUN", 8, 1, std::to_string(access >> 3 & 3));
  decoder.Put("Private Bus", 8, 1, std::to_string(access & 7));
  decoder.Put("Address Span", 9, 1, std::to_string(decoder.At(9) & 7));
  PutDevice(decoder);
}

void DecodeFruLocator(SdrDecoder& decoder) {
  const std::uint8_t access = decoder.At(8);
  const bool isLogical = (access & 0x80) != 0;
  decoder.Put("Device Access Address", 6, 1, AddressText(decoder.At(6)));
  decoder.Put(isLogical ? "FRU Device ID" : "Device Slave Address", 7, 1,
              isLogical ? std::to_string(decoder.At(7)) : Hex(decoder.At(7)));
  decoder.Put("Access", 8, 1, isLogical ? "logical FRU device" : "device on a private bus");
  decoder.Put("Access LUN", 8, 1, std::to_string(access >> 3 & 3));
  decoder.Put("Private Bus", 8, 1, std::to_string(access & 7));
  decoder.Put("Channel", 9, 1, std::to_string(decoder.At(9) >> 4));
  PutDevice(decoder);
}

void DecodeControllerLocator(SdrDecoder& decoder) {
  constexpr const char* kCapabilities[] = {"sensors",        "SDR repository",  "SEL",    "FRU inventory",
                                           "event receiver", "event generator", "bridge", "chassis"};
  decoder.Put("Device Slave Address", 6, 1, AddressText(decoder.At(6)));
  decoder.Put("Channel", 7, 1, std::to_string(decoder.At(7) & 0xF));
  decoder.Put("Power State and Initialization", 8, 1, Hex(decoder.At(8)));
  std::string list;
  for (std::size_t bit = 0; bit < std::size(kCapabilities); ++bit)
    if ((decoder.At(9) >> bit & 1) != 0) list += (list.empty() ? "" : ", ") + std::string(kCapabilities[bit]);
  decoder.Put("Device Capabilities", 9, 1, list.empty() ? "none" : list);
  decoder.PutEntity("Entity", 13);
  decoder.Put("OEM", 15, 1, Hex(decoder.At(15)));
}

void DecodeConfirmation(SdrDecoder& decoder) {
  decoder.Put("Device Slave Address", 6, 1, AddressText(decoder.At(6)));
  decoder.Put("Device ID", 7, 1, Hex(decoder.At(7)));
  decoder.Put(
      "Channel and Device Revision", 8, 1,
      "channel " + std::to_string(decoder.At(8) >> 4) + ", revision " + std::to_string(decoder.At(8) & 0xF));
  decoder.Put("Firmware Revision", 9, 2,
              std::to_string(decoder.At(9) & 0x7F) + "." + HexBytes(Part(decoder.Record(), 9, 1)));
  decoder.Put("IPMI Version", 11, 1,
              std::to_string(decoder.At(11) & 0xF) + "." + std::to_string(decoder.At(11) >> 4));
  decoder.Put("Manufacturer ID", 12, 3,
              Hex(decoder.Word(12) | static_cast<std::uint32_t>(decoder.At(14)) << 16, 6));
  decoder.Put("Product ID", 15, 2, Hex(decoder.Word(15), 4));
  decoder.Put("Device GUID", 17, 16, HexBytes(Part(decoder.Record(), 16, 16)));
}

void DecodeChannelInfo(SdrDecoder& decoder) {
  for (std::size_t channel = 0; channel < 8; ++channel) {
    const std::uint8_t info = decoder.At(6 + channel);
    decoder.Put("Channel " + std::to_string(channel), 6 + channel, 1,
                "protocol " + Hex(info & 0xF, 1) + ", receive LUN " + std::to_string(info >> 4 & 7) +
                    ((info & 0x80) != 0 ? ", can transmit" : ""));
  }
  decoder.Put("Messaging Interrupt", 14, 1, SdrCodeText(SdrCode::Interrupt, decoder.At(14)));
  decoder.Put("Event Message Buffer Interrupt", 15, 1, SdrCodeText(SdrCode::Interrupt, decoder.At(15)));
}

void DecodeOemRecord(SdrDecoder& decoder) {
  decoder.Put("Manufacturer ID", 6, 3,
              Hex(decoder.Word(6) | static_cast<std::uint32_t>(decoder.At(8)) << 16, 6));
  ByteView data = Part(decoder.Record(), 8, decoder.Size());
  if (data.empty()) return;
  const bool isText =
      std::all_of(data.begin(), data.end(), [](std::uint8_t b) { return b >= 0x20 && b < 0x7F; });
  decoder.Put("OEM Data", 9, data.size(), isText ? TextFromLatin1(data) : HexBytes(data));
}

}  // namespace varnok::boards
