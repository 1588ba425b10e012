#pragma once

/// What the shared libraries show to hosts. All else is hidden; `scripts/check-abi` compares what
/// is shown with a list.

/// For classes, and for functions outside of them.
#define QUILLBAY_EXPORT [[gnu::visibility("default")]]

/// For the private functions of such a class that no inline function calls: they may change.
#define QUILLBAY_HIDDEN [[gnu::visibility("hidden")]]
