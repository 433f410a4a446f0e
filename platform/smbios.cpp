#include "platform/smbios.h"

#include <limits>

#include "app/services/console.h"
#include "app/services/trace.h"
#include "firmware/firmware.h"
#include "firmware/lasting.h"
#include "platform/smbios_table.h"

namespace varnok {
namespace {

constexpr std::uint32_t kBiosType = 0;
constexpr std::uint32_t kBoardType = 2;
constexpr std::uint32_t kProcessorType = 4;
constexpr std::uint32_t kMemoryArrayType = 16;
constexpr std::uint32_t kMemoryDeviceType = 17;
constexpr std::uint32_t kNoSocketNumber = 65535;

struct SmbiosAccess {
  const void* entryPoint = nullptr;
};

bool Matches(const SmbiosStructureView& structure, std::uint32_t type, std::uint32_t handle) {
  return (type == kSmbiosAny || structure.type() == type) &&
         (handle >= kSmbiosAny || structure.handle() == handle);
}

/// A look-up in the table, from its start on.
class LookUp {
 public:
  explicit LookUp(const char* operation) : operation_(operation), scope_(operation) {}

  /// The next record of `type`; null when there is none.
  template <class Record>
  const Record* Next(std::uint32_t type) {
    std::size_t size = 0;
    if (SmbiosGetStructure(type, kSmbiosAny, record_, size, cursor_) != kSuccess) return nullptr;
    return std::get_if<Record>(&record_);
  }
  void StartAgain() { cursor_ = 0; }
  Status NotFound() const { return Fail(operation_, "SMBIOS structure not found", uefi_status::kNotFound); }

 private:
  const char* operation_;
  TraceScope scope_;
  SmbiosRecord record_;
  std::uint32_t cursor_ = 0;
};

/// A string field of the first record of `type`.
template <class Record>
Status GetText(const char* operation, std::uint32_t type, std::string Record::*field, std::string& text) {
  LookUp lookUp(operation);
  const auto* found = lookUp.Next<Record>(type);
  if (found == nullptr) return lookUp.NotFound();
  text = found->*field;
  return kSuccess;
}

std::uint32_t SocketNumber(std::string_view designation) {
  std::size_t position = designation.find_first_of("0123456789");
  if (position == designation.npos) return kNoSocketNumber;
  std::uint64_t number = 0;
  for (; position < designation.size() && designation[position] >= '0' && designation[position] <= '9';
       ++position)
    number = std::min<std::uint64_t>(number * 10 + static_cast<std::uint64_t>(designation[position] - '0'),
                                     std::numeric_limits<std::uint32_t>::max());
  return static_cast<std::uint32_t>(number);
}

}  // namespace

Status SmbiosInitialize() {
  TraceScope scope("SmbiosInitialize");
  if (!TheFirmware().HasImageHandle()) Print("smbiosapi.cpp - in Initialize ImageHandle returned null \n");
  const void*& entryPoint = Lasting<SmbiosAccess>().entryPoint;
  entryPoint = TheFirmware().FindConfigurationTable(kSmbiosTableGuid);
  if (entryPoint != nullptr) return kSuccess;
  return Fail("SmbiosInitialize", "SMBIOS table not found", uefi_status::kNotFound);
}

Status SmbiosGetStructure(std::uint32_t type, std::uint32_t handle, SmbiosRecord& record, std::size_t& size,
                          std::uint32_t& cursor) {
  TraceScope scope("SmbiosGetStructure");
  record = {};
  size = 0;
  std::optional<SmbiosTable> table = SmbiosTable::Open(Lasting<SmbiosAccess>().entryPoint);
  std::size_t offset = handle >= kSmbiosAny ? cursor : 0;
  for (std::size_t visited = 0; table && visited < table->structureCount(); ++visited) {
    // A structure of a broken length hides where the next one starts: the table ends there.
    std::optional<SmbiosStructureView> structure = table->At(offset);
    if (!structure) break;
    offset += structure->bytes().size();
    if (!Matches(*structure, type, handle)) continue;
    cursor = static_cast<std::uint32_t>(offset);
    if (!DecodeSmbiosStructure(*structure, record, size)) {
      return Fail("SmbiosGetStructure", "Memory allocation failed", smbios_status::kNoMemory);
    }
    if (type == kSmbiosAny || IsDecodedSmbiosType(type)) return kSuccess;
    return Fail("SmbiosGetStructure", "Unknown structure type", smbios_status::kUnknownType);
  }
  cursor = kSmbiosAny;
  return Fail("SmbiosGetStructure", "Structure not found", smbios_status::kNotFound);
}

Status SmbiosGetBiosVersion(std::string& text) {
  return GetText("SmbiosGetBiosVersion", kBiosType, &SmbiosBios::version, text);
}

Status SmbiosGetBoardProductName(std::string& text) {
  return GetText("SmbiosGetBoardProductName", kBoardType, &SmbiosBoard::product, text);
}

Status SmbiosGetMemoryDeviceSize(std::uint32_t& size) {
  LookUp lookUp("SmbiosGetMemoryDeviceSize");
  const auto* array = lookUp.Next<SmbiosMemoryArray>(kMemoryArrayType);
  if (array == nullptr) return lookUp.NotFound();
  std::uint32_t deviceCount = array->deviceCount;
  std::uint32_t largest = 0;
  lookUp.StartAgain();
  for (std::uint32_t i = 0; i < deviceCount; ++i) {
    const auto* device = lookUp.Next<SmbiosMemoryDevice>(kMemoryDeviceType);
    if (device == nullptr) return lookUp.NotFound();
    largest = std::max<std::uint32_t>(largest, device->size);
  }
  size = largest;
  return kSuccess;
}

Status SmbiosGetProcessorBySocket(std::uint32_t socket, SmbiosProcessor& processor) {
  LookUp lookUp("SmbiosGetProcessorBySocket");
  while (const auto* found = lookUp.Next<SmbiosProcessor>(kProcessorType)) {
    if (SocketNumber(found->socketDesignation) != socket) continue;
    processor = *found;
    return kSuccess;
  }
  return lookUp.NotFound();
}

Status SmbiosGetProcessorByIndex(std::uint32_t index, std::uint32_t& count, SmbiosProcessor& processor) {
  LookUp lookUp("SmbiosGetProcessorByIndex");
  count = 0;
  while (const auto* found = lookUp.Next<SmbiosProcessor>(kProcessorType))
    if (count++ == index) processor = *found;
  return index < count ? kSuccess : lookUp.NotFound();
}

}  // namespace varnok
