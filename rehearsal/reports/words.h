// How the reports say things: counts, times, ranges, answers. All text is UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rehearsal/report.h"

namespace varnok::rehearsal {

/// Text of scripts, devices and people made safe to show: ill-formed bytes become U+FFFD, control characters
/// but tab and new line `\x1B`, characters that turn the direction of what follows `\u202E`. What is left are
/// characters that XML 1.0 allows.
std::string Printable(std::string_view text);
/// The first `width` characters of printable text on one line, with an ellipsis when there are more.
std::string Shortened(std::string_view text, std::size_t width);
/// Characters of printable text.
std::size_t WidthOf(std::string_view text);

/// "4,096"
std::string Grouped(std::size_t number);
/// "1 road", "4,096 roads"
std::string Count(std::size_t number, std::string_view noun);
/// "3", "1–4, 7" of ascending numbers; after `limit` ranges the rest is counted: "1, 3, 5 and 12 more".
std::string Ranges(const std::vector<std::size_t>& numbers, std::size_t limit = 12);
/// Virtual time: "0.4 ms", "12.3 s", "5 min 02 s".
std::string TimeWords(std::uint64_t microseconds);
/// "0Ah"
std::string HexByte(std::uint8_t byte);

/// Boards are letters where roads are numbers: A to Z, AA, AB.
std::string BoardName(std::size_t board);
/// Roads are counted from 1.
std::string RoadName(std::size_t road);
std::vector<std::size_t> FromOne(const std::vector<std::size_t>& indices);

/// "each kind of fault at each request of a road", or that it was one in so many of these.
std::string FaultChoiceWords(const Report& report);

std::string_view KindWord(QuestionKind kind);
/// "2 (Pedestal, 8 bays)", "Y", "'VWS1' (refused)"
std::string AnswerWords(const Question& question, const Answer& answer);
/// "FRU 0: 9 changes, SDR: 60 changes", "nothing changed"
std::string ChangeSummary(const BoardAfter& board);
/// "Inlet Temp: 'A' → 'B'" without part and group.
std::string DifferenceWords(const boards::Difference& difference);

/// "status 0", "status 4, ERROR: ..."
std::string EndWords(int status, std::string_view message);
/// The road whose end `road` has: itself, or the last one of those that it joins.
std::size_t EndOf(const Report& report, std::size_t road);

}  // namespace varnok::rehearsal
