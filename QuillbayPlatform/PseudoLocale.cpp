#include <QuillbayPlatform/PseudoLocale.h>

#include <algorithm>

namespace quillbay::platform {
namespace {

bool isLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

}  // namespace

std::string pseudoLocalized(std::string_view english) {
  if (std::ranges::none_of(english, isLetter)) return std::string(english);
  std::string text = "[" + std::string(english) + " ";
  // In words, so that lines break as they do in other languages.
  constexpr std::string_view kWord = "~~~~~ ";
  const std::size_t length = text.size() + (english.size() / 2);
  while (text.size() < length) text += kWord;
  text.back() = ']';
  return text;
}

}  // namespace quillbay::platform
