#pragma once

#include <httplib.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillbay::sandbox {

/// A request's body, still on its way.
class RequestBody {
 public:
  /// Without a reader: a request whose body the client still holds back.
  RequestBody(const httplib::Request& request, const httplib::ContentReader* reader);

  /// From Content-Length; absent when there is none, it makes no sense, or the body comes in
  /// chunks.
  std::optional<std::uint64_t> announcedByteCount() const { return announcedByteCount_; }

  /// Hands the bytes over as they arrive. False: the connection broke off or fell silent, or the
  /// body is a form in parts, which the library would take apart.
  bool read(const std::function<void(std::string_view)>& receive);

  /// The whole body; nothing when it is longer than the limit or broke off.
  std::optional<std::string> text(std::size_t byteLimit);

  /// Takes what is left off the wire, so that the client, which may read nothing before it has
  /// sent everything, sees the reply.
  void discard();

 private:
  const httplib::ContentReader* reader_;
  std::optional<std::uint64_t> announcedByteCount_;
  bool isPresent_;
  bool isMultipart_;
  bool isConsumed_ = false;
};

}  // namespace quillbay::sandbox
