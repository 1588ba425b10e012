#include <QuillbayCore/DateExpirationOption.h>
#include <gtest/gtest.h>

namespace quillbay::core {
namespace {

using namespace std::chrono_literals;
using platform::Date;

TEST(DateExpirationOption, MonthsKeepTheTimeOfDayAndStayInsideTheirMonth) {
  struct Case {
    const char* name;
    std::chrono::year_month_day start;
    int months;
    std::chrono::year_month_day end;
  };
  const Case cases[] = {
      {"common year", 2026y / 1 / 31, 1, 2026y / 2 / 28},
      {"leap year", 2028y / 1 / 31, 1, 2028y / 2 / 29},
      {"across the year's end", 2026y / 11 / 30, 3, 2027y / 2 / 28},
      {"a day that every month has", 2026y / 5 / 15, 12, 2027y / 5 / 15},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    const Date start = Date(std::chrono::sys_days(row.start)) + 13h + 250ms;
    const Date end = Date(std::chrono::sys_days(row.end)) + 13h + 250ms;
    EXPECT_EQ(DateExpirationOption::months(row.months).date(start), end);
  }
}

TEST(DateExpirationOption, CountsShorterUnitsExactlyAndNeverHasNoDate) {
  const Date start = Date(std::chrono::sys_days(2026y / 3 / 28));
  EXPECT_EQ(DateExpirationOption::minutes(30).date(start), start + 30min);
  EXPECT_EQ(DateExpirationOption::hours(48).date(start), DateExpirationOption::days(2).date(start));
  EXPECT_EQ(DateExpirationOption::never().date(start), std::nullopt);
}

}  // namespace
}  // namespace quillbay::core
