#pragma once

#include <QString>
#include <cstdint>

namespace quillbay::desktop {

/// The program's own text for `key`, in the user's language; the key itself if there is none.
QString localized(const char* key);
/// The same in the plural form for `number`, which is not put in.
QString localized(const char* key, std::int64_t number);

}  // namespace quillbay::desktop
