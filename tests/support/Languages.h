#pragma once

namespace quillbay::test {

/// What every table speaks.
inline constexpr const char* kLanguages[] = {"de", "en", "es", "fr", "pl"};

}  // namespace quillbay::test
