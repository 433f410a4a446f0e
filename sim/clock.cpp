#include "sim/clock.h"

#include <charconv>
#include <chrono>
#include <ctime>

namespace varnok::sim {
namespace {

std::int64_t SecondsOf(int year, unsigned month, unsigned day, int hour, int minute, int second) {
  auto days =
      std::chrono::sys_days(std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(day));
  return std::chrono::seconds(days.time_since_epoch() + std::chrono::hours(hour) +
                              std::chrono::minutes(minute) + std::chrono::seconds(second))
      .count();
}

/// The decimal digits of text[from, from + count); -1 when there is anything else.
int Digits(std::string_view text, std::size_t from, std::size_t count) {
  int value = 0;
  for (char c : text.substr(from, count)) {
    if (c < '0' || c > '9') return -1;
    value = value * 10 + (c - '0');
  }
  return value;
}

std::int64_t LocalSecondsNow() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return SecondsOf(local.tm_year + 1900, static_cast<unsigned>(local.tm_mon + 1),
                   static_cast<unsigned>(local.tm_mday), local.tm_hour, local.tm_min, local.tm_sec);
}

}  // namespace

bool VirtualClock::SetStart(std::string_view text) {
  if (text == "now") {
    startSeconds_ = LocalSecondsNow();
    return true;
  }
  constexpr std::string_view kShape = "dddd-dd-ddTdd:dd:dd";
  if (text.size() != kShape.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kShape[i] != 'd' && text[i] != kShape[i]) return false;
  }
  const int year = Digits(text, 0, 4), month = Digits(text, 5, 2), day = Digits(text, 8, 2);
  const int hour = Digits(text, 11, 2), minute = Digits(text, 14, 2), second = Digits(text, 17, 2);
  if (year < 1970 || month < 1 || day < 1 || hour < 0 || minute < 0 || second < 0) return false;
  if (!(std::chrono::year(year) / month / day).ok() || hour > 23 || minute > 59 || second > 59) return false;
  startSeconds_ =
      SecondsOf(year, static_cast<unsigned>(month), static_cast<unsigned>(day), hour, minute, second);
  return true;
}

WallClock VirtualClock::Now() const {
  const std::int64_t seconds = startSeconds_ + static_cast<std::int64_t>(elapsed_ / 1'000'000);
  const std::int64_t ofDay = seconds % 86400;
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(seconds / 86400))};
  return {static_cast<std::uint16_t>(static_cast<int>(date.year())),
          static_cast<std::uint8_t>(static_cast<unsigned>(date.month())),
          static_cast<std::uint8_t>(static_cast<unsigned>(date.day())),
          static_cast<std::uint8_t>(ofDay / 3600),
          static_cast<std::uint8_t>(ofDay / 60 % 60),
          static_cast<std::uint8_t>(ofDay % 60)};
}

}  // namespace varnok::sim
