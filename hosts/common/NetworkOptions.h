#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillbay::host {

class OptionTable;

/// Looks up a variable of the environment; absent when it is not set.
using Environment = std::function<std::optional<std::string>(const char* name)>;

/// The environment of this process.
Environment processEnvironment();

/// How a program reaches the service.
struct NetworkOptions {
  /// Valid routes; from the command line, or else from QUILLBAY_CONNECT_TO.
  std::vector<std::string> connectTo = {};
  /// From the command line, or else from QUILLBAY_CACERT; empty: the system's authorities.
  std::string caBundlePath = {};
  /// Whether the environment names a proxy for https.
  bool usesProxy = false;

  /// Points the library there. Returns what is wrong, for people, if the bundle cannot be read.
  std::optional<std::string> apply() const;

  friend bool operator==(const NetworkOptions&, const NetworkOptions&) = default;
};

/// The same as written on the command line, before it is checked.
class RawNetworkOptions {
 public:
  /// Adds --connect-to and --cacert, which fill this object in.
  void addTo(OptionTable& table);

  /// The variables that `checked` reads, a line each for the help of a program.
  static constexpr const char* kEnvironmentHelp =
      "  QUILLBAY_CONNECT_TO  default of --connect-to; commas or blanks separate routes\n"
      "  QUILLBAY_CACERT      default of --cacert\n";

  /// With the environment's defaults; or what is wrong, for people.
  std::expected<NetworkOptions, std::string> checked(const Environment& environment) const;

 private:
  std::vector<std::string> connectTo_;
  std::optional<std::string> caBundlePath_;
};

}  // namespace quillbay::host
