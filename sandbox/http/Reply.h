#pragma once

#include <httplib.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "sandbox/support/Files.h"

namespace quillbay::sandbox {

/// A part of an open file.
struct FileSlice {
  std::shared_ptr<FileDescriptor> file;
  std::uint64_t offset = 0;
  std::uint64_t byteCount = 0;
};

/// Takes the next bytes; false when the client has gone.
using Write = std::function<bool(std::string_view)>;

/// Content made while it is sent; returns false to break the connection off, which is how the
/// client learns that the content is not whole.
using Producer = std::function<bool(const Write&)>;

using ReplyHeaders = std::vector<std::pair<std::string, std::string>>;

struct Reply {
  int status = 200;
  std::string contentType;
  std::variant<std::string, FileSlice, Producer> body;
  ReplyHeaders headers;
};

/// Hands the reply to the HTTP library; texts are compressed for clients that ask for gzip.
void transfer(Reply reply, const httplib::Request& request, httplib::Response& response);

}  // namespace quillbay::sandbox
