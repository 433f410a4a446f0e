// Disturbed runs put together: what a table of thousands says in a few lines.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

/// What becomes of a disturbed run, the gravest first: Gravity, with what is harmless told apart.
enum class Cell : std::uint8_t {
  Crashed,
  FalseSuccess,
  CannotBeShown,
  NoWayBack,
  ToldSuccess,
  Stuck,
  Endless,
  RerunHelps,  ///< an error, and a board in between that the same package mends
  Old,         ///< an error, and the board as it was
  Wanted,      ///< the wanted board
};
inline constexpr std::size_t kCellCount = 10;

struct CellWords {
  std::string_view style;  ///< a class of the page's
  std::string_view title;  ///< a few words
  std::string_view meaning;
};
const CellWords& WordsOf(Cell cell);
inline bool IsGrave(Cell cell) {
  return cell <= Cell::Endless;
}
Cell CellOf(const FaultRun& run);
/// How many runs came to what, by Cell.
std::array<std::size_t, kCellCount> CountCells(const Report& report);

/// Runs that came to the same: on each of these roads these kinds of faults at each of these requests.
struct FaultGroup {
  Cell cell = Cell::Wanted;
  std::vector<std::size_t> roads{};  ///< ascending, from 0
  std::vector<std::string> kinds{};
  std::vector<std::size_t> requests{};  ///< ascending, from 1
  const FaultRun* example = nullptr;    ///< the first of them

  std::size_t Runs() const { return roads.size() * kinds.size() * requests.size(); }
};

/// The grave ones, by gravity, then the ones with most runs first. They point into `report`.
std::vector<FaultGroup> GraveGroups(const Report& report);

/// "completion code C0h, completion code C1h and 22 more kinds"
std::string KindsWords(const std::vector<std::string>& kinds, std::size_t limit);
/// "road 1–4, request 17, 18 (Read FRU Data)"
std::string PlaceWords(const Report& report, const FaultGroup& group, std::size_t limit);
/// "Write FRU Data" for requests of one name, "Write FRU Data, Read FRU Data" for more; empty if not known.
std::string RequestNames(const Report& report, std::size_t road, const std::vector<std::size_t>& requests);
/// What the example came to: status and message, the board, what a rerun and restore reach.
std::string Explanation(const FaultRun& run);

}  // namespace varnok::rehearsal
