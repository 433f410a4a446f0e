// The decoding of one record: fields put by their byte numbers, and one function for each record type.
#pragma once

#include <string>

#include "boards/decoded.h"

namespace varnok::boards {

/// Bytes are numbered from 1, as IPMI v2.0, chapter 43, numbers them.
class SdrDecoder {
 public:
  explicit SdrDecoder(ByteView record);

  ByteView Record() const { return record_; }
  std::size_t Size() const { return record_.size(); }
  /// 0 behind the record's end.
  std::uint8_t At(std::size_t byte) const {
    return byte <= record_.size() ? record_[byte - 1] : std::uint8_t{0};
  }
  std::uint32_t Word(std::size_t byte) const {
    return At(byte) | static_cast<std::uint32_t>(At(byte + 1)) << 8;
  }

  Field& Put(std::string label, std::size_t byte, std::size_t length, std::string value);
  /// A field that is seldom worth a line.
  void PutQuiet(std::string label, std::size_t byte, std::size_t length, std::string value);
  void PutCode(std::string label, std::size_t byte, const std::string& text);
  void PutEntity(const char* label, std::size_t byte);
  void Complain(std::size_t offset, std::string text);

  /// What was put, and the bytes that nothing was put for.
  Decoded Finish();

 private:
  ByteView record_;
  Decoded result_;
};

void DecodeFullSensor(SdrDecoder& decoder);
void DecodeCompactSensor(SdrDecoder& decoder);
void DecodeEventOnlySensor(SdrDecoder& decoder);
void DecodeAssociation(SdrDecoder& decoder);
void DecodeDeviceRelative(SdrDecoder& decoder);
void DecodeGenericLocator(SdrDecoder& decoder);
void DecodeFruLocator(SdrDecoder& decoder);
void DecodeControllerLocator(SdrDecoder& decoder);
void DecodeConfirmation(SdrDecoder& decoder);
void DecodeChannelInfo(SdrDecoder& decoder);
void DecodeOemRecord(SdrDecoder& decoder);

}  // namespace varnok::boards
