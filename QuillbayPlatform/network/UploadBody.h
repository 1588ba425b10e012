#pragma once

#include <QuillbayPlatform/FileHandle.h>

#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>

namespace quillbay::platform {

/// The bytes of one file as the body of a request: exactly as many as were announced, whatever
/// happens to the file meanwhile. Opened once. Engine thread, which the file system's answer
/// blocks: docs/architecture.md says why.
class UploadBody {
 public:
  /// `announcedByteCount`: the length that the request declares; the file's size if absent. Fails
  /// when the file cannot be opened, is no regular file, or is already shorter.
  static std::expected<UploadBody, ErrorPtr> open(const URL& fileURL,
                                                  std::optional<std::uint64_t> announcedByteCount);

  std::uint64_t byteCount() const { return byteCount_; }

  /// The next bytes, 0 after the last announced one. Fails if the file ends before that.
  std::expected<std::size_t, ErrorPtr> read(std::span<std::byte> buffer);

  /// Goes back to the first byte, so that the body can be sent again.
  bool rewind();

 private:
  UploadBody(FileHandle file, URL fileURL, std::uint64_t byteCount)
      : file_(std::move(file)), fileURL_(std::move(fileURL)), byteCount_(byteCount) {}

  FileHandle file_;
  URL fileURL_;
  std::uint64_t byteCount_;
  std::uint64_t position_ = 0;
};

}  // namespace quillbay::platform
