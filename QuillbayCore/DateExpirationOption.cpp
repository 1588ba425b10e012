#include <QuillbayCore/DateExpirationOption.h>

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

std::optional<Date> DateExpirationOption::date() const {
  return date(Date(std::chrono::system_clock::now()));
}

}  // namespace quillbay::core
