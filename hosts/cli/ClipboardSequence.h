#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "hosts/common/NetworkOptions.h"

namespace quillbay::cli {

/// The control sequence OSC 52 that asks a terminal to put `text` onto the clipboard, wrapped for
/// tmux and screen where `environment` says that the program runs in one. Nothing if `text` has
/// more than 8 KiB, which some terminals would show as text. Terminals do not say whether they
/// obey.
std::optional<std::string> clipboardSequence(std::string_view text,
                                             const host::Environment& environment);

}  // namespace quillbay::cli
