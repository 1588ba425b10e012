#pragma once

class QTranslator;

namespace quillbay::desktop {

/// Settles on one language for everything in the program: its own texts, the library's, Qt's, the
/// form of numbers and the direction of lines. It is the first of the user's languages that the
/// program has texts in, else English. Call it after QApplication is made and before the first
/// window; `translator` outlives the windows. Main thread only.
void applyLanguage(QTranslator& translator);

}  // namespace quillbay::desktop
