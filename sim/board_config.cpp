#include "sim/board_config.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "sim/image.h"
#include "sim/json_object.h"

namespace varnok::sim {
namespace {

constexpr std::size_t kLongestAnswer = 56;

/// "2.0" as the version byte 02h, "1.5" as 51h: least significant digit in the high nibble.
std::uint8_t ReadIpmiVersion(JsonObject& object) {
  const std::string text = object.Text("ipmiVersion", "2.0");
  if (text.size() != 3 || text[1] != '.' || text[0] < '0' || text[0] > '9' || text[2] < '0' ||
      text[2] > '9') {
    object.Fail("ipmiVersion", "\"" + text + "\" is not a version like \"2.0\"");
  }
  return static_cast<std::uint8_t>((text[2] - '0') << 4 | (text[0] - '0'));
}

/// The bytes of an answer, which must fit a bridged one.
Bytes ReadAnswer(JsonObject& object, const std::string& key) {
  Bytes answer = object.ByteArray(key);
  if (answer.size() > kLongestAnswer) object.Fail(key, "must have at most 56 bytes");
  return answer;
}

IdentityConfig ReadIdentity(JsonObject object, const IdentityConfig& fallback) {
  IdentityConfig identity;
  identity.deviceId = object.Byte("deviceId", fallback.deviceId);
  identity.deviceRevision =
      static_cast<std::uint8_t>(object.Number("deviceRevision", fallback.deviceRevision, 0, 15));
  identity.providesSdrs = object.Boolean("providesSdrs", fallback.providesSdrs);
  identity.firmwareMajor =
      static_cast<std::uint8_t>(object.Number("firmwareMajor", fallback.firmwareMajor, 0, 127));
  identity.firmwareMinor = object.Byte("firmwareMinor", fallback.firmwareMinor);
  identity.ipmiVersion = ReadIpmiVersion(object);
  identity.additionalSupport = object.Byte("additionalSupport", fallback.additionalSupport);
  identity.manufacturerId = object.Number("manufacturerId", fallback.manufacturerId, 0, 0xFFFFFF);
  identity.productId = static_cast<std::uint16_t>(object.Number("productId", fallback.productId, 0, 0xFFFF));
  const auto auxiliary = object.ByteArray("auxiliary");
  if (object.Has("auxiliary") && auxiliary.size() != identity.auxiliary.size()) {
    object.Fail("auxiliary", "must be an array of 4 bytes");
  }
  std::copy(auxiliary.begin(), auxiliary.end(), identity.auxiliary.begin());
  identity.answersAuxiliary = object.Boolean("answersAuxiliary", fallback.answersAuxiliary);
  object.Finish();
  return identity;
}

TransferModeConfig ReadTransferMode(JsonObject object) {
  TransferModeConfig mode;
  mode.active = object.Boolean("active", mode.active);
  mode.stuck = object.Boolean("stuck", mode.stuck);
  mode.key = object.Text("key", mode.key);
  object.Finish();
  return mode;
}

FruLimits ReadLimits(JsonObject object) {
  FruLimits limits;
  limits.read = object.Byte("read", limits.read);
  limits.write = object.Byte("write", limits.write);
  limits.readCode = object.Byte("readCode", limits.readCode);
  limits.writeCode = object.Byte("writeCode", limits.writeCode);
  object.Finish();
  return limits;
}

FruConfig ReadFru(JsonObject& object) {
  FruConfig fru;
  fru.id = object.RequiredByte("id");
  fru.path = object.PathOf("file");
  fru.file = object.RequiredText("file");
  fru.size = object.OptionalNumber("size", 0, 0xFFFF);
  fru.readOnly = object.Boolean("readOnly", false);
  const std::string access = object.Text("access", "byte");
  if (access != "byte" && access != "word") object.Fail("access", "must be \"byte\" or \"word\"");
  fru.wordAccess = access == "word";
  object.Finish();
  return fru;
}

EepromConfig ReadEeprom(JsonObject& object) {
  EepromConfig eeprom;
  eeprom.path = object.PathOf("file");
  const std::string kind = object.RequiredText("kind");
  if (kind != "AT24C02" && kind != "DS1624S") object.Fail("kind", "must be \"AT24C02\" or \"DS1624S\"");
  eeprom.kind = kind == "AT24C02" ? EepromKind::At24c02 : EepromKind::Ds1624s;
  eeprom.bus = object.RequiredByte("bus");
  eeprom.address = object.RequiredByte("address");
  if ((eeprom.address & 1) != 0) object.Fail("address", "must be even: bit 0 is the read/write bit");
  // A DS1624S is addressed by one byte, an AT24C02 here by two.
  eeprom.size = object.Number("size", 256, 1, eeprom.kind == EepromKind::Ds1624s ? 256 : 0x10000);
  eeprom.readOnly = object.Boolean("readOnly", false);
  eeprom.file = object.RequiredText("file");
  object.Finish();
  return eeprom;
}

SdrConfig ReadSdrs(JsonObject object) {
  SdrConfig sdrs;
  sdrs.isFileNamed = object.Has("file");
  sdrs.file = object.Text("file", sdrs.file);
  sdrs.capacity = object.Number("capacity", sdrs.capacity, 0, 0x100000);
  sdrs.eraseMilliseconds = object.Number("eraseMilliseconds", sdrs.eraseMilliseconds, 0, 3'600'000);
  sdrs.readLimit = static_cast<std::uint8_t>(object.Number("readLimit", sdrs.readLimit, 1, 62));
  sdrs.endId = static_cast<std::uint16_t>(object.Number("endId", sdrs.endId, 0, 0xFFFF));
  object.Finish();
  return sdrs;
}

SensorConfig ReadSensor(JsonObject& object) {
  SensorConfig sensor;
  sensor.number = object.RequiredByte("number");
  sensor.reading = ReadAnswer(object, "reading");
  sensor.completionCode = object.Byte("completionCode", 0);
  object.Finish();
  return sensor;
}

LanParameterConfig ReadLanParameter(JsonObject& object) {
  LanParameterConfig parameter;
  parameter.channel = static_cast<std::uint8_t>(object.Number("channel", 1, 0, 15));
  parameter.parameter = object.RequiredByte("parameter");
  parameter.set = object.Byte("set", 0);
  parameter.block = object.Byte("block", 0);
  parameter.data = ReadAnswer(object, "data");
  object.Finish();
  return parameter;
}

OemConfig ReadOem(JsonObject& object) {
  constexpr std::array<std::uint8_t, 4> kKnown = {0x14, 0x93, 0x94, 0x97};
  OemConfig oem;
  oem.command = object.RequiredByte("command");
  if (std::find(kKnown.begin(), kKnown.end(), oem.command) == kKnown.end())
    object.Fail("command", "must be 0x14, 0x93, 0x94 or 0x97");
  oem.data = object.ByteArray("data");
  oem.answer = ReadAnswer(object, "answer");
  oem.completionCode = object.Byte("completionCode", 0);
  object.Finish();
  return oem;
}

KeyValueConfig ReadKeyValue(JsonObject& object) {
  KeyValueConfig pair;
  pair.key = object.RequiredText("key");
  pair.value = object.RequiredText("value");
  if (pair.key.empty() || pair.key.size() > kLongestAnswer) object.Fail("key", "must have 1 to 56 bytes");
  if (pair.value.size() > kLongestAnswer) object.Fail("value", "must have at most 56 bytes");
  object.Finish();
  return pair;
}

AnswerConfig ReadAnswers(JsonObject& bmc) {
  AnswerConfig answers;
  for (JsonObject& sensor : bmc.Children("sensors")) answers.sensors.push_back(ReadSensor(sensor));
  for (JsonObject& parameter : bmc.Children("lanParameters"))
    answers.lanParameters.push_back(ReadLanParameter(parameter));
  for (JsonObject& oem : bmc.Children("oem")) answers.oem.push_back(ReadOem(oem));
  for (JsonObject& pair : bmc.Children("keyValues")) answers.keyValues.push_back(ReadKeyValue(pair));
  return answers;
}

/// The keys that the BMC and the controllers behind it share.
ControllerConfig ReadController(JsonObject& object, const IdentityConfig& fallback) {
  ControllerConfig controller;
  controller.identity = ReadIdentity(object.Child("identity"), fallback);
  controller.coldResetMilliseconds =
      object.Number("coldResetMilliseconds", controller.coldResetMilliseconds, 0, 3'600'000);
  controller.limits = ReadLimits(object.Child("fruLimits"));
  for (JsonObject& fru : object.Children("frus")) {
    controller.frus.push_back(ReadFru(fru));
    const auto same =
        std::count_if(controller.frus.begin(), controller.frus.end(),
                      [&](const FruConfig& other) { return other.id == controller.frus.back().id; });
    if (same > 1) fru.Fail("id", "is taken by another device of this controller");
  }
  for (JsonObject& eeprom : object.Children("eeproms")) {
    controller.eeproms.push_back(ReadEeprom(eeprom));
    const EepromConfig& added = controller.eeproms.back();
    const auto same = std::count_if(
        controller.eeproms.begin(), controller.eeproms.end(),
        [&](const auto& other) { return other.bus == added.bus && other.address == added.address; });
    if (same > 1) eeprom.Fail("address", "is taken by another device on this bus");
  }
  return controller;
}

ControllerConfig ReadIpmbController(JsonObject& object) {
  // A satellite controller is a plainer thing than the BMC.
  IdentityConfig fallback;
  fallback.deviceId = 0x30;
  fallback.providesSdrs = false;
  fallback.additionalSupport = 0x08;  // FRU inventory device
  fallback.productId = 0x0001;
  ControllerConfig controller = ReadController(object, fallback);
  controller.name = object.Text("name", "");
  controller.address = object.RequiredByte("address");
  if ((controller.address & 1) != 0) object.Fail("address", "must be even: an IPMB slave address");
  if (controller.address == kBmcAddress) object.Fail("address", "is the BMC's own");
  controller.channel = static_cast<std::uint8_t>(object.Number("channel", 0, 0, 11));
  object.Finish();
  return controller;
}

void ReadClock(JsonObject object, BoardConfig& config) {
  config.clockStart = object.Text("start", config.clockStart);
  config.exchangeMicroseconds =
      object.Number("exchangeMicroseconds", config.exchangeMicroseconds, 0, 1'000'000);
  object.Finish();
}

void ReadControllers(JsonObject& root, BoardConfig& config) {
  for (JsonObject& object : root.Children("controllers")) {
    const ControllerConfig added = ReadIpmbController(object);
    for (const ControllerConfig& other : config.controllers) {
      if (other.address == added.address && other.channel == added.channel) {
        object.Fail("address", "is taken by another controller of this channel");
      }
    }
    config.controllers.push_back(added);
  }
}

BoardConfig ReadRoot(JsonObject root) {
  BoardConfig config;
  root.Text("description", "");
  ReadClock(root.Child("clock"), config);
  JsonObject bmc = root.Child("bmc");
  config.bmc = ReadController(bmc, IdentityConfig{});
  config.bmc.name = "BMC";
  config.transferMode = ReadTransferMode(bmc.Child("transferMode"));
  config.sdrs = ReadSdrs(bmc.Child("sdrs"));
  config.bmc.answers = ReadAnswers(bmc);
  bmc.Finish();
  ReadControllers(root, config);
  for (JsonObject& fault : root.Children("faults")) config.faults.push_back(ReadFaultRule(fault));
  // An empty name says that the board has no tables; a name whose file is missing is an error.
  config.smbiosFile = root.Text("smbios", "smbios.bin");
  if (config.smbiosFile->empty()) config.smbiosFile.reset();
  root.Finish();
  return config;
}

}  // namespace

BoardConfig ReadBoardConfig(const std::filesystem::path& file) {
  const JsonValue json = ParseJson(ReadWholeFile(file));
  return ReadRoot(JsonObject(json, ""));
}

}  // namespace varnok::sim
