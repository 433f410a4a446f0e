#include "rehearsal/misfits.h"

#include <algorithm>
#include <set>

#include "app/services/format.h"
#include "boards/fru_image.h"
#include "boards/sdr_record.h"
#include "firmware/ipmi.h"

namespace varnok::rehearsal {
namespace {

// IPMI v2.0, sections 43.8 and 43.9.
constexpr std::size_t kAddressByte = 5;
constexpr std::size_t kFruIdByte = 6;
constexpr std::size_t kAccessByte = 7;
constexpr std::uint8_t kIsLogicalFru = 0x80;
constexpr std::size_t kLocatorBytes = 8;

void AddFruMisfits(const DeviceImage& device, std::vector<std::string>& misfits) {
  const boards::Decoded before = boards::DecodeFru(device.before);
  const boards::Decoded after = boards::DecodeFru(device.after);
  for (const boards::FruAreaRow& area : boards::kFruAreas)
    if (before.Find(area.id) != nullptr && after.Find(area.id) == nullptr)
      misfits.push_back(device.device + " has no " + area.title + " any more");
  std::set<std::string> known;
  for (const boards::Problem& problem : before.problems) known.insert(problem.text);
  for (const boards::Problem& problem : after.problems)
    if (known.insert(problem.text).second) misfits.push_back(device.device + ": " + problem.text);
}

/// What the record says is there and is not; empty for any other record.
std::string AbsentThing(const boards::Board& board, const Bytes& record) {
  if (record.size() < kLocatorBytes) return {};
  const std::uint8_t type = boards::HeadOf(record).type;
  const unsigned address = record[kAddressByte] & 0xFEU;
  if (type == sdr_type::kControllerLocator && address != boards::kBmc) {
    const bool isThere = std::any_of(board.controllers.begin(), board.controllers.end(),
                                     [&](const auto& each) { return each.address == address; });
    return isThere ? "" : Format("controller %02Xh", address);
  }
  if (type != sdr_type::kFruLocator || (record[kAccessByte] & kIsLogicalFru) == 0) return {};
  const bool isThere =
      std::any_of(board.devices.begin(), board.devices.end(), [&](const boards::Device& each) {
        return each.address.kind == boards::DeviceKind::Fru && each.address.controller == address &&
               each.address.id == record[kFruIdByte];
      });
  return isThere ? "" : Format("FRU %u of controller %02Xh", record[kFruIdByte], address);
}

void AddRecordMisfits(const boards::Board& board, const DeviceImage& device,
                      std::vector<std::string>& misfits) {
  std::vector<Bytes> before, after;
  (void)boards::SplitRecords(device.before, before);
  (void)boards::SplitRecords(device.after, after);
  std::set<std::string> known;
  for (const Bytes& record : before) known.insert(AbsentThing(board, record));
  for (const Bytes& record : after)
    if (const std::string thing = AbsentThing(board, record); !thing.empty() && known.insert(thing).second)
      misfits.push_back("the record '" + boards::HeadOf(record).name + "' names " + thing +
                        ", which the board does not have");
}

}  // namespace

std::vector<std::string> MisfitsOf(const boards::Board& before, const BoardAfter& after) {
  std::vector<std::string> misfits;
  for (const DeviceImage& device : after.devices) {
    if (device.device == "SDR")
      AddRecordMisfits(before, device, misfits);
    else
      AddFruMisfits(device, misfits);
  }
  return misfits;
}

}  // namespace varnok::rehearsal
