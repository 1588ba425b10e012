#include "sandbox/model/LinkType.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillbay::sandbox {

namespace {

constexpr std::array<std::pair<LinkType, std::string_view>, 3> names{{
    {LinkType::page, "page"},
    {LinkType::download, "download"},
    {LinkType::direct, "direct"},
}};

}  // namespace

std::optional<LinkType> linkTypeFromText(std::string_view text) {
  const auto found = std::ranges::find(names, text, [](const auto& entry) { return entry.second; });
  if (found == names.end()) return std::nullopt;
  return found->first;
}

std::string_view text(LinkType type) {
  return std::ranges::find(names, type, [](const auto& entry) { return entry.first; })->second;
}

}  // namespace quillbay::sandbox
