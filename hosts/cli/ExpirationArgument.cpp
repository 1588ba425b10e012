#include "ExpirationArgument.h"

#include <QuillbayCore/DateExpirationOption.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

using core::DateExpirationOption;
using platform::Date;

// 0000-01-01T00:00:00Z and 10000-01-01T00:00:00Z.
constexpr double kFirstWritableSecond = -62'167'219'200.0;
constexpr double kFirstUnwritableSecond = 253'402'300'800.0;
// No count beyond it stays below the year 10000, and the calendar cannot overflow up to it.
constexpr int kMostMonths = 12 * 10'000;

bool isDigit(char character) { return character >= '0' && character <= '9'; }

/// Takes fixed-width fields off the front of an RFC 3339 text and remembers the first failure.
class FieldReader {
 public:
  explicit FieldReader(std::string_view text) : rest_(text) {}

  int number(std::size_t digitCount) {
    int value = 0;
    for (std::size_t index = 0; index < digitCount; ++index) {
      if (rest_.empty() || !isDigit(rest_.front())) return fail();
      value = value * 10 + (take() - '0');
    }
    return value;
  }

  double fraction() {
    double value = 0;
    if (!accept(".")) return value;
    if (rest_.empty() || !isDigit(rest_.front())) return fail();
    for (double weight = 0.1; !rest_.empty() && isDigit(rest_.front()); weight /= 10) {
      value += weight * (take() - '0');
    }
    return value;
  }

  bool accept(std::string_view oneOf) {
    if (rest_.empty() || oneOf.find(rest_.front()) == std::string_view::npos) return false;
    last_ = take();
    return true;
  }

  void expect(std::string_view oneOf) {
    if (!accept(oneOf)) fail();
  }

  void expectEnd() {
    if (!rest_.empty()) fail();
  }

  char last() const { return last_; }
  bool failed() const { return failed_; }

 private:
  char take() {
    const char front = rest_.front();
    rest_.remove_prefix(1);
    return front;
  }

  int fail() {
    failed_ = true;
    rest_ = {};
    return 0;
  }

  std::string_view rest_;
  char last_ = 0;
  bool failed_ = false;
};

std::chrono::minutes parseOffset(FieldReader& fields) {
  fields.expect("Zz+-");
  if (fields.failed() || fields.last() == 'Z' || fields.last() == 'z') return {};
  const int sign = fields.last() == '-' ? -1 : 1;
  const int hours = fields.number(2);
  fields.expect(":");
  const int minutes = fields.number(2);
  if (hours > 23 || minutes > 59) fields.expect("");
  return sign * (std::chrono::hours(hours) + std::chrono::minutes(minutes));
}

std::optional<Date> parseInstant(std::string_view text) {
  FieldReader fields(text);
  const int year = fields.number(4);
  fields.expect("-");
  const auto month = static_cast<unsigned>(fields.number(2));
  fields.expect("-");
  const auto day = static_cast<unsigned>(fields.number(2));
  fields.expect("Tt ");
  const int hour = fields.number(2);
  fields.expect(":");
  const int minute = fields.number(2);
  fields.expect(":");
  const int second = fields.number(2);
  const double fraction = fields.fraction();
  const std::chrono::minutes offset = parseOffset(fields);
  fields.expectEnd();

  const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                         std::chrono::day(day)};
  if (fields.failed() || !date.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
  const auto wholeMinute = std::chrono::sys_days(date) + std::chrono::hours(hour) +
                           std::chrono::minutes(minute) - offset;
  // A leap second is inserted as the last of a day in UTC and nowhere else.
  const auto timeOfDay = wholeMinute - std::chrono::floor<std::chrono::days>(wholeMinute);
  if (second == 60 && timeOfDay != std::chrono::days(1) - std::chrono::minutes(1))
    return std::nullopt;
  return Date(wholeMinute) + std::chrono::duration<double>(second + fraction);
}

std::optional<DateExpirationOption> optionOf(std::string_view unit, int count) {
  if (unit == "m") return DateExpirationOption::minutes(count);
  if (unit == "h") return DateExpirationOption::hours(count);
  if (unit == "d") return DateExpirationOption::days(count);
  if (unit == "mo") return DateExpirationOption::months(count);
  return std::nullopt;
}

std::unexpected<std::string> refused(std::string_view text, std::string_view why) {
  return std::unexpected(host::inQuotes(text) + " " + std::string(why));
}

std::unexpected<std::string> notUnderstood(std::string_view text) {
  return refused(text,
                 "is no time: write 30m, 12h, 7d, 2mo, never, or an instant such as "
                 "2030-01-31T18:00:00Z or 2030-01-31T18:00:00+01:00");
}

/// `text` starts with a digit, is no instant, and may be a count with a unit.
std::expected<std::optional<Date>, std::string> parseCount(std::string_view text, Date now) {
  std::int64_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  const std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
  constexpr int kMostCount = std::numeric_limits<int>::max();
  const auto option = optionOf(unit, static_cast<int>(std::min<std::int64_t>(count, kMostCount)));
  if (!option) return notUnderstood(text);

  constexpr std::string_view kTooFar = "lies beyond the year 9999; write never instead";
  const bool isMonths = option->unit() == DateExpirationOption::Unit::months;
  if (error != std::errc() || (isMonths && count > kMostMonths)) return refused(text, kTooFar);
  if (count == 0) return refused(text, "would expire at once; the count must be at least 1");
  if (unit == "m" && count > kMostCount) {
    return refused(text, "is too large a number; write hours, days or months instead");
  }
  const std::optional<Date> date = option->date(now);
  if (platform::secondsSince1970(*date) >= kFirstUnwritableSecond) return refused(text, kTooFar);
  return date;
}

}  // namespace

std::expected<std::optional<Date>, std::string> parseExpiration(std::string_view text, Date now) {
  if (text == "never") return std::nullopt;
  if (text.size() > 1 && text[0] == '-' && isDigit(text[1])) {
    return refused(text, "lies in the past; the count must be at least 1");
  }
  if (const std::optional<Date> instant = parseInstant(text)) {
    if (*instant <= now) return refused(text, "lies in the past");
    // A year is written with four digits, but an offset can carry it over the limit.
    if (platform::secondsSince1970(*instant) >= kFirstUnwritableSecond) {
      return refused(text, "lies beyond the year 9999; write never instead");
    }
    return instant;
  }
  if (text.empty() || !isDigit(text.front())) return notUnderstood(text);
  return parseCount(text, now);
}

std::optional<std::string> rfc3339Text(Date date) {
  const double seconds = std::floor(platform::secondsSince1970(date));
  const bool isWritable = seconds >= kFirstWritableSecond && seconds < kFirstUnwritableSecond;
  if (!isWritable) return std::nullopt;
  const std::chrono::sys_seconds instant{
      std::chrono::seconds(static_cast<std::chrono::seconds::rep>(seconds))};
  const auto midnight = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day day(midnight);
  const std::chrono::hh_mm_ss time(instant - midnight);
  std::array<char, 40> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return buffer.data();
}

}  // namespace quillbay::cli
