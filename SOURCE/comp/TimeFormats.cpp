#include "TimeFormats.h"

#include <cctype>
#include <chrono>

namespace {

// Reads `count` digits at `at`; false when they are not all digits.
bool Digits(const std::string& text, std::size_t at, std::size_t count, int& out) {
  if (at + count > text.size()) return false;
  out = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    if (!std::isdigit(static_cast<unsigned char>(text[i]))) return false;
    out = out * 10 + (text[i] - '0');
  }
  return true;
}

}  // namespace

std::optional<TimeFormat> TimeFormatFromName(const std::string& name) {
  if (name == "index") return TimeFormat::Index;
  if (name == "yyyyqx") return TimeFormat::Quarterly;
  if (name == "yyyymxx") return TimeFormat::Monthly;
  if (name == "yyyy/mm/dd") return TimeFormat::Daily;
  return std::nullopt;
}

const char* TimeFormatName(TimeFormat format) {
  switch (format) {
    case TimeFormat::Index: return "index";
    case TimeFormat::Quarterly: return "yyyyqx";
    case TimeFormat::Monthly: return "yyyymxx";
    case TimeFormat::Daily: return "yyyy/mm/dd";
  }
  return "";
}

std::optional<long long> ParseTimeText(TimeFormat format, const std::string& text) {
  int year = 0;
  int part = 0;
  int day = 0;
  switch (format) {
    case TimeFormat::Index: return std::nullopt;
    case TimeFormat::Quarterly:
      if (text.size() != 6 || !Digits(text, 0, 4, year) || (text[4] != 'q' && text[4] != 'Q') ||
          !Digits(text, 5, 1, part) || part < 1 || part > 4) {
        return std::nullopt;
      }
      return year * 4LL + (part - 1);
    case TimeFormat::Monthly:
      if (text.size() != 7 || !Digits(text, 0, 4, year) || (text[4] != 'm' && text[4] != 'M') ||
          !Digits(text, 5, 2, part) || part < 1 || part > 12) {
        return std::nullopt;
      }
      return year * 12LL + (part - 1);
    case TimeFormat::Daily: {
      if (text.size() != 10 || !Digits(text, 0, 4, year) || text[4] != '/' ||
          !Digits(text, 5, 2, part) || text[7] != '/' || !Digits(text, 8, 2, day)) {
        return std::nullopt;
      }
      const std::chrono::year_month_day date{std::chrono::year(year),
                                             std::chrono::month(static_cast<unsigned>(part)),
                                             std::chrono::day(static_cast<unsigned>(day))};
      if (!date.ok()) return std::nullopt;
      return std::chrono::sys_days(date).time_since_epoch().count();
    }
  }
  return std::nullopt;
}
