#pragma once

#include <QImage>
#include <string>
#include <vector>

namespace quillbay::desktop {

/// A picture of what is shared, for a square of 80 device-independent pixels: a thumbnail of the
/// first image among the files, else the icon of the first file's type. Of many
/// files only the first are looked into. The image's text "Description" is the name of its file.
/// Main thread only.
QImage contentPreview(const std::vector<std::string>& paths);

}  // namespace quillbay::desktop
