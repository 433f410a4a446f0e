// The SMBIOS tables of the built-in board (SMBIOS 2.8; field order as the SMBIOS specification's chapter 7
// lists it).
#include "sim/default_board.h"
#include "sim/smbios_builder.h"

namespace varnok::sim {
namespace {

constexpr std::string_view kMaker = "Varnok Works";
constexpr std::uint16_t kNoHandle = 0xFFFF;
constexpr std::uint16_t kNoErrorHandle = 0xFFFE;

constexpr std::uint16_t kChassisHandle = 0x0003;
constexpr std::uint16_t kMemoryArrayHandle = 0x0010;
constexpr int kMemorySlots = 8;

Bytes Bios() {
  return SmbiosStructure(0, 0x0000)
      .String("Varnok Works Firmware")
      .String("HRTH.S2.R03.01.07.0045.061020250830")
      .Word(0xF000)
      .String("06/10/2025")
      .Byte(0xFF)                // 16 MiB ROM
      .Quad(0x0000000018099880)  // PCI, upgradeable, shadowing, CD boot, selectable boot, EDD, print screen,
                                 // keyboard
      .Byte(0x03)                // ACPI, USB legacy
      .Byte(0x0D)                // BIOS boot specification, targeted content, UEFI
      .Byte(1)
      .Byte(7)
      .Byte(0xFF)
      .Byte(0xFF)
      .Finish();
}

Bytes System() {
  const Bytes uuid = {0x10, 0x20, 0x30, 0x40, 0x57, 0x56, 0x32, 0x53,
                      0x80, 0x02, 0x02, 0x56, 0x57, 0x10, 0x20, 0x30};
  return SmbiosStructure(1, 0x0001)
      .String(kMaker)
      .String("Hearth S2-2U")
      .String("R3")
      .String("VWS225060417")
      .Raw(uuid)
      .Byte(6)  // woken by the power switch
      .String("VW-S2-2U-12LFF")
      .String("Hearth")
      .Finish();
}

Bytes Baseboard() {
  return SmbiosStructure(2, 0x0002)
      .String(kMaker)
      .String("Hearth S2 Server Board")
      .String("VW-S2-MB-R3")
      .String("VWSB25061234")
      .String("ASSET-000417")
      .Byte(0x09)  // hosting board, replaceable
      .String("Tray 1")
      .Word(kChassisHandle)
      .Byte(10)  // motherboard
      .Byte(0)
      .Finish();
}

Bytes Chassis() {
  return SmbiosStructure(3, kChassisHandle)
      .String(kMaker)
      .Byte(0x17)  // rack mount
      .String("VW-CH2U-12")
      .String("VWCH25060417")
      .String("ASSET-000417")
      .Byte(3)
      .Byte(3)
      .Byte(3)  // boot-up, supply and thermal state safe
      .Byte(3)  // no security
      .Long(0)
      .Byte(2)  // rack units
      .Byte(2)  // power cords
      .Byte(0)
      .Byte(0)
      .String("VW-CH2U-12LFF")
      .Finish();
}

Bytes Processor(int socket) {
  return SmbiosStructure(4, static_cast<std::uint16_t>(0x0003 + socket))
      .String("CPU " + std::to_string(socket))
      .Byte(3)  // central processor
      .Byte(1)  // family: other
      .String(kMaker)
      .Quad(0x0000000000020640)
      .String("Varnok Anvil 2640 @ 2.60GHz")
      .Byte(0x80 | 18)  // 1.8 V
      .Word(100)
      .Word(3500)
      .Word(2600)
      .Byte(0x41)  // populated, enabled
      .Byte(1)     // socket type: other
      .Word(kNoHandle)
      .Word(kNoHandle)
      .Word(kNoHandle)
      .String("VWCPU2506" + std::to_string(1000 + socket))
      .String("")
      .String("VW-ANVIL-2640")
      .Byte(8)
      .Byte(8)
      .Byte(16)
      .Word(0x00FC)
      .Word(1)
      .Finish();
}

Bytes MemoryArray() {
  return SmbiosStructure(16, kMemoryArrayHandle)
      .Byte(3)           // on the system board
      .Byte(3)           // system memory
      .Byte(6)           // multi-bit ECC
      .Long(0x20000000)  // 512 GiB in KiB
      .Word(kNoErrorHandle)
      .Word(kMemorySlots)
      .Quad(0)
      .Finish();
}

Bytes MemoryDevice(int slot) {
  // Every other slot is populated: one DIMM for each channel.
  const bool populated = slot % 2 == 0;
  const std::string letter(1, static_cast<char>('A' + slot / 2));
  const std::string locator = "DIMM_" + letter + std::to_string(1 + slot % 2);
  return SmbiosStructure(17, static_cast<std::uint16_t>(kMemoryArrayHandle + 1 + slot))
      .Word(kMemoryArrayHandle)
      .Word(kNoErrorHandle)
      .Word(populated ? 72 : 0)
      .Word(populated ? 64 : 0)
      .Word(populated ? 16384 : 0)  // MiB
      .Byte(9)                      // DIMM
      .Byte(0)
      .String(locator)
      .String(slot < kMemorySlots / 2 ? "NODE 1" : "NODE 2")
      .Byte(populated ? 0x1A : 2)         // DDR4, or unknown
      .Word(populated ? 0x2080 : 0x0004)  // synchronous, registered; or unknown
      .Word(populated ? 2400 : 0)
      .String(populated ? kMaker : "")
      .String(populated ? "VWDM2505" + std::to_string(2000 + slot) : "")
      .String("")
      .String(populated ? "VW-D4R-16G-2400" : "")
      .Byte(populated ? 2 : 0)
      .Long(0)
      .Word(populated ? 2400 : 0)
      .Word(1200)
      .Word(1200)
      .Word(1200)
      .Finish();
}

Bytes IpmiDevice() {
  return SmbiosStructure(38, 0x0030)
      .Byte(1)     // KCS
      .Byte(0x20)  // IPMI 2.0
      .Byte(0x20)  // slave address
      .Byte(0xFF)
      .Quad(0xCA2 | 1)  // I/O space
      .Byte(0)
      .Byte(0)
      .Finish();
}

}  // namespace

Bytes DefaultSmbiosDump() {
  std::vector<Bytes> structures = {Bios(),       System(),     Baseboard(),  Chassis(),
                                   Processor(1), Processor(2), MemoryArray()};
  for (int slot = 0; slot < kMemorySlots; ++slot) structures.push_back(MemoryDevice(slot));
  structures.push_back(IpmiDevice());
  structures.push_back(SmbiosStructure(127, 0x007F).Finish());
  return BuildSmbiosDump(2, 8, structures);
}

}  // namespace varnok::sim
