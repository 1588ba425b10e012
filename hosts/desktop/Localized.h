#pragma once

#include <QString>

namespace quillbay::desktop {

/// The program's own text for `key`, in the user's language; the key itself if there is none.
QString localized(const char* key);

}  // namespace quillbay::desktop
