#include <QuillbayPlatform/PseudoLocale.h>

namespace quillbay::platform {

std::string pseudoLocalized(std::string_view english) {
  std::string text = "[" + std::string(english) + " ";
  // In words, so that lines break as they do in other languages.
  constexpr std::string_view kWord = "~~~~~ ";
  const std::size_t length = text.size() + (english.size() / 2);
  while (text.size() < length) text += kWord;
  text.back() = ']';
  return text;
}

}  // namespace quillbay::platform
