#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::host {

class OptionTable;

/// The option --instance as written on the command line: the name of this installation for the
/// service.
class InstanceOption {
 public:
  /// Adds the option, which fills this object in. `defaultName` is what its help tells.
  void addTo(OptionTable& table, std::string_view defaultName);

  /// The name, absent if none was given; or what is wrong, for people.
  std::expected<std::optional<std::string>, std::string> checked() const;

 private:
  std::optional<std::string> value_;
};

}  // namespace quillbay::host
