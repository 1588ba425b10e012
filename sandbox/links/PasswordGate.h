#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "sandbox/model/SessionRecord.h"

namespace quillbay::sandbox {

/// Lets holders of a link's password in, and remembers them by a signed cookie that is worth
/// something for this one link only.
class PasswordGate {
 public:
  PasswordGate(std::string signingKey, Clock clock);

  /// Whether the link needs no password or the Cookie header proves that it was given.
  bool isOpen(const SessionRecord& session, std::string_view cookieHeader) const;

  enum class Answer { right, wrong, tooManyTries };
  Answer tryPassword(const SessionRecord& session, std::string_view password);

  /// A Set-Cookie value.
  std::string passFor(const SessionRecord& session) const;

 private:
  struct Tries {
    int wrongCount = 0;
    Instant blockedUntil;
  };

  bool takeTry(const std::string& session);
  std::string signature(const SessionRecord& session, std::string_view expiry) const;

  std::string signingKey_;
  Clock clock_;
  std::mutex mutex_;
  std::map<std::string, Tries> triesBySession_;
};

}  // namespace quillbay::sandbox
