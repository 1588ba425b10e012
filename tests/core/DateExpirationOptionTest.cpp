#include <QuillbayCore/DateExpirationOption.h>
#include <QuillbayCore/Localized.h>
#include <QuillbayPlatform/StringTable.h>
#include <gtest/gtest.h>

#include <algorithm>

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

TEST(DateExpirationOption, OffersTheOptionsFromTheShortestToNever) {
  using Option = DateExpirationOption;
  EXPECT_EQ(Option::defaultOptions(),
            (std::vector{Option::minutes(30), Option::hours(2), Option::hours(24), Option::days(7),
                         Option::days(30), Option::months(12), Option::never()}));
}

TEST(DateExpirationOption, TheClosestIsTheNearestInTimeAndNeverIsForNoDateAlone) {
  const Date now = Date(std::chrono::sys_days(2026y / 3 / 28)) + 13h;
  struct Case {
    const char* name;
    std::optional<Date> date;
    DateExpirationOption option;
  };
  const Case cases[] = {
      {"no date", std::nullopt, DateExpirationOption::never()},
      {"nearer to the shorter", now + 12h, DateExpirationOption::hours(2)},
      {"nearer to the longer", now + 14h, DateExpirationOption::hours(24)},
      {"as near to both", now + 75min, DateExpirationOption::minutes(30)},
      {"this moment", now, DateExpirationOption::minutes(30)},
      {"over already", now - 24h * 400, DateExpirationOption::minutes(30)},
      {"in ten years", now + 24h * 3650, DateExpirationOption::months(12)},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(DateExpirationOption::closest(row.date, now), row.option);
  }
  for (const DateExpirationOption& option : DateExpirationOption::defaultOptions()) {
    EXPECT_EQ(DateExpirationOption::closest(option.date(now), now), option);
    EXPECT_EQ(DateExpirationOption::closest(option.date()), option);
  }
}

TEST(DateExpirationOption, EveryUnitHasAFormatForOneNumberInEveryLanguage) {
  for (const char* language : {"en", "de"}) {
    platform::setPreferredLanguages({language});
    for (const char* key : {"date.minutes", "date.hours", "date.days", "date.months"}) {
      SCOPED_TRACE(key);
      const std::string format = Localized(key);
      EXPECT_NE(format, key) << language;
      EXPECT_EQ(std::ranges::count(format, '%'), 1) << language;
      EXPECT_NE(format.find("%d"), std::string::npos) << language;
    }
  }
  platform::setPreferredLanguages({});
}

}  // namespace
}  // namespace quillbay::core
