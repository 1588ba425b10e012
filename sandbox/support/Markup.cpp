#include "sandbox/support/Markup.h"

#include "sandbox/support/BidiControls.h"

namespace quillbay::sandbox {

std::string escapeMarkup(std::string_view text) {
  const std::string ordered = replaceBidiControls(text, "\uFFFD");
  std::string escaped;
  escaped.reserve(ordered.size());
  for (const char c : ordered) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        // Control characters have no place in XML and are replaced in HTML by browsers anyway.
        escaped += static_cast<unsigned char>(c) < ' ' && c != '\n' && c != '\t' ? ' ' : c;
    }
  }
  return escaped;
}

}  // namespace quillbay::sandbox
