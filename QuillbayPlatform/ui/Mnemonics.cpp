#include <QuillbayPlatform/ui/Mnemonics.h>

#include <QList>

namespace quillbay::platform {
namespace {

/// Where a mnemonic may stand, best place first.
QList<qsizetype> candidates(const QString& text) {
  QList<qsizetype> starts;
  QList<qsizetype> others;
  for (qsizetype index = 0; index < text.size(); ++index) {
    if (!text[index].isLetterOrNumber()) continue;
    const bool startsWord = index == 0 || text[index - 1].isSpace();
    (startsWord ? starts : others).append(index);
  }
  return starts + others;
}

}  // namespace

QString Mnemonics::assign(const QString& text) {
  qsizetype place = -1;
  for (const qsizetype candidate : candidates(text)) {
    const QString letter = QString(text[candidate]).toCaseFolded();
    if (taken_.contains(letter)) continue;
    taken_.insert(letter);
    place = candidate;
    break;
  }
  if (place == -1) return QString(text).replace('&', "&&");
  return text.first(place).replace('&', "&&") + '&' + text.sliced(place).replace('&', "&&");
}

}  // namespace quillbay::platform
