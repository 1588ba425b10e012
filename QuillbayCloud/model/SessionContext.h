#pragma once

#include <QuillbayPlatform/URL.h>

#include <string>
#include <utility>
#include <vector>

namespace quillbay::cloud {

/// The files that a host wants to share, and who the host is. An immutable value; any thread.
class SessionContext {
 public:
  /// `instanceIdentifier`: names the host's installation to the service; part of every address.
  /// `items`: file URLs in the host's order, each file once. The list may be empty, but such a run
  /// ends with `missingItems`.
  SessionContext(std::string instanceIdentifier, std::vector<platform::URL> items)
      : instanceIdentifier_(std::move(instanceIdentifier)), items_(std::move(items)) {}

  /// Names the host's installation to the service.
  const std::string& instanceIdentifier() const { return instanceIdentifier_; }
  /// The files, in the host's order.
  const std::vector<platform::URL>& items() const { return items_; }

  /// By value.
  friend bool operator==(const SessionContext&, const SessionContext&) = default;

 private:
  std::string instanceIdentifier_;
  std::vector<platform::URL> items_;
};

}  // namespace quillbay::cloud
