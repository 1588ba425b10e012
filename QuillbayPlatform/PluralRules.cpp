#include <QuillbayPlatform/PluralRules.h>

#include <algorithm>
#include <array>
#include <utility>

// Not from ICU: its data takes 30 MB, and these are a few rules of a line each.

namespace quillbay::platform {
namespace {

using Magnitude = std::uint64_t;

Magnitude magnitudeOf(std::int64_t number) {
  const auto bits = static_cast<Magnitude>(number);
  return number < 0 ? -bits : bits;
}

/// Such numbers count "millions of" what they count.
bool isWholeMillions(Magnitude number) {
  constexpr Magnitude kMillion = 1'000'000;
  return number != 0 && number % kMillion == 0;
}

std::string_view germanic(Magnitude number) { return number == 1 ? "one" : "other"; }

std::string_view spanish(Magnitude number) {
  if (number == 1) return "one";
  return isWholeMillions(number) ? "many" : "other";
}

std::string_view french(Magnitude number) {
  if (number <= 1) return "one";
  return isWholeMillions(number) ? "many" : "other";
}

std::string_view polish(Magnitude number) {
  if (number == 1) return "one";
  const Magnitude units = number % 10;
  const Magnitude tens = number / 10 % 10;
  return units >= 2 && units <= 4 && tens != 1 ? "few" : "many";
}

using Rule = std::string_view (*)(Magnitude number);

constexpr std::array<std::pair<std::string_view, Rule>, 5> kRules = {
    {{"de", germanic}, {"en", germanic}, {"es", spanish}, {"fr", french}, {"pl", polish}}};

}  // namespace

std::string_view pluralCategory(std::string_view language, std::int64_t number) {
  const std::string_view base = language.substr(0, language.find('_'));
  const auto* const rule = std::ranges::find(kRules, base, &decltype(kRules)::value_type::first);
  return rule == kRules.end() ? "other" : rule->second(magnitudeOf(number));
}

}  // namespace quillbay::platform
