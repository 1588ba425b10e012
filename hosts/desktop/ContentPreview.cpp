#include "ContentPreview.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QImageReader>
#include <QMimeDatabase>
#include <QStyle>
#include <ranges>

#include "ShownText.h"

namespace quillbay::desktop {
namespace {

// Enough for the 80 of the sheet on a screen of three times the resolution.
constexpr int kThumbnailPixels = 240;
constexpr int kIconSize = 80;
// The window appears only when the preview is there.
constexpr qint64 kMostPixels = 60'000'000;
constexpr int kMostFilesLookedInto = 50;

QString fileName(const std::string& path) {
  return QFile::decodeName(QByteArray::fromStdString(path));
}

QImage thumbnail(const QString& path) {
  QImageReader reader(path);
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (!size.isValid() || qint64{size.width()} * size.height() > kMostPixels) return {};
  const QSize bounds(kThumbnailPixels, kThumbnailPixels);
  if (size.width() > bounds.width() || size.height() > bounds.height()) {
    reader.setScaledSize(size.scaled(bounds, Qt::KeepAspectRatio).expandedTo({1, 1}));
  }
  return reader.read();
}

QImage typeIcon(const QMimeType& type) {
  const QIcon plain = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
  const QIcon icon =
      QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName(), plain));
  return icon.pixmap(QSize(kIconSize, kIconSize), qApp->devicePixelRatio()).toImage();
}

/// With the name that a screen reader says.
QImage described(QImage image, const std::string& path) {
  image.setText("Description", shownName(path.substr(path.rfind('/') + 1)));
  return image;
}

}  // namespace

QImage contentPreview(const std::vector<std::string>& paths) {
  const QMimeDatabase types;
  for (const std::string& path : paths | std::views::take(kMostFilesLookedInto)) {
    const QString name = fileName(path);
    if (!types.mimeTypeForFile(name).name().startsWith("image/")) continue;
    if (QImage image = thumbnail(name); !image.isNull()) return described(image, path);
  }
  if (paths.empty()) return {};
  return described(typeIcon(types.mimeTypeForFile(fileName(paths.front()))), paths.front());
}

}  // namespace quillbay::desktop
