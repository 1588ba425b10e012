#pragma once

#include <QColor>

namespace quillbay::platform {

/// The least contrast that text needs to be read (WCAG 2.1, success criterion 1.4.3), with a margin
/// for the thin strokes of small letters, which never reach their full colour.
constexpr double kTextContrast = 5.5;
/// The least contrast that the outline of a control and the sign of its focus need to be seen
/// (success criterion 1.4.11), with a margin for thin curves, which are blended with the ground.
constexpr double kOutlineContrast = 3.5;

/// How far two colours are apart, from 1 (equal) to 21 (black and white), as WCAG 2.1 defines it.
/// Transparency is not considered. Any thread.
double contrastRatio(const QColor& one, const QColor& other);

/// `wanted` as it looks on `ground`, moved towards black or white as far as the contrast with
/// `ground` requires. `ratio` is from 1 to 4.5: every ground allows that much. For more, the result
/// may be black or white with less. Any thread.
QColor withContrast(const QColor& wanted, const QColor& ground, double ratio);

}  // namespace quillbay::platform
