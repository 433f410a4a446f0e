#include "rehearsal/reports/words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "firmware/host/utf8.h"

namespace varnok::rehearsal {
namespace {

template <typename... Values>
std::string Formatted(const char* format, Values... values) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

bool IsControl(char16_t c) {
  return (c < 0x20 && c != u'\t' && c != u'\n') || (c >= 0x7F && c < 0xA0);
}

/// Marks, embeddings, overrides and isolates of direction (Unicode Bidirectional Algorithm, section 2).
bool TurnsDirection(char16_t c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069);
}

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

std::string Printable(std::string_view text) {
  // What files and keyboards give is nearly always plain.
  if (std::all_of(text.begin(), text.end(), [](char c) { return (c >= 0x20 && c < 0x7F) || c == '\n'; }))
    return std::string(text);
  std::u16string shown;
  const auto escape = [&shown](const std::string& ascii) { shown.append(ascii.begin(), ascii.end()); };
  for (const char16_t c : host::FromUtf8(text)) {
    if (IsControl(c))
      escape(Formatted("\\x%02X", static_cast<unsigned>(c)));
    else if (TurnsDirection(c))
      escape(Formatted("\\u%04X", static_cast<unsigned>(c)));
    else
      shown += c >= 0xFFFE ? u'\uFFFD' : c;
  }
  return host::ToUtf8(shown);
}

std::size_t WidthOf(std::string_view text) {
  return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

std::string Shortened(std::string_view text, std::size_t width) {
  std::string line = Printable(text);
  std::replace(line.begin(), line.end(), '\n', ' ');
  if (WidthOf(line) <= width) return line;
  std::size_t end = 0;
  for (std::size_t characters = 0; end < line.size(); ++end)
    if (!IsContinuation(line[end]) && ++characters == width) break;
  return line.substr(0, end) + "…";
}

std::string Grouped(std::size_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
  return digits;
}

std::string Count(std::size_t number, std::string_view noun) {
  return Grouped(number).append(" ").append(noun).append(number == 1 ? "" : "s");
}

std::string Ranges(const std::vector<std::size_t>& numbers, std::size_t limit) {
  std::string text;
  std::size_t ranges = 0;
  for (std::size_t i = 0; i < numbers.size();) {
    if (ranges++ == limit) return text + " and " + Grouped(numbers.size() - i) + " more";
    std::size_t last = i;
    while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
    if (!text.empty()) text += ", ";
    text += std::to_string(numbers[i]);
    if (last > i) text += (last == i + 1 ? ", " : "–") + std::to_string(numbers[last]);
    i = last + 1;
  }
  return text;
}

std::string TimeWords(std::uint64_t microseconds) {
  const double seconds = static_cast<double>(microseconds) / 1e6;
  if (microseconds == 0) return "0 s";
  if (seconds < 0.1) return Formatted("%.1f ms", seconds * 1e3);
  if (seconds < 99.95) return Formatted("%.1f s", seconds);
  const std::uint64_t whole = (microseconds + 500'000) / 1'000'000;
  if (whole < 3600)
    return Formatted("%u min %02u s", static_cast<unsigned>(whole / 60), static_cast<unsigned>(whole % 60));
  return Formatted("%llu h %02u min", static_cast<unsigned long long>(whole / 3600),
                   static_cast<unsigned>(whole / 60 % 60));
}

std::string HexByte(std::uint8_t byte) {
  return Formatted("%02Xh", static_cast<unsigned>(byte));
}

std::string BoardName(std::size_t board) {
  std::string name;
  for (std::size_t rest = board + 1; rest > 0; rest = (rest - 1) / 26)
    name.insert(name.begin(), static_cast<char>('A' + (rest - 1) % 26));
  return name;
}

std::string RoadName(std::size_t road) {
  return "road " + std::to_string(road + 1);
}

std::vector<std::size_t> FromOne(const std::vector<std::size_t>& indices) {
  std::vector<std::size_t> numbers = indices;
  for (std::size_t& number : numbers) ++number;
  return numbers;
}

std::string FaultChoiceWords(const Report& report) {
  constexpr const char* kAll = "each kind of fault at each request of a road";
  return report.faultStep == 1 ? kAll : std::string("one in ") + Grouped(report.faultStep) + " of: " + kAll;
}

std::string_view KindWord(QuestionKind kind) {
  constexpr std::array<std::string_view, 5> kWords = {"menu", "prompt", "header", "value", "probe"};
  return kWords[static_cast<std::size_t>(kind)];
}

std::string AnswerWords(const Question& question, const Answer& answer) {
  std::string words = Printable(answer.text);
  if (question.kind == QuestionKind::Value) words = "'" + words + "'";
  std::size_t item = 0;
  std::from_chars(answer.text.data(), answer.text.data() + answer.text.size(), item);
  if (question.kind == QuestionKind::Menu && item > 0 && item <= question.choices.size())
    words += " (" + Printable(question.choices[item - 1]) + ")";
  return answer.isInvalid ? words + ", refused" : words;
}

std::string ChangeSummary(const BoardAfter& board) {
  std::string text;
  for (std::size_t i = 0; i < board.differences.size();) {
    const std::string& part = board.differences[i].part;
    std::size_t end = i;
    while (end < board.differences.size() && board.differences[end].part == part) ++end;
    if (!text.empty()) text += ", ";
    text += Printable(part) + ": " + Count(end - i, "change");
    i = end;
  }
  return text.empty() ? "nothing changed" : text;
}

std::string DifferenceWords(const boards::Difference& difference) {
  const auto quoted = [&](const std::string& value) {
    return difference.isText ? "'" + Printable(value) + "'" : Printable(value);
  };
  const std::string field = difference.field.empty() ? "" : Printable(difference.field) + ": ";
  switch (difference.change) {
    case boards::Change::Added:
      return field + "added" + (difference.field.empty() ? "" : ", " + quoted(difference.after));
    case boards::Change::Removed:
      return field + "removed" + (difference.field.empty() ? "" : ", was " + quoted(difference.before));
    case boards::Change::Changed:
      break;
  }
  return field + quoted(difference.before) + " → " + quoted(difference.after);
}

std::string EndWords(int status, std::string_view message) {
  return "status " + std::to_string(status) + (message.empty() ? "" : ", " + Printable(message));
}

std::size_t EndOf(const Report& report, std::size_t road) {
  // A road joins an earlier one, or one that ended earlier; more steps than roads would be a circle.
  for (std::size_t steps = 0; steps < report.roads.size() && report.roads[road].joins; ++steps)
    road = *report.roads[road].joins;
  return road;
}

}  // namespace varnok::rehearsal
