#include "OptionTable.h"

#include <algorithm>
#include <utility>

#include "PlainText.h"

namespace quillbay::host {
namespace {

constexpr std::size_t kHelpColumn = 26;

/// What to write if the unknown option `name` looks like the name of a file.
std::string hint(const std::string& name) {
  if (name.starts_with("--") && !name.contains('.')) return {};
  return "; for a file of this name write " + inQuotes("./" + name);
}

/// Whether `name` is one of `names`, which ", " separates.
bool isOneOf(std::string_view names, std::string_view name) {
  for (std::size_t end = names.find(", "); end != std::string_view::npos; end = names.find(", ")) {
    if (names.substr(0, end) == name) return true;
    names.remove_prefix(end + 2);
  }
  return names == name;
}

}  // namespace

void OptionTable::addFlag(std::string name, std::string help, bool& value, std::string group) {
  rules_.push_back({.name = std::move(name),
                    .placeholder = {},
                    .help = std::move(help),
                    .group = std::move(group),
                    .take = [&value](const std::string&) { value = true; }});
}

void OptionTable::addEnding(std::string name, std::string help, bool& value) {
  addFlag(std::move(name), std::move(help), value);
  rules_.back().isEnding = true;
}

void OptionTable::addText(std::string name, std::string placeholder, std::string help,
                          std::optional<std::string>& value, std::string group) {
  rules_.push_back({.name = std::move(name),
                    .placeholder = std::move(placeholder),
                    .help = std::move(help),
                    .group = std::move(group),
                    .take = [&value](std::string text) { value = std::move(text); }});
}

void OptionTable::addList(std::string name, std::string placeholder, std::string help,
                          std::vector<std::string>& values) {
  rules_.push_back({.name = std::move(name),
                    .placeholder = std::move(placeholder),
                    .help = std::move(help),
                    .group = {},
                    .isRepeatable = true,
                    .take = [&values](std::string text) { values.push_back(std::move(text)); }});
}

std::expected<std::vector<std::string>, std::string> OptionTable::read(
    std::span<const std::string> arguments) const {
  std::vector<std::string> operands;
  std::vector<const Rule*> given;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    if (*argument == "--") {
      operands.insert(operands.end(), argument + 1, arguments.end());
      break;
    }
    if (argument->size() < 2 || argument->front() != '-') {
      operands.push_back(*argument);
      continue;
    }

    const std::size_t equals = argument->find('=');
    const bool hasValue = equals != std::string::npos;
    const std::string name = argument->substr(0, equals);
    const Rule* rule = find(name);
    if (rule == nullptr) return std::unexpected("unknown option " + inQuotes(name) + hint(name));
    if (auto problem = conflict(*rule, given)) return std::unexpected(*problem);
    given.push_back(rule);

    if (rule->placeholder.empty()) {
      if (hasValue) return std::unexpected(name + " takes no value");
      rule->take({});
    } else if (hasValue) {
      rule->take(argument->substr(equals + 1));
    } else {
      if (++argument == arguments.end()) {
        return std::unexpected(name + " needs a value: " + rule->placeholder);
      }
      rule->take(*argument);
    }
    if (rule->isEnding) return std::vector<std::string>{};
  }
  return operands;
}

std::optional<std::string> OptionTable::conflict(const Rule& rule,
                                                 const std::vector<const Rule*>& given) {
  for (const Rule* earlier : given) {
    if (earlier == &rule && !rule.isRepeatable) return rule.name + " is given twice";
    if (earlier != &rule && !rule.group.empty() && earlier->group == rule.group) {
      return earlier->name + " and " + rule.name + " exclude each other";
    }
  }
  return std::nullopt;
}

std::string OptionTable::help() const {
  std::string text;
  for (const Rule& rule : rules_) {
    std::string line = "  " + rule.name;
    if (!rule.placeholder.empty()) line += " " + rule.placeholder;
    line += line.size() + 2 > kHelpColumn ? "\n" + std::string(kHelpColumn, ' ')
                                          : std::string(kHelpColumn - line.size(), ' ');
    std::string_view help = rule.help;
    for (std::size_t end = help.find('\n'); end != std::string_view::npos; end = help.find('\n')) {
      line += std::string(help.substr(0, end + 1)) + std::string(kHelpColumn, ' ');
      help.remove_prefix(end + 1);
    }
    text += line + std::string(help) + "\n";
  }
  return text;
}

const OptionTable::Rule* OptionTable::find(std::string_view name) const {
  const auto rule = std::ranges::find_if(
      rules_, [&](const Rule& candidate) { return isOneOf(candidate.name, name); });
  return rule == rules_.end() ? nullptr : &*rule;
}

}  // namespace quillbay::host
