#pragma once

namespace quillbay::desktop {

// In device-independent pixels.
inline constexpr int kPageMargin = 16;
inline constexpr int kPageSpacing = 12;

}  // namespace quillbay::desktop
