#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::host {

/// The options of one command: reads them from arguments, and describes them for its help.
///
/// Options and operands may stand in any order; "--" ends the options; an option's value follows
/// as the next argument or after "=", is taken as it is, and may be empty.
class OptionTable {
 public:
  /// An option that is on or off. Of the options of one `group` only one may be given.
  void addFlag(std::string name, std::string help, bool& value, std::string group = {});
  /// An option with a value, called `placeholder` in the help.
  void addText(std::string name, std::string placeholder, std::string help,
               std::optional<std::string>& value, std::string group = {});
  /// An option with a value that can be given several times.
  void addList(std::string name, std::string placeholder, std::string help,
               std::vector<std::string>& values);

  /// A flag that makes all that follows it irrelevant, such as a request for help. `name` may hold
  /// several: "-h, --help".
  void addEnding(std::string name, std::string help, bool& value);

  /// Fills the variables in and returns the operands, or what is wrong, for people. After an ending
  /// flag there are no operands.
  std::expected<std::vector<std::string>, std::string> read(
      std::span<const std::string> arguments) const;

  /// A line for each option, in the order in which they were added.
  std::string help() const;

 private:
  struct Rule {
    std::string name;
    std::string placeholder;
    std::string help;
    std::string group;
    bool isRepeatable = false;
    bool isEnding = false;
    std::function<void(std::string value)> take;
  };

  const Rule* find(std::string_view name) const;
  /// What speaks against `rule` after the options `given`, for people.
  static std::optional<std::string> conflict(const Rule& rule,
                                             const std::vector<const Rule*>& given);

  std::vector<Rule> rules_;
};

}  // namespace quillbay::host
