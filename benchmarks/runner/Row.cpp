#include "benchmarks/runner/Row.h"

#include <cmath>
#include <iomanip>
#include <sstream>

namespace quillbay::bench {

std::string Row::valueText() const { return isOfTimes() ? ratioText(value) : numberText(value); }

std::string Row::limitText() const { return isOfTimes() ? ratioText(limit) : numberText(limit); }

std::string numberText(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(value == std::floor(value) ? 0 : 2) << value;
  return text.str();
}

std::string ratioText(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(value < 0.1 ? 3 : 2) << value;
  return text.str();
}

}  // namespace quillbay::bench
