#include "sandbox/store/IncomingObject.h"

#include <fcntl.h>
#include <unistd.h>

#include "sandbox/support/Hex.h"
#include "sandbox/support/Random.h"

namespace quillbay::sandbox {

namespace {

// The HTTP library hands over 4 KiB at a time; hashing and writing want more.
constexpr std::size_t pieceByteCount = 256 * 1024;

}  // namespace

IncomingObject::IncomingObject(const std::filesystem::path& folder)
    : path_(folder / randomText(16)), file_(openFile(path_, O_WRONLY | O_CREAT | O_EXCL)) {}

IncomingObject::~IncomingObject() { ::unlink(path_.c_str()); }

void IncomingObject::append(std::string_view bytes) {
  pending_ += bytes;
  byteCount_ += bytes.size();
  if (pending_.size() >= pieceByteCount) writeOut();
}

void IncomingObject::finish() {
  writeOut();
  entityTag_ = "\"" + hexEncode(md5_.finish()) + "\"";
  fingerprint_ = hexEncode(sha256_.finish());
}

void IncomingObject::writeOut() {
  md5_.update(pending_);
  sha256_.update(pending_);
  writeAll(file_.get(), pending_, path_);
  pending_.clear();
}

}  // namespace quillbay::sandbox
