#include <QuillbayPlatform/ui/Graphemes.h>

#include <QTextBoundaryFinder>

namespace quillbay::platform {

qsizetype graphemeCount(const QString& text) {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  qsizetype count = 0;
  while (finder.toNextBoundary() != -1) ++count;
  return count;
}

QString firstGraphemes(const QString& text, qsizetype count) {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  while (count > 0 && finder.toNextBoundary() != -1) --count;
  // Past the last boundary there is no position any more.
  return finder.position() == -1 ? text : text.first(finder.position());
}

}  // namespace quillbay::platform
