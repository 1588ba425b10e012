#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quillbay::host {

/// A text as a QR code (ISO/IEC 18004, error correction level M): a square of dark and light
/// modules, with the light border of four modules that readers need.
class MatrixCode {
 public:
  /// Nothing if `text` is longer than a code can hold (about 2,300 bytes) or empty.
  static std::optional<MatrixCode> of(const std::string& text);

  /// Modules on a side, the border included.
  std::size_t size() const { return size_; }
  /// `row` and `column` count from the upper left corner and are smaller than `size()`.
  bool isDark(std::size_t row, std::size_t column) const {
    return modules_[(row * size_) + column];
  }

 private:
  explicit MatrixCode(std::size_t size) : size_(size), modules_(size * size) {}

  std::size_t size_;
  std::vector<bool> modules_;
};

}  // namespace quillbay::host
