// The SMBIOS structures that the program knows, decoded (SMBIOS 3.5, section 7). Members are in the
// standard's order; strings are resolved; a field that an older table leaves out is 0 or empty.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>

#include "firmware/pool.h"
#include "platform/smbios_table.h"

namespace varnok {

/// BIOS Information (type 0).
struct SmbiosBios {
  std::string vendor;
  std::string version;
  std::uint16_t startSegment = 0;
  std::string releaseDate;
  std::uint8_t romSize = 0;
  std::uint64_t characteristics = 0;
  std::uint16_t characteristicsExtension = 0;
  std::uint8_t majorRelease = 0;
  std::uint8_t minorRelease = 0;
  std::uint8_t controllerMajorRelease = 0;
  std::uint8_t controllerMinorRelease = 0;
  std::uint16_t extendedRomSize = 0;
};

/// System Information (type 1).
struct SmbiosSystem {
  std::string manufacturer;
  std::string productName;
  std::string version;
  std::string serialNumber;
  std::array<std::uint8_t, 16> uuid{};
  std::uint8_t wakeUpType = 0;
  std::string skuNumber;
  std::string family;
};

/// Baseboard Information (type 2).
struct SmbiosBoard {
  std::string manufacturer;
  std::string product;
  std::string version;
  std::string serialNumber;
  std::string assetTag;
  std::uint8_t featureFlags = 0;
  std::string location;
  std::uint16_t chassisHandle = 0;
  std::uint8_t boardType = 0;
};

/// System Enclosure or Chassis (type 3).
struct SmbiosChassis {
  std::string manufacturer;
  std::uint8_t type = 0;  ///< with the lock in bit 7
  std::string version;
  std::string serialNumber;
  std::string assetTag;
  std::uint8_t bootUpState = 0;
  std::uint8_t powerSupplyState = 0;
  std::uint8_t thermalState = 0;
  std::uint8_t securityStatus = 0;
  std::uint32_t oemDefined = 0;
  std::uint8_t height = 0;
  std::uint8_t powerCordCount = 0;
};

/// Processor Information (type 4).
struct SmbiosProcessor {
  std::string socketDesignation;
  std::uint8_t type = 0;
  std::uint8_t family = 0;
  std::string manufacturer;
  std::uint64_t id = 0;  ///< signature, then feature flags
  std::string version;
  std::uint8_t voltage = 0;
  std::uint16_t externalClock = 0;  ///< MHz, as both speeds
  std::uint16_t maximumSpeed = 0;
  std::uint16_t currentSpeed = 0;
  std::uint8_t status = 0;
  std::uint8_t upgrade = 0;
  std::uint16_t level1Cache = 0;  ///< handle, as the next two
  std::uint16_t level2Cache = 0;
  std::uint16_t level3Cache = 0;
  std::string serialNumber;
  std::string assetTag;
  std::string partNumber;
  std::uint8_t coreCount = 0;
  std::uint8_t enabledCoreCount = 0;
  std::uint8_t threadCount = 0;
  std::uint16_t characteristics = 0;
  std::uint16_t family2 = 0;
  std::uint16_t coreCount2 = 0;
  std::uint16_t enabledCoreCount2 = 0;
  std::uint16_t threadCount2 = 0;

  bool hasCoreCount = false;  ///< the record reaches to its core count, as from SMBIOS 2.5 on
  bool IsPopulated() const { return (status & 0x40) != 0; }
  std::uint32_t Signature() const { return static_cast<std::uint32_t>(id); }
};

/// Physical Memory Array (type 16).
struct SmbiosMemoryArray {
  std::uint8_t location = 0;
  std::uint8_t use = 0;
  std::uint8_t errorCorrection = 0;
  std::uint32_t maximumCapacity = 0;  ///< KiB
  std::uint16_t errorHandle = 0;
  std::uint16_t deviceCount = 0;
  std::uint64_t extendedMaximumCapacity = 0;  ///< bytes
};

/// Memory Device (type 17).
struct SmbiosMemoryDevice {
  std::uint16_t arrayHandle = 0;
  std::uint16_t errorHandle = 0;
  std::uint16_t totalWidth = 0;  ///< bits, as the next
  std::uint16_t dataWidth = 0;
  std::uint16_t size = 0;  ///< MiB, or KiB with bit 15 set; FFFFh unknown, 7FFFh see extendedSize
  std::uint8_t formFactor = 0;
  std::uint8_t deviceSet = 0;
  std::string deviceLocator;
  std::string bankLocator;
  std::uint8_t memoryType = 0;
  std::uint16_t typeDetail = 0;
  std::uint16_t speed = 0;
  std::string manufacturer;
  std::string serialNumber;
  std::string assetTag;
  std::string partNumber;
  std::uint8_t attributes = 0;
  std::uint32_t extendedSize = 0;  ///< MiB
  std::uint16_t configuredSpeed = 0;
  std::uint16_t minimumVoltage = 0;  ///< millivolts, as the next two
  std::uint16_t maximumVoltage = 0;
  std::uint16_t configuredVoltage = 0;
};

/// A decoded structure; the bytes of one whose type is not decoded; or nothing.
using SmbiosRecord = std::variant<std::monostate, SmbiosBios, SmbiosSystem, SmbiosBoard, SmbiosChassis,
                                  SmbiosProcessor, SmbiosMemoryArray, SmbiosMemoryDevice, PoolBuffer>;

bool IsDecodedSmbiosType(std::uint32_t type);

/// Decodes the structure, or copies it when its type is not decoded; `size` is the record's size in bytes.
/// False when there is no memory for the copy.
bool DecodeSmbiosStructure(const SmbiosStructureView& structure, SmbiosRecord& record, std::size_t& size);

}  // namespace varnok
