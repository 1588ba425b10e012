#include "MatrixCode.h"

#include <qrencode.h>

#include <memory>

namespace quillbay::host {
namespace {

constexpr std::size_t kBorder = 4;

}  // namespace

std::optional<MatrixCode> MatrixCode::of(const std::string& text) {
  const std::unique_ptr<QRcode, decltype(&::QRcode_free)> code(
      ::QRcode_encodeString8bit(text.c_str(), 0, QR_ECLEVEL_M), ::QRcode_free);
  if (!code) return std::nullopt;
  const auto width = static_cast<std::size_t>(code->width);
  MatrixCode result(width + (2 * kBorder));
  for (std::size_t row = 0; row < width; ++row) {
    for (std::size_t column = 0; column < width; ++column) {
      const bool isDark = (code->data[(row * width) + column] & 1) != 0;
      result.modules_[((row + kBorder) * result.size_) + column + kBorder] = isDark;
    }
  }
  return result;
}

}  // namespace quillbay::host
