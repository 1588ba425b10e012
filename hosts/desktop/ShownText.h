#pragma once

#include <QString>
#include <cstdint>
#include <string>

namespace quillbay::desktop {

/// Texts of others as the window shows them. Functions of their arguments; any thread.

/// `name` with U+FFFD in place of control characters, line breaks and marks that reorder a line:
/// with those "photo<U+202E>gpj.exe" would show as "photoexe.jpg".
QString shownName(const std::string& name);

/// The same in at most 60 characters, shortened in the middle: for names within a sentence.
QString shownShortName(const std::string& name);

/// The short name in the language's quotation marks.
QString quotedName(const std::string& name);

/// "1 byte", "999 bytes", "1.2 kB", in the program's language.
QString byteCountText(std::uint64_t byteCount);

/// `text` for a tooltip, which would take it for markup if it looked like it.
QString tooltip(const QString& text);

}  // namespace quillbay::desktop
