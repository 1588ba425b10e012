#pragma once

#include <httplib.h>

#include <cstdint>

namespace quillbay::sandbox {

/// A client's connection with buffers in both directions, as the HTTP library's stream. Used by one
/// thread.
class Connection : public httplib::Stream {
 public:
  /// Sends what is buffered; false when the client has gone.
  virtual bool flush() = 0;

  /// Plain bytes taken by the reader and handed over by the writer so far.
  virtual std::uint64_t readByteCount() const = 0;
  virtual std::uint64_t writtenByteCount() const = 0;
};

}  // namespace quillbay::sandbox
