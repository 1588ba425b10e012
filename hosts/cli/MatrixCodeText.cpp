#include "MatrixCodeText.h"

namespace quillbay::cli {
namespace {

// From the cube of 256 colours: users give the first 16 colours of a terminal shades of their own.
constexpr const char* kBlackOnWhite = "\x1b[38;5;16;48;5;231m";
constexpr const char* kTerminalColours = "\x1b[0m";

const char* block(bool isUpperDark, bool isLowerDark) {
  if (isUpperDark) return isLowerDark ? "█" : "▀";
  return isLowerDark ? "▄" : " ";
}

}  // namespace

std::string textOf(const host::MatrixCode& code) {
  std::string text;
  for (std::size_t row = 0; row < code.size(); row += 2) {
    text += row == 0 ? kBlackOnWhite : std::string("\n") + kBlackOnWhite;
    for (std::size_t column = 0; column < code.size(); ++column) {
      const bool hasLower = row + 1 < code.size();
      text += block(code.isDark(row, column), hasLower && code.isDark(row + 1, column));
    }
    text += kTerminalColours;
  }
  return text;
}

}  // namespace quillbay::cli
