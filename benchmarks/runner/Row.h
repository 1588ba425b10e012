#pragma once

#include <optional>
#include <string>

namespace quillbay::bench {

/// One line of a table.
struct Row {
  std::string work;
  std::string against;
  /// The greatest value that counts as reached.
  double limit = 0;
  /// For times the paired median of the ratios, otherwise the exact value.
  double value = 0;
  /// For times alone.
  std::optional<double> ratioOfMinima;
  /// The figures behind the ratio.
  std::string figures;
  /// Why the value may be missed on some machines; shown only if it is.
  std::string reasonIfMissed;

  bool isReached() const { return value <= limit; }
  bool isOfTimes() const { return ratioOfMinima.has_value(); }
  std::string valueText() const;
  std::string limitText() const;
};

/// Whole, or with two decimal places.
std::string numberText(double value);
/// With two decimal places, or three if it is small.
std::string ratioText(double value);

}  // namespace quillbay::bench
