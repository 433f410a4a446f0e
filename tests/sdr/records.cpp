#include "tests/sdr/records.h"

#include <algorithm>

namespace varnok::testing {

Bytes Joined(Bytes head, const Bytes& tail) {
  head.insert(head.end(), tail.begin(), tail.end());
  return head;
}

Bytes Record(std::uint8_t type, const Bytes& body, std::uint16_t id) {
  Bytes record(body.size() + 5);
  record[0] = static_cast<std::uint8_t>(id);
  record[1] = static_cast<std::uint8_t>(id >> 8);
  record[2] = 0x51;
  record[3] = type;
  record[4] = static_cast<std::uint8_t>(body.size());
  std::copy(body.begin(), body.end(), record.begin() + 5);
  return record;
}

Bytes NamedRecord(std::uint8_t type, Bytes body, std::string_view name, std::uint16_t id) {
  body.push_back(static_cast<std::uint8_t>(0xC0 | name.size()));
  body.insert(body.end(), name.begin(), name.end());
  return Record(type, body, id);
}

Bytes TemperatureRecord(std::string_view name, std::uint16_t id) {
  return NamedRecord(0x01,
                     {0x21, 0x03, 0x30, 0x07, 0x81, 0xFF, 0x68, 0x01, 0x01, 0x95, 0xFA, 0x95, 0x7A, 0x3F,
                      0xFF, 0x80, 0x01, 0x00, 0x47, 0x01, 0xAA, 0x02, 0x85, 0x4B, 0xA1, 0x07, 0x18, 0x28,
                      0x0A, 0xFF, 0x00, 0x5F, 0x55, 0x50, 0x01, 0x05, 0x0A, 0x02, 0x03, 0x00, 0x00, 0x5A},
                     name, id);
}

Bytes FruLocatorRecord(std::string_view name, std::uint16_t id) {
  return NamedRecord(0x11, {0x20, 0x02, 0x80, 0x00, 0x00, 0x10, 0x00, 0x11, 0x01, 0x00}, name, id);
}

Bytes AssociationRecord(std::uint16_t id) {
  return Record(0x08, {0x17, 0x01, 0x80, 0x03, 0x01, 0x03, 0x02, 0x08, 0x01, 0x08, 0x10}, id);
}

Bytes RandomRecord(const SdrType& type, std::mt19937& random) {
  auto below = [&random](unsigned limit) { return static_cast<std::uint8_t>(random() % limit); };
  const bool isNamed = type.rows.lengthRule == SdrLength::WithIdString;
  const std::size_t size = type.rows.lengthRule == SdrLength::AtMost ? 10U + below(55) : type.rows.size;
  const std::size_t nameLength = isNamed ? below(31) : 0;
  Bytes record(size + nameLength);
  // Half of all strings are text that a file can quote.
  const bool isText = below(2) == 0;
  for (std::size_t i = 0; i < record.size(); ++i)
    record[i] = static_cast<std::uint8_t>(isText && i >= 8 ? 0x20 + below(95) : below(256));
  record[3] = type.type;
  record[4] = static_cast<std::uint8_t>(record.size() - 5);
  if (isNamed) record[size - 1] = static_cast<std::uint8_t>((record[size - 1] & 0xE0) | nameLength);
  return record;
}

}  // namespace varnok::testing
