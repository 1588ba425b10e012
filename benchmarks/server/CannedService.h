#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "benchmarks/server/Connection.h"

namespace quillbay::bench {

/// A sharing service that remembers nothing: a session's identifier tells how many items it has.
/// Any thread.
class CannedService {
 public:
  /// The whole reply to a request, head and body. `body` is the request's.
  std::string reply(const RequestHead& head, std::string_view body);

 private:
  struct SessionReplies {
    std::string plain;
    std::string compressed;
  };

  const SessionReplies& sessionReplies(std::size_t itemCount, const std::string& identifier);

  std::mutex mutex_;
  // By number of items and identifier. Guarded by mutex_; entries never change.
  std::map<std::pair<std::size_t, std::string>, SessionReplies> sessionReplies_;
};

}  // namespace quillbay::bench
