#pragma once

#include <QSet>
#include <QString>

namespace quillbay::platform {

/// Hands out the letters that reach the controls of one window with Alt: each text gets one of its
/// own, whatever the language, and none gets another's. Main thread.
class Mnemonics {
 public:
  /// `text` with '&' before its first free letter or digit, the starts of words first, and without
  /// one when all are taken. Ampersands of the text itself show as such.
  QString assign(const QString& text);

 private:
  QSet<QString> taken_;
};

}  // namespace quillbay::platform
