#pragma once

#include <cstddef>
#include <string>

namespace quillbay::bench {

/// The identifier of the n-th item of every session, counted from 0.
std::string itemIdentifier(std::size_t index);

/// The identifier of a session whose finalize replies hold as many items.
std::string sessionIdentifier(std::size_t replyItemCount);

/// A session object as the service writes it, with as many items. The same text on every call.
std::string sessionText(std::size_t itemCount, const std::string& identifier);

/// A finalize reply: a whole session.
inline std::string sessionText(std::size_t itemCount) {
  return sessionText(itemCount, sessionIdentifier(itemCount));
}

}  // namespace quillbay::bench
