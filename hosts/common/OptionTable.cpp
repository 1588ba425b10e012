#include "OptionTable.h"

#include <algorithm>
#include <utility>

#include "PlainText.h"

namespace quillbay::host {
namespace {

constexpr std::size_t kHelpColumn = 26;

/// What is wrong with `argument`, which begins with the unknown option `name`, and what to write if
/// it looks like the name of a file.
std::string unknownOption(const std::string& name, const std::string& argument) {
  const bool isLong = name.starts_with("--");
  const std::string& shown = isLong ? name : argument;
  const bool mayBeFile = !isLong || name.contains('.');
  return "unknown option " + inQuotes(shown) +
         (mayBeFile ? "; for a file of this name write " + inQuotes("./" + shown) : "");
}

}  // namespace

void OptionTable::add(std::string_view name, Option option) {
  if (name.size() > 4 && name.substr(2, 2) == ", ") {
    option.letter = name[1];
    name.remove_prefix(4);
  }
  option.name = name;
  options_.push_back(std::move(option));
}

void OptionTable::addFlag(std::string_view name, std::string help, bool& value, std::string group) {
  add(name, {.help = std::move(help),
             .group = std::move(group),
             .take = [&value](const std::string&) { value = true; }});
}

void OptionTable::addEnding(std::string_view name, std::string help, bool& value) {
  addFlag(name, std::move(help), value);
  options_.back().isEnding = true;
}

void OptionTable::addText(std::string_view name, std::string placeholder, std::string help,
                          std::optional<std::string>& value, std::string group) {
  add(name, {.placeholder = std::move(placeholder),
             .help = std::move(help),
             .group = std::move(group),
             .take = [&value](std::string text) { value = std::move(text); }});
}

void OptionTable::addList(std::string_view name, std::string placeholder, std::string help,
                          std::vector<std::string>& values) {
  add(name, {.placeholder = std::move(placeholder),
             .help = std::move(help),
             .isRepeatable = true,
             .take = [&values](std::string text) { values.push_back(std::move(text)); }});
}

OptionTable::Match OptionTable::match(const std::string& argument) const {
  const bool isLong = argument.starts_with("--");
  const std::size_t end = isLong ? argument.find('=') : 2;
  Match match{.name = argument.substr(0, end)};
  const auto found = std::ranges::find_if(options_, [&](const Option& option) {
    return isLong ? option.name == match.name : option.letter == argument[1];
  });
  if (found == options_.end()) return match;
  match.option = &*found;
  if (isLong) {
    if (end != std::string::npos) match.value = argument.substr(end + 1);
  } else if (argument.size() > end) {
    const std::string rest = argument.substr(end);
    if (found->takesValue()) {
      match.value = rest;
    } else {
      match.bundle = "-" + rest;
    }
  }
  return match;
}

std::expected<std::vector<std::string>, std::string> OptionTable::read(
    std::span<const std::string> arguments) const {
  std::vector<std::string> operands;
  std::vector<const Option*> given;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    if (*argument == "--") {
      operands.insert(operands.end(), argument + 1, arguments.end());
      break;
    }
    if (!isOption(*argument)) {
      operands.push_back(*argument);
      continue;
    }

    for (std::optional<std::string> rest = *argument; rest;) {
      Match written = match(*rest);
      if (written.option == nullptr) return std::unexpected(unknownOption(written.name, *rest));
      if (auto problem = conflict(*written.option, given)) return std::unexpected(*problem);
      given.push_back(written.option);
      const bool needsNext = written.option->takesValue() && !written.value;
      if (needsNext && ++argument == arguments.end()) {
        return std::unexpected(written.name + " needs a value: " + written.option->placeholder);
      }
      if (!written.option->takesValue() && written.value) {
        return std::unexpected(written.name + " takes no value");
      }
      written.option->take(needsNext ? *argument : written.value.value_or(""));
      if (written.option->isEnding) return std::vector<std::string>{};
      rest = std::move(written.bundle);
    }
  }
  return operands;
}

std::optional<std::string> OptionTable::conflict(const Option& option,
                                                 const std::vector<const Option*>& given) {
  for (const Option* earlier : given) {
    if (earlier == &option && !option.isRepeatable) return option.name + " is given twice";
    if (earlier != &option && !option.group.empty() && earlier->group == option.group) {
      return earlier->name + " and " + option.name + " exclude each other";
    }
  }
  return std::nullopt;
}

std::string OptionTable::help() const {
  std::string text;
  for (const Option& option : options_) {
    std::string line = "  ";
    if (option.letter != 0) line += std::string{'-', option.letter, ',', ' '};
    line += option.name;
    if (option.takesValue()) line += " " + option.placeholder;
    line += line.size() + 2 > kHelpColumn ? "\n" + std::string(kHelpColumn, ' ')
                                          : std::string(kHelpColumn - line.size(), ' ');
    std::string_view help = option.help;
    for (std::size_t end = help.find('\n'); end != std::string_view::npos; end = help.find('\n')) {
      line += std::string(help.substr(0, end + 1)) + std::string(kHelpColumn, ' ');
      help.remove_prefix(end + 1);
    }
    text += line + std::string(help) + "\n";
  }
  return text;
}

}  // namespace quillbay::host
