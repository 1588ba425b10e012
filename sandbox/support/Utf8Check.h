#pragma once

#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// Tells whether bytes that come in pieces are UTF-8.
class Utf8Check {
 public:
  void update(std::string_view bytes);

  /// Whether all that came is UTF-8, up to its end.
  bool isWellFormed() const { return isWellFormed_ && cutOff_.empty(); }
  /// True after well-formed UTF-8 with at least one character beyond ASCII. ASCII alone is not
  /// proof: several other encodings are made of it.
  bool isProven() const { return hasBeyondAscii_ && isWellFormed(); }

 private:
  bool hasBeyondAscii_ = false;
  bool isWellFormed_ = true;
  /// The start of a character whose rest comes with the next piece.
  std::string cutOff_;
};

}  // namespace quillbay::sandbox
