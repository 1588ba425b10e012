#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillbay::host {

/// Whether an argument of a command line is an option: a single dash is not, nor is "--".
inline bool isOption(std::string_view argument) {
  return argument.size() > 1 && argument.front() == '-' && argument != "--";
}

/// The options of one command: reads them from arguments, and describes them for its help.
///
/// Options and operands may stand in any order; "--" ends the options. The value of a long option
/// follows as the next argument or after "=", that of a letter as the next argument or behind the
/// letter; it is taken as it is and, unless it follows the letter, may be empty. Letters can
/// be bundled: "-qt TEXT" is "-q -t TEXT". An option's name is "--name" or "-n, --name".
class OptionTable {
 public:
  struct Option {
    /// 0 if there is none.
    char letter = 0;
    /// With its dashes.
    std::string name = {};
    /// What its value is called; empty for a flag. "FILE" is a path; "a|b" is one of these words.
    std::string placeholder = {};
    std::string help;
    std::string group = {};
    bool isRepeatable = false;
    bool isEnding = false;
    std::function<void(std::string value)> take;

    bool takesValue() const { return !placeholder.empty(); }
  };

  /// An option that is on or off. Of the options of one `group` only one may be given.
  void addFlag(std::string_view name, std::string help, bool& value, std::string group = {});
  /// An option with a value, called `placeholder` in the help.
  void addText(std::string_view name, std::string placeholder, std::string help,
               std::optional<std::string>& value, std::string group = {});
  /// An option with a value that can be given several times.
  void addList(std::string_view name, std::string placeholder, std::string help,
               std::vector<std::string>& values);

  /// A flag that makes all that follows it irrelevant, such as a request for help.
  void addEnding(std::string_view name, std::string help, bool& value);

  /// Fills the variables in and returns the operands, or what is wrong, for people. After an ending
  /// flag there are no operands.
  std::expected<std::vector<std::string>, std::string> read(
      std::span<const std::string> arguments) const;

  /// A line for each option, in the order in which they were added.
  std::string help() const;

  /// In the order in which they were added.
  const std::vector<Option>& options() const { return options_; }

  /// The option with which `argument` begins, which begins with a dash, and the rest of the
  /// argument behind it.
  struct Match {
    /// Null if the table has no such option.
    const Option* option = nullptr;
    /// As it was written: "--name" or "-n".
    std::string name;
    /// What follows "=" or, of a letter that takes one, behind the letter.
    std::optional<std::string> value = {};
    /// Letters that are bundled with a flag, with a dash before them.
    std::optional<std::string> bundle = {};
  };
  Match match(const std::string& argument) const;

 private:
  void add(std::string_view name, Option option);
  /// What speaks against `option` after the options `given`, for people.
  static std::optional<std::string> conflict(const Option& option,
                                             const std::vector<const Option*>& given);

  std::vector<Option> options_;
};

}  // namespace quillbay::host
