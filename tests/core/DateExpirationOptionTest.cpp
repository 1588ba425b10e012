#include <QuillbayCore/DateExpirationOption.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <tuple>

namespace quillbay::core {
namespace {

using namespace std::chrono_literals;
using platform::Date;

TEST(DateExpirationOption, MonthsKeepTheTimeOfDayAndStayInsideTheirMonth) {
  using Day = std::chrono::year_month_day;
  const std::tuple<const char*, Day, int, Day> cases[] = {
      {"common year", 2026y / 1 / 31, 1, 2026y / 2 / 28},
      {"leap year", 2028y / 1 / 31, 1, 2028y / 2 / 29},
      {"across the year's end", 2026y / 11 / 30, 3, 2027y / 2 / 28},
      {"a day that every month has", 2026y / 5 / 15, 12, 2027y / 5 / 15},
  };
  for (const auto& [name, start, months, end] : cases) {
    const auto at = [](Day day) { return Date(std::chrono::sys_days(day)) + 13h + 250ms; };
    EXPECT_EQ(DateExpirationOption::months(months).date(at(start)), at(end)) << name;
  }
}

TEST(DateExpirationOption, TheClosestIsTheNearestInTimeAndNeverIsForDatesThatNeverCome) {
  using Option = DateExpirationOption;
  const Date now = Date(std::chrono::sys_days(2026y / 3 / 28)) + 13h;
  const double infinity = std::numeric_limits<double>::infinity();
  const auto at = [](double seconds) { return platform::dateFromSecondsSince1970(seconds); };
  const std::tuple<const char*, std::optional<Date>, Option> cases[] = {
      {"no date", std::nullopt, Option::never()},
      {"nearer to the shorter", now + 12h, Option::hours(2)},
      {"nearer to the longer", now + 14h, Option::hours(24)},
      {"as near to both", now + 75min, Option::minutes(30)},
      {"this moment", now, Option::minutes(30)},
      {"over already", now - 24h * 400, Option::minutes(30)},
      {"long over", at(-infinity), Option::minutes(30)},
      {"in ten days", now + 24h * 10, Option::days(7)},
      {"in a hundred days", now + 24h * 100, Option::days(30)},
      {"in ten thousand years", now + 24h * 3'652'425, Option::months(12)},
      {"after the calendar's end", at(1e300), Option::never()},
      {"in an infinite time", at(infinity), Option::never()},
      {"no number", at(std::numeric_limits<double>::quiet_NaN()), Option::never()},
  };
  for (const auto& [name, date, option] : cases) {
    EXPECT_EQ(Option::closest(date, now), option) << name;
  }
  for (const Option& option : Option::defaultOptions()) {
    EXPECT_EQ(Option::closest(option.date(now), now), option);
    EXPECT_EQ(Option::closest(option.date()), option);
  }
}

}  // namespace
}  // namespace quillbay::core
