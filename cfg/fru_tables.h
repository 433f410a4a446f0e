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

struct FruFieldRow {
  const char* keyword;  ///< compared on its first two characters
  const char* description;
  std::optional<FruFieldId> chassis;
  std::optional<FruFieldId> board;
  std::optional<FruFieldId> product;
  std::uint32_t bit = 0;  ///< by its place
};

inline constexpr auto kFruFields = [] {
  auto rows = std::to_array<FruFieldRow>({
      {"CT", "Type", FruFieldId::ChassisType, {}, {}},
      {"MN", "Manufacturer Name", {}, FruFieldId::BoardManufacturer, FruFieldId::ProductManufacturer},
      {"PN", "Product Name", {}, FruFieldId::BoardProductName, FruFieldId::ProductName},
      {"P#", "Part Number", FruFieldId::ChassisPartNumber, FruFieldId::BoardPartNumber,
       FruFieldId::ProductPartNumber},
      {"S#", "Serial Number", FruFieldId::ChassisSerialNumber, FruFieldId::BoardSerialNumber,
       FruFieldId::ProductSerialNumber},
      {"PV", "Product Version", {}, {}, FruFieldId::ProductVersion},
      {"AT", "Asset Tag", {}, {}, FruFieldId::ProductAssetTag},
      {"ID", "Manufacturer ID", {}, FruFieldId::BoardFruFileId, FruFieldId::ProductFruFileId},
      {"MD", "Manufacturer Date & Time", {}, FruFieldId::BoardMfgDateTime, {}},
      {"AMx", "Additional Manufacturer Field", {}, {}, {}},
  });
  for (std::size_t place = 0; place < rows.size(); ++place) rows[place].bit = std::uint32_t{1} << place;
  return rows;
}();
static_assert(kFruFields.size() <= 32, "a field has a bit of its own");

/// The places of the fields that have rules of their own.
namespace fru_field {
constexpr std::uint32_t PlaceOf(std::string_view keyword) {
  std::uint32_t place = 0;
  while (place < kFruFields.size() && kFruFields[place].keyword != keyword) ++place;
  return place;
}
inline constexpr std::uint32_t kChassisType = PlaceOf("CT");
inline constexpr std::uint32_t kMfgDate = PlaceOf("MD");
inline constexpr std::uint32_t kCustom = PlaceOf("AMx");
inline constexpr std::uint32_t kNone = PlaceOf({});
}  // namespace fru_field

/// The bits of the fields that an area has: those of its column, and the custom fields.
constexpr std::uint32_t FruFieldMask(std::optional<FruFieldId> FruFieldRow::*column) {
  std::uint32_t mask = kFruFields[fru_field::kCustom].bit;
  for (const FruFieldRow& row : kFruFields) mask |= row.*column ? row.bit : 0;
  return mask;
}

/// The places of the areas in kFruAreas.
enum class FruAreaIndex : std::uint32_t { Header, InternalUse, Chassis, Board, Product, MultiRec, None };
inline constexpr std::size_t kFruAreaCount = static_cast<std::size_t>(FruAreaIndex::None);

struct FruAreaRow {
  const char* keyword;
  std::uint32_t fieldMask;  ///< bits of the FruFieldRows that the area has
  FruAreaId area;
};

inline constexpr std::array<FruAreaRow, kFruAreaCount> kFruAreas{{
    {"Header", 0, FruAreaId::CommonHeaderArea},
    {"InternalUse", 0, FruAreaId::InternalUseArea},
    {"Chassis", FruFieldMask(&FruFieldRow::chassis), FruAreaId::ChassisInfoArea},
    {"Board", FruFieldMask(&FruFieldRow::board), FruAreaId::BoardInfoArea},
    {"Product", FruFieldMask(&FruFieldRow::product), FruAreaId::ProductInfoArea},
    {"MultiRec", 0, FruAreaId::MultiRecordArea},
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
