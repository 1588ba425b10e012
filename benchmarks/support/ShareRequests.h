#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quillbay::bench {

/// One of the requests that a share sends, for a peer to send as well.
struct ShareRequest {
  std::string method;
  std::string url;
  std::vector<std::string> headerLines;
  std::string body;
  /// The file to send in place of `body`; empty for requests to the service.
  std::filesystem::path file;
  std::uint64_t fileByteCount = 0;
};

/// The requests of a share of these files as the library sends them for this instance, in its
/// order: one creates the session, then three an item, the last item first.
std::vector<ShareRequest> shareRequests(const std::string& instance,
                                        const std::vector<std::filesystem::path>& files);

}  // namespace quillbay::bench
