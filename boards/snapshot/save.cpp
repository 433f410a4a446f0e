#include "boards/snapshot/save.h"

#include "app/services/format.h"

namespace varnok::boards {
namespace {

constexpr std::string_view kSdrFile = "sdr.bin";
constexpr std::string_view kSmbiosFile = "smbios.bin";
constexpr std::string_view kConfigFile = "board.json";

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    // JSON is UTF-8: what is no ASCII stands as its Latin-1 character.
    if (byte < 0x20 || byte > 0x7E) {
      quoted += Format("\\u%04X", byte);
      continue;
    }
    if (character == '"' || character == '\\') quoted += '\\';
    quoted += character;
  }
  return quoted += '"';
}

std::string HexText(std::span<const std::uint8_t> bytes) {
  std::string text = "[";
  for (std::uint8_t byte : bytes) text += Format(text.size() > 1 ? ", \"0x%02X\"" : "\"0x%02X\"", byte);
  return text += ']';
}

const char* Truth(bool value) {
  return value ? "true" : "false";
}

/// "2.0" of 02h. A digit that is none has no text; such a version counts as the usual one.
std::string VersionText(std::uint8_t version) {
  if ((version & 15) > 9 || version >> 4 > 9) return "2.0";
  return Format("%u.%u", version & 15u, version >> 4u);
}

std::string IdentityText(const Identity& identity, std::string_view indent) {
  std::string text = "{\n";
  auto line = [&](const std::string& member) {
    text.append(indent).append("  ").append(member).append(",\n");
  };
  line(Format("\"deviceId\": \"0x%02X\"", identity.deviceId));
  line(Format("\"deviceRevision\": %u", identity.deviceRevision));
  line(Format("\"providesSdrs\": %s", Truth(identity.providesSdrs)));
  line(Format("\"firmwareMajor\": %u", identity.firmwareMajor));
  line(Format("\"firmwareMinor\": \"0x%02X\"", identity.firmwareMinor));
  line("\"ipmiVersion\": " + Quoted(VersionText(identity.ipmiVersion)));
  line(Format("\"additionalSupport\": \"0x%02X\"", identity.additionalSupport));
  line(Format("\"manufacturerId\": \"0x%06X\"", identity.manufacturerId));
  line(Format("\"productId\": \"0x%04X\"", identity.productId));
  if (identity.hasAuxiliary) line("\"auxiliary\": " + HexText(identity.auxiliary));
  line(Format("\"answersAuxiliary\": %s", Truth(identity.hasAuxiliary)));
  text.resize(text.size() - 2);
  return text.append("\n").append(indent).append("}");
}

std::string DeviceText(const Device& device) {
  const DeviceAddress& address = device.address;
  std::string text = "{";
  if (address.kind == DeviceKind::Fru)
    text += Format("\"id\": %u, ", address.id);
  else
    text += Format("\"kind\": \"%s\", \"bus\": \"0x%02X\", \"address\": \"0x%02X\", ",
                   address.kind == DeviceKind::At24c02 ? "AT24C02" : "DS1624S", address.bus, address.slave);
  text += Format("\"file\": %s, \"size\": %u", Quoted(FileNameOf(address)), device.bytes.size());
  if (device.isWordAccess) text += ", \"access\": \"word\"";
  if (device.isReadOnly) text += ", \"readOnly\": true";
  return text += '}';
}

/// A member whose value is an array with one row a line; nothing for no rows.
void AppendRows(std::string& text, std::string_view indent, std::string_view key,
                const std::vector<std::string>& rows) {
  if (rows.empty()) return;
  text.append(",\n").append(indent).append("\"").append(key).append("\": [");
  for (std::size_t i = 0; i < rows.size(); ++i)
    text.append(i == 0 ? "\n" : ",\n").append(indent).append("  ").append(rows[i]);
  text.append("\n").append(indent).append("]");
}

/// The devices of one controller, the inventory devices or the EEPROMs.
std::vector<std::string> DeviceRows(const Board& board, const Controller& controller, bool areFrus) {
  std::vector<std::string> rows;
  for (const Device& device : board.devices)
    if (device.address.controller == controller.address && device.address.channel == controller.channel &&
        (device.address.kind == DeviceKind::Fru) == areFrus)
      rows.push_back(DeviceText(device));
  return rows;
}

void AppendDevices(std::string& text, std::string_view indent, const Board& board,
                   const Controller& controller) {
  AppendRows(text, indent, "frus", DeviceRows(board, controller, true));
  AppendRows(text, indent, "eeproms", DeviceRows(board, controller, false));
}

std::string SensorText(const SensorReading& sensor) {
  std::string text = Format("{\"number\": \"0x%02X\", \"reading\": %s", sensor.number, HexText(sensor.bytes));
  if (sensor.completionCode != 0) text += Format(", \"completionCode\": \"0x%02X\"", sensor.completionCode);
  return text += '}';
}

std::string ControllerText(const Board& board, const Controller& controller) {
  constexpr std::string_view kIndent = "      ";
  std::string text = Format("{\n      \"name\": %s,\n      \"address\": \"0x%02X\",\n      \"channel\": %u",
                            Quoted(controller.name), controller.address, controller.channel);
  if (controller.identity) text += ",\n      \"identity\": " + IdentityText(*controller.identity, kIndent);
  AppendDevices(text, kIndent, board, controller);
  return text += "\n    }";
}

}  // namespace

std::string BoardJson(const Board& board) {
  constexpr std::string_view kIndent = "    ";
  std::string text = "{\n  \"description\": " + Quoted(board.description);
  text += ",\n  \"smbios\": " + Quoted(board.smbios.empty() ? std::string_view() : kSmbiosFile);
  text += ",\n  \"bmc\": {\n    \"sdrs\": {\"file\": ";
  text += Quoted(board.hasRepository ? kSdrFile : std::string_view()) + "}";
  if (board.bmc.identity) {
    text += ",\n    \"identity\": " + IdentityText(*board.bmc.identity, kIndent);
    if (board.bmc.identity->isInTransferMode) text += ",\n    \"transferMode\": {\"active\": true}";
  }
  AppendDevices(text, kIndent, board, board.bmc);
  std::vector<std::string> sensors;
  for (const SensorReading& sensor : board.sensors) sensors.push_back(SensorText(sensor));
  AppendRows(text, kIndent, "sensors", sensors);
  text += "\n  }";
  std::vector<std::string> controllers;
  for (const Controller& controller : board.controllers)
    controllers.push_back(ControllerText(board, controller));
  AppendRows(text, "  ", "controllers", controllers);
  return text += "\n}\n";
}

Status SaveBoard(const Board& board, FolderSink& folder, std::string& failed) {
  auto write = [&](std::string_view name, std::span<const std::uint8_t> bytes) {
    const Status status = folder.Write(name, bytes);
    if (status != kSuccess) failed = name;
    return status;
  };
  for (const Device& device : board.devices)
    if (Status status = write(FileNameOf(device.address), device.bytes); status != kSuccess) return status;
  if (board.hasRepository)
    if (Status status = write(kSdrFile, JoinRecords(board.records)); status != kSuccess) return status;
  if (!board.smbios.empty())
    if (Status status = write(kSmbiosFile, board.smbios); status != kSuccess) return status;
  const std::string config = BoardJson(board);
  return write(kConfigFile, {reinterpret_cast<const std::uint8_t*>(config.data()), config.size()});
}

}  // namespace varnok::boards
