#pragma once

#include <QString>

namespace quillbay::platform {

/// Characters as people count them: extended grapheme clusters (Unicode Standard Annex #29). A
/// letter with its combining marks is one, and so is a family emoji. Any thread.
qsizetype graphemeCount(const QString& text);

/// The first `count` characters of `text`, none of them split.
QString firstGraphemes(const QString& text, qsizetype count);

}  // namespace quillbay::platform
