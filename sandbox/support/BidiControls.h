#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// The UTF-8 text with `replacement` in place of every character that starts or ends an embedding,
/// an override or an isolate (U+202A to U+202E, U+2066 to U+2069): they would show "gpj.exe" as
/// "exe.jpg". The marks that right-to-left names are written with stay.
std::string replaceBidiControls(std::string_view text, std::string_view replacement);

}  // namespace quillbay::sandbox
