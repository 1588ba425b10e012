#include <QuillbayCore/DateExpirationOption.h>

#include <algorithm>
#include <chrono>

namespace quillbay::core {
namespace {

using platform::Date;

Date addingMonths(Date start, int count) {
  const auto day = std::chrono::floor<std::chrono::days>(start);
  const auto timeOfDay = start - day;
  const std::chrono::year_month_day calendarDay(day);
  auto target = calendarDay + std::chrono::months(count);
  if (!target.ok()) target = target.year() / target.month() / std::chrono::last;
  return Date(std::chrono::sys_days(target)) + timeOfDay;
}

/// The end of the last year of the calendar, 32767.
constexpr Date kEndOfCalendar =
    std::chrono::sys_days(std::chrono::year::max() / std::chrono::December / 31);

Date thisMoment() { return std::chrono::system_clock::now(); }

}  // namespace

std::optional<Date> DateExpirationOption::date(Date now) const {
  switch (unit_) {
    case Unit::minutes:
      return now + std::chrono::minutes(count_);
    case Unit::hours:
      return now + std::chrono::hours(count_);
    case Unit::days:
      return now + std::chrono::days(count_);
    case Unit::months:
      return addingMonths(now, count_);
    case Unit::never:
      return std::nullopt;
  }
  return std::nullopt;
}

std::optional<Date> DateExpirationOption::date() const { return date(thisMoment()); }

std::vector<DateExpirationOption> DateExpirationOption::defaultOptions() {
  return {minutes(30), hours(2), hours(24), days(7), days(30), months(12), never()};
}

DateExpirationOption DateExpirationOption::closest(std::optional<Date> date, Date now) {
  // Also a date that is not a number: it compares with none.
  if (!date || !(*date <= kEndOfCalendar)) return never();
  std::vector<DateExpirationOption> options = defaultOptions();
  std::erase(options, never());
  return *std::ranges::min_element(options, {}, [&](const DateExpirationOption& option) {
    return std::chrono::abs(*option.date(now) - *date);
  });
}

DateExpirationOption DateExpirationOption::closest(std::optional<Date> date) {
  return closest(date, thisMoment());
}

}  // namespace quillbay::core
