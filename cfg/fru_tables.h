// The keywords of FRUAREA and FRUFIELD, and which field an area has.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "firmware/status.h"
#include "fru/fru_types.h"

namespace varnok {

/// The places of the areas in kFruAreas.
enum class FruAreaIndex : std::uint32_t { Header, InternalUse, Chassis, Board, Product, MultiRec, None };
inline constexpr std::size_t kFruAreaCount = 6;

struct FruAreaRow {
  const char* keyword;
  std::uint32_t fieldMask;  ///< bits of the FruFieldRows that the area has
  FruAreaId area;
};

inline constexpr std::array<FruAreaRow, kFruAreaCount> kFruAreas{{
    {"Header", 0, FruAreaId::CommonHeaderArea},
    {"InternalUse", 0, FruAreaId::InternalUseArea},
    {"Chassis", 0x219, FruAreaId::ChassisInfoArea},
    {"Board", 0x39E, FruAreaId::BoardInfoArea},
    {"Product", 0x2FE, FruAreaId::ProductInfoArea},
    {"MultiRec", 0, FruAreaId::MultiRecordArea},
}};

/// The places of the fields that have rules of their own.
namespace fru_field {
inline constexpr std::uint32_t kChassisType = 0;
inline constexpr std::uint32_t kMfgDate = 8;
inline constexpr std::uint32_t kCustom = 9;
inline constexpr std::uint32_t kNone = 10;
}  // namespace fru_field

struct FruFieldRow {
  const char* keyword;  ///< compared on its first two characters
  std::uint32_t bit;
  const char* description;
  std::optional<FruFieldId> chassis;
  std::optional<FruFieldId> board;
  std::optional<FruFieldId> product;
};

inline constexpr std::array<FruFieldRow, 10> kFruFields{{
    {"CT", 0x1, "Type", FruFieldId::ChassisType, {}, {}},
    {"MN", 0x2, "Manufacturer Name", {}, FruFieldId::BoardManufacturer, FruFieldId::ProductManufacturer},
    {"PN", 0x4, "Product Name", {}, FruFieldId::BoardProductName, FruFieldId::ProductName},
    {"P#", 0x8, "Part Number", FruFieldId::ChassisPartNumber, FruFieldId::BoardPartNumber,
     FruFieldId::ProductPartNumber},
    {"S#", 0x10, "Serial Number", FruFieldId::ChassisSerialNumber, FruFieldId::BoardSerialNumber,
     FruFieldId::ProductSerialNumber},
    {"PV", 0x20, "Product Version", {}, {}, FruFieldId::ProductVersion},
    {"AT", 0x40, "Asset Tag", {}, {}, FruFieldId::ProductAssetTag},
    {"ID", 0x80, "Manufacturer ID", {}, FruFieldId::BoardFruFileId, FruFieldId::ProductFruFileId},
    {"MD", 0x100, "Manufacturer Date & Time", {}, FruFieldId::BoardMfgDateTime, {}},
    {"AMx", 0x200, "Additional Manufacturer Field", {}, {}, {}},
}};

/// The place of the field whose keyword the text begins with, in any case; fru_field::kNone for none.
std::uint32_t FindFruField(std::string_view keyword);
/// The field's number in an area; nothing when the area lacks it, and for the custom fields.
std::optional<FruFieldId> FixedFruField(const FruFieldRow& row, FruAreaIndex area);
/// What is added to a custom field's number (from 1) for its index in the area: the fixed fields less one.
std::uint32_t CustomFruFieldOffset(FruAreaIndex area);

/// Makes the FRU manager's message, if it has one, the engine's; returns `status`.
Status ReportFruFailure(Status status);
/// Forgets the FRU manager's message, so that none of an earlier failure is reported for a later one.
void ForgetFruMessage();

}  // namespace varnok
