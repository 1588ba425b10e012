#pragma once

#include <string>
#include <string_view>

namespace quillbay::platform {

/// Internal: the language that every string table speaks besides its own. Whoever chooses it sees
/// at once which text is in no table, for it lacks the brackets, and which text has no room to
/// grow.
inline constexpr std::string_view kPseudoLanguage = "en_XA";

/// `english` between brackets and longer by half, as few translations are; unchanged without a
/// letter. Any thread.
std::string pseudoLocalized(std::string_view english);

}  // namespace quillbay::platform
