#include "Completion.h"

#include <algorithm>
#include <utility>

#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

using Option = host::OptionTable::Option;

std::string oneLine(std::string text) {
  std::ranges::replace(text, '\n', ' ');
  return text;
}

/// The option whose value is the word behind `words`; null if that is no value. `areOptionsOver` is
/// set if "--" is among them.
const Option* optionAwaitingValue(const host::OptionTable& table,
                                  std::span<const std::string> words, bool& areOptionsOver) {
  const Option* awaiting = nullptr;
  for (const std::string& word : words) {
    if (std::exchange(awaiting, nullptr) != nullptr) continue;
    areOptionsOver = areOptionsOver || word == "--";
    if (areOptionsOver || !host::isOption(word)) continue;
    host::OptionTable::Match match = table.match(word);
    while (match.option != nullptr && match.bundle) match = table.match(*match.bundle);
    if (match.option != nullptr && match.option->takesValue() && !match.value) {
      awaiting = match.option;
    }
  }
  return awaiting;
}

/// `before` is the part of the typed word that is no value: "--link=".
Completion valuesOf(const Option& option, const std::string& before, std::string_view typed) {
  Completion completion;
  std::string_view values = option.placeholder;
  completion.takesFiles = values == "FILE";
  if (!values.contains('|')) return completion;
  while (!values.empty()) {
    const std::string_view value = values.substr(0, values.find('|'));
    completion.offer({.text = before + std::string(value), .description = {}}, typed);
    values.remove_prefix(std::min(value.size() + 1, values.size()));
  }
  return completion;
}

}  // namespace

void Completion::offer(Candidate candidate, std::string_view typed) {
  if (candidate.text.starts_with(typed)) candidates.push_back(std::move(candidate));
}

void Completion::offerShares(std::span<const host::RememberedShare> remembered, platform::Date now,
                             std::string_view typed) {
  using State = host::RememberedShare::State;
  for (const host::RememberedShare& share : remembered) {
    const bool isOver = share.state == State::deleted || share.isExpired(now);
    if (shares != Shares::all && isOver) continue;
    if (shares == Shares::unfinished && share.state != State::unfinished) continue;
    const std::string title = host::plainLine(share.session.title().value_or(""));
    offer(
        {.text = share.session.url().absoluteString(),
         .description = host::fileCountText(share.fileCount) + (title.empty() ? "" : ", " + title)},
        typed);
  }
}

std::string Completion::text() const {
  std::string text = takesFiles ? "files\n" : "words\n";
  for (const Candidate& candidate : candidates) {
    text += candidate.text;
    if (!candidate.description.empty()) text += "\t" + candidate.description;
    text += "\n";
  }
  return text;
}

std::optional<Completion> completeOption(const host::OptionTable& table,
                                         std::span<const std::string> words) {
  const std::string& typed = words.back();
  bool areOptionsOver = false;
  const Option* awaiting =
      optionAwaitingValue(table, words.first(words.size() - 1), areOptionsOver);
  if (awaiting != nullptr) return valuesOf(*awaiting, "", typed);
  if (areOptionsOver || !typed.starts_with('-')) return std::nullopt;
  if (const std::size_t equals = typed.find('=');
      typed.starts_with("--") && equals != std::string::npos) {
    const auto match = table.match(typed);
    if (match.option == nullptr || !match.option->takesValue()) return Completion();
    return valuesOf(*match.option, typed.substr(0, equals + 1), typed);
  }
  Completion completion;
  for (const Option& option : table.options()) {
    completion.offer({.text = option.name, .description = oneLine(option.help)}, typed);
  }
  return completion;
}

}  // namespace quillbay::cli
