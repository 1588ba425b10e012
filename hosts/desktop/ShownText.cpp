#include "ShownText.h"

#include <QLocale>

#include "Localized.h"
#include "hosts/common/FailureAdvice.h"

namespace quillbay::desktop {
namespace {

constexpr qsizetype kLongestName = 60;

bool reordersLine(QChar character) {
  constexpr char16_t kArabicLetterMark = 0x061C;
  constexpr char16_t kLeftToRightMark = 0x200E;
  constexpr char16_t kRightToLeftMark = 0x200F;
  const char16_t code = character.unicode();
  return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069) ||
         code == kLeftToRightMark || code == kRightToLeftMark || code == kArabicLetterMark;
}

bool isShown(QChar character) {
  switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return false;
    default:
      return !reordersLine(character);
  }
}

}  // namespace

QString shownName(const std::string& name) {
  QString text = QString::fromStdString(name);
  for (QChar& character : text) {
    if (!isShown(character)) character = QChar::ReplacementCharacter;
  }
  return text;
}

QString shownShortName(const std::string& name) {
  QString text = shownName(name);
  if (text.size() <= kLongestName) return text;
  return text.first(kLongestName / 2) + "…" + text.last((kLongestName / 2) - 1);
}

QString byteCountText(std::uint64_t byteCount) {
  if (byteCount == 1) return localized("files.bytes.one");
  const auto number = static_cast<qint64>(byteCount);
  if (byteCount < 1000) return localized("files.bytes.many", number).arg(number);
  return QLocale().formattedDataSize(number, 1, QLocale::DataSizeSIFormat);
}

QString extentText(std::size_t fileCount, std::uint64_t byteCount) {
  const QString size = byteCountText(byteCount);
  if (fileCount == 1) return localized("files.extent.one").arg(size);
  const auto number = static_cast<qint64>(fileCount);
  return localized("files.extent.many", number).arg(number).arg(size);
}

QString filesText(const QString& first, std::size_t fileCount, std::uint64_t byteCount) {
  const QString size = byteCountText(byteCount);
  if (fileCount == 1) return localized("files.one").arg(first, size);
  const auto others = static_cast<qint64>(fileCount - 1);
  return localized("files.many", others).arg(first, QString::number(others), size);
}

QString adviceText(const host::FailureAdvice& advice) {
  return QString::fromStdString(host::sentence(advice.whatFailed) + "\n" +
                                host::sentence(advice.whatToDo));
}

QString textOf(const platform::URL& url) { return QString::fromStdString(url.absoluteString()); }

QString tooltip(const QString& text) { return "<qt>" + text.toHtmlEscaped() + "</qt>"; }

}  // namespace quillbay::desktop
