#pragma once

#include <QImage>
#include <QWidget>

namespace quillbay::test {

/// How far two colours are apart, from 1 to 21 (WCAG 2.1, relative luminance).
double contrastOf(const QColor& one, const QColor& other);

/// What the window of `widget` shows around it, up to `margin` device-independent pixels away.
QImage pixelsOf(const QWidget& widget, int margin = 0);

/// The contrast between the ground, which is the most frequent colour, and what is farthest from
/// it.
double contrastIn(const QImage& image);

/// How many pixels change between two images by a contrast of at least `contrast`.
int changedPixels(const QImage& before, const QImage& after, double contrast);

}  // namespace quillbay::test
