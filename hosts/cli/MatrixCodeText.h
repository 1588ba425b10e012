#pragma once

#include <string>

#include "hosts/common/MatrixCode.h"

namespace quillbay::cli {

/// A QR code as lines for a UTF-8 terminal, one column a module and two rows of modules a line: in
/// black and white, whatever the terminal's colours are, since many readers take no inverted code.
/// The lines are separated by line breaks, without one at the end.
std::string textOf(const host::MatrixCode& code);

}  // namespace quillbay::cli
