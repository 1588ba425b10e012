#pragma once

#include <string>
#include <utility>

#include "hosts/common/NetworkOptions.h"

namespace quillbay::cli {

class Console;

/// What is to happen to a link beside being printed on standard output.
struct LinkDisplayOptions {
  /// It goes to the clipboard, by way of the terminal.
  bool copy = false;
  /// It is shown as a QR code on the terminal of standard error.
  bool qrCode = false;
};

/// Copies and draws links on the terminal; what the terminal cannot do is said on standard error,
/// and no failure. Main thread only.
class LinkDisplay {
 public:
  /// `console` outlives this object.
  LinkDisplay(LinkDisplayOptions options, Console& console, host::Environment environment)
      : options_(options), console_(console), environment_(std::move(environment)) {}

  /// `link` was printed.
  void show(const std::string& link) const;

 private:
  void copy(const std::string& link) const;
  void draw(const std::string& link) const;

  const LinkDisplayOptions options_;
  Console& console_;
  const host::Environment environment_;
};

}  // namespace quillbay::cli
