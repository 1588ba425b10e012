#include "sandbox/links/PasswordGate.h"

#include <charconv>

#include "sandbox/support/Digest.h"
#include "sandbox/support/Hex.h"

namespace quillbay::sandbox {

namespace {

constexpr std::string_view cookieName = "quillbay-link=";
constexpr std::chrono::hours passLifetime{12};
constexpr int freeTries = 5;
constexpr std::chrono::seconds pauseAfterWrongTry{30};

/// Calls `accept` with the value of each of our cookies until it returns true.
template <typename Accept>
bool anyPass(std::string_view cookieHeader, Accept accept) {
  for (std::size_t at = cookieHeader.find(cookieName); at != std::string_view::npos;
       at = cookieHeader.find(cookieName)) {
    cookieHeader.remove_prefix(at + cookieName.size());
    if (accept(cookieHeader.substr(0, cookieHeader.find(';')))) return true;
  }
  return false;
}

}  // namespace

PasswordGate::PasswordGate(std::string signingKey, Clock clock)
    : signingKey_(std::move(signingKey)), clock_(std::move(clock)) {}

bool PasswordGate::isOpen(const SessionRecord& session, std::string_view cookieHeader) const {
  if (!session.passwordHash) return true;
  return anyPass(cookieHeader, [&](std::string_view pass) {
    const std::size_t dot = pass.find('.');
    if (dot == std::string_view::npos) return false;
    const std::string_view expiryText = pass.substr(0, dot);
    if (!constantTimeEquals(pass.substr(dot + 1), signature(session, expiryText))) return false;
    std::int64_t expirySeconds = 0;
    std::from_chars(expiryText.data(), expiryText.data() + expiryText.size(), expirySeconds);
    return clock_() < Instant(std::chrono::seconds(expirySeconds));
  });
}

PasswordGate::Answer PasswordGate::tryPassword(const SessionRecord& session,
                                               std::string_view password) {
  if (!takeTry(session.identifier)) return Answer::tooManyTries;
  if (session.passwordHash && !session.passwordHash->matches(password)) return Answer::wrong;
  const std::lock_guard lock(mutex_);
  triesBySession_.erase(session.identifier);
  return Answer::right;
}

/// Counts the try before it is made, so that many at once are not worth more than one by one.
bool PasswordGate::takeTry(const std::string& session) {
  const std::lock_guard lock(mutex_);
  Tries& tries = triesBySession_[session];
  if (clock_() < tries.blockedUntil) return false;
  if (++tries.wrongCount >= freeTries) tries.blockedUntil = clock_() + pauseAfterWrongTry;
  return true;
}

std::string PasswordGate::passFor(const SessionRecord& session) const {
  const std::string expiry = std::to_string((clock_() + passLifetime).time_since_epoch().count());
  return std::string(cookieName) + expiry + "." + signature(session, expiry) + "; Path=/s/" +
         session.slug + "; Secure; HttpOnly; SameSite=Lax";
}

std::string PasswordGate::signature(const SessionRecord& session, std::string_view expiry) const {
  return hexEncode(hmacSha256(signingKey_, session.identifier + "." + std::string(expiry)));
}

}  // namespace quillbay::sandbox
