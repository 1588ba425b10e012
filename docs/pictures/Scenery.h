#pragma once

#include <QImage>
#include <QPalette>

namespace quillbay::pictures {

/// Light letters on dark ground.
QPalette darkPalette();

/// A photo that people may want to share.
QImage landscape();

}  // namespace quillbay::pictures
