#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "sandbox/support/Digest.h"
#include "sandbox/support/Files.h"

namespace quillbay::sandbox {

/// An object on its way to disk. Both digests are computed as the bytes pass, so that nothing has
/// to read them again. The temporary file vanishes with the object unless it was moved away.
class IncomingObject {
 public:
  explicit IncomingObject(const std::filesystem::path& folder);
  ~IncomingObject();
  IncomingObject(const IncomingObject&) = delete;
  IncomingObject& operator=(const IncomingObject&) = delete;

  /// Throws std::system_error when the disk does not take the bytes.
  void append(std::string_view bytes);
  /// Nothing can be appended after this.
  void finish();

  const std::filesystem::path& file() const { return path_; }
  std::uint64_t byteCount() const { return byteCount_; }
  /// Of the finished object: the MD5 digest between double quotes, and the SHA-256 digest.
  const std::string& entityTag() const { return entityTag_; }
  const std::string& fingerprint() const { return fingerprint_; }

 private:
  void writeOut();

  std::filesystem::path path_;
  FileDescriptor file_;
  std::string pending_;
  std::uint64_t byteCount_ = 0;
  Digest md5_ = Digest::md5();
  Digest sha256_ = Digest::sha256();
  std::string entityTag_;
  std::string fingerprint_;
};

}  // namespace quillbay::sandbox
