#include "platform/smbios_records.h"

#include <algorithm>
#include <concepts>
#include <tuple>

namespace varnok {
namespace {

/// A member of a record and the offset of its field in the structure.
template <class Record, class Member>
struct Field {
  std::uint8_t offset;
  Member Record::*member;
};
template <class Record, class Member>
Field(int, Member Record::*) -> Field<Record, Member>;

constexpr std::tuple kBiosFields{
    Field{0x04, &SmbiosBios::vendor},
    Field{0x05, &SmbiosBios::version},
    Field{0x06, &SmbiosBios::startSegment},
    Field{0x08, &SmbiosBios::releaseDate},
    Field{0x09, &SmbiosBios::romSize},
    Field{0x0A, &SmbiosBios::characteristics},
    Field{0x12, &SmbiosBios::characteristicsExtension},
    Field{0x14, &SmbiosBios::majorRelease},
    Field{0x15, &SmbiosBios::minorRelease},
    Field{0x16, &SmbiosBios::controllerMajorRelease},
    Field{0x17, &SmbiosBios::controllerMinorRelease},
    Field{0x18, &SmbiosBios::extendedRomSize},
};

constexpr std::tuple kSystemFields{
    Field{0x04, &SmbiosSystem::manufacturer}, Field{0x05, &SmbiosSystem::productName},
    Field{0x06, &SmbiosSystem::version},      Field{0x07, &SmbiosSystem::serialNumber},
    Field{0x08, &SmbiosSystem::uuid},         Field{0x18, &SmbiosSystem::wakeUpType},
    Field{0x19, &SmbiosSystem::skuNumber},    Field{0x1A, &SmbiosSystem::family},
};

constexpr std::tuple kBoardFields{
    Field{0x04, &SmbiosBoard::manufacturer}, Field{0x05, &SmbiosBoard::product},
    Field{0x06, &SmbiosBoard::version},      Field{0x07, &SmbiosBoard::serialNumber},
    Field{0x08, &SmbiosBoard::assetTag},     Field{0x09, &SmbiosBoard::featureFlags},
    Field{0x0A, &SmbiosBoard::location},     Field{0x0B, &SmbiosBoard::chassisHandle},
    Field{0x0D, &SmbiosBoard::boardType},
};

constexpr std::tuple kChassisFields{
    Field{0x04, &SmbiosChassis::manufacturer},     Field{0x05, &SmbiosChassis::type},
    Field{0x06, &SmbiosChassis::version},          Field{0x07, &SmbiosChassis::serialNumber},
    Field{0x08, &SmbiosChassis::assetTag},         Field{0x09, &SmbiosChassis::bootUpState},
    Field{0x0A, &SmbiosChassis::powerSupplyState}, Field{0x0B, &SmbiosChassis::thermalState},
    Field{0x0C, &SmbiosChassis::securityStatus},   Field{0x0D, &SmbiosChassis::oemDefined},
    Field{0x11, &SmbiosChassis::height},           Field{0x12, &SmbiosChassis::powerCordCount},
};

constexpr std::uint8_t kCoreCountAt = 0x23;
constexpr std::tuple kProcessorFields{
    Field{0x04, &SmbiosProcessor::socketDesignation},
    Field{0x05, &SmbiosProcessor::type},
    Field{0x06, &SmbiosProcessor::family},
    Field{0x07, &SmbiosProcessor::manufacturer},
    Field{0x08, &SmbiosProcessor::id},
    Field{0x10, &SmbiosProcessor::version},
    Field{0x11, &SmbiosProcessor::voltage},
    Field{0x12, &SmbiosProcessor::externalClock},
    Field{0x14, &SmbiosProcessor::maximumSpeed},
    Field{0x16, &SmbiosProcessor::currentSpeed},
    Field{0x18, &SmbiosProcessor::status},
    Field{0x19, &SmbiosProcessor::upgrade},
    Field{0x1A, &SmbiosProcessor::level1Cache},
    Field{0x1C, &SmbiosProcessor::level2Cache},
    Field{0x1E, &SmbiosProcessor::level3Cache},
    Field{0x20, &SmbiosProcessor::serialNumber},
    Field{0x21, &SmbiosProcessor::assetTag},
    Field{0x22, &SmbiosProcessor::partNumber},
    Field{kCoreCountAt, &SmbiosProcessor::coreCount},
    Field{0x24, &SmbiosProcessor::enabledCoreCount},
    Field{0x25, &SmbiosProcessor::threadCount},
    Field{0x26, &SmbiosProcessor::characteristics},
    Field{0x28, &SmbiosProcessor::family2},
    Field{0x2A, &SmbiosProcessor::coreCount2},
    Field{0x2C, &SmbiosProcessor::enabledCoreCount2},
    Field{0x2E, &SmbiosProcessor::threadCount2},
};

constexpr std::tuple kMemoryArrayFields{
    Field{0x04, &SmbiosMemoryArray::location},
    Field{0x05, &SmbiosMemoryArray::use},
    Field{0x06, &SmbiosMemoryArray::errorCorrection},
    Field{0x07, &SmbiosMemoryArray::maximumCapacity},
    Field{0x0B, &SmbiosMemoryArray::errorHandle},
    Field{0x0D, &SmbiosMemoryArray::deviceCount},
    Field{0x0F, &SmbiosMemoryArray::extendedMaximumCapacity},
};

constexpr std::tuple kMemoryDeviceFields{
    Field{0x04, &SmbiosMemoryDevice::arrayHandle},
    Field{0x06, &SmbiosMemoryDevice::errorHandle},
    Field{0x08, &SmbiosMemoryDevice::totalWidth},
    Field{0x0A, &SmbiosMemoryDevice::dataWidth},
    Field{0x0C, &SmbiosMemoryDevice::size},
    Field{0x0E, &SmbiosMemoryDevice::formFactor},
    Field{0x0F, &SmbiosMemoryDevice::deviceSet},
    Field{0x10, &SmbiosMemoryDevice::deviceLocator},
    Field{0x11, &SmbiosMemoryDevice::bankLocator},
    Field{0x12, &SmbiosMemoryDevice::memoryType},
    Field{0x13, &SmbiosMemoryDevice::typeDetail},
    Field{0x15, &SmbiosMemoryDevice::speed},
    Field{0x17, &SmbiosMemoryDevice::manufacturer},
    Field{0x18, &SmbiosMemoryDevice::serialNumber},
    Field{0x19, &SmbiosMemoryDevice::assetTag},
    Field{0x1A, &SmbiosMemoryDevice::partNumber},
    Field{0x1B, &SmbiosMemoryDevice::attributes},
    Field{0x1C, &SmbiosMemoryDevice::extendedSize},
    Field{0x20, &SmbiosMemoryDevice::configuredSpeed},
    Field{0x22, &SmbiosMemoryDevice::minimumVoltage},
    Field{0x24, &SmbiosMemoryDevice::maximumVoltage},
    Field{0x26, &SmbiosMemoryDevice::configuredVoltage},
};

void ReadField(const SmbiosStructureView& structure, std::size_t offset, std::string& text) {
  text = structure.Text(offset);
}

void ReadField(const SmbiosStructureView& structure, std::size_t offset,
               std::array<std::uint8_t, 16>& bytes) {
  if (structure.Holds(offset, bytes.size()))
    std::copy_n(structure.bytes().begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
}

template <std::unsigned_integral Number>
void ReadField(const SmbiosStructureView& structure, std::size_t offset, Number& number) {
  number = static_cast<Number>(structure.Number(offset, sizeof(Number)));
}

template <class Record, class Fields>
void Decode(const SmbiosStructureView& structure, const Fields& fields, SmbiosRecord& record,
            std::size_t& size) {
  Record& decoded = record.emplace<Record>();
  size = sizeof(Record);
  std::apply([&](const auto&... field) { (ReadField(structure, field.offset, decoded.*field.member), ...); },
             fields);
}

void DecodeProcessor(const SmbiosStructureView& structure, SmbiosRecord& record, std::size_t& size) {
  Decode<SmbiosProcessor>(structure, kProcessorFields, record, size);
  std::get_if<SmbiosProcessor>(&record)->hasCoreCount = structure.Holds(kCoreCountAt, 1);
}

using Decoder = void (*)(const SmbiosStructureView&, SmbiosRecord&, std::size_t&);

template <class Record, const auto& fields>
void DecodeFields(const SmbiosStructureView& structure, SmbiosRecord& record, std::size_t& size) {
  Decode<Record>(structure, fields, record, size);
}

struct DecoderRow {
  std::uint8_t type;
  Decoder decode;
};
constexpr DecoderRow kDecoders[] = {
    {0, DecodeFields<SmbiosBios, kBiosFields>},
    {1, DecodeFields<SmbiosSystem, kSystemFields>},
    {2, DecodeFields<SmbiosBoard, kBoardFields>},
    {3, DecodeFields<SmbiosChassis, kChassisFields>},
    {4, DecodeProcessor},
    {16, DecodeFields<SmbiosMemoryArray, kMemoryArrayFields>},
    {17, DecodeFields<SmbiosMemoryDevice, kMemoryDeviceFields>},
};

const DecoderRow* FindDecoder(std::uint32_t type) {
  for (const DecoderRow& row : kDecoders)
    if (row.type == type) return &row;
  return nullptr;
}

}  // namespace

bool IsDecodedSmbiosType(std::uint32_t type) {
  return FindDecoder(type) != nullptr;
}

bool DecodeSmbiosStructure(const SmbiosStructureView& structure, SmbiosRecord& record, std::size_t& size) {
  if (const DecoderRow* row = FindDecoder(structure.type())) {
    row->decode(structure, record, size);
    return true;
  }
  PoolBuffer copy;
  if (!copy.Allocate(structure.bytes().size())) return false;
  std::copy(structure.bytes().begin(), structure.bytes().end(), copy.data());
  size = copy.size();
  record = std::move(copy);
  return true;
}

}  // namespace varnok
