#include <QuillbayPlatform/network/UploadBody.h>

#include <algorithm>

namespace quillbay::platform {
namespace {

ErrorPtr shortened(const URL& fileURL) {
  return std::make_shared<const FileError>("read", fileURL.path(),
                                           "the file is shorter than announced");
}

}  // namespace

std::expected<UploadBody, ErrorPtr> UploadBody::open(
    const URL& fileURL, std::optional<std::uint64_t> announcedByteCount) {
  auto file = FileHandle::openForReading(fileURL);
  if (!file) return std::unexpected(std::move(file.error()));
  const std::uint64_t byteCount = announcedByteCount.value_or(file->initialByteCount());
  if (file->initialByteCount() < byteCount) return std::unexpected(shortened(fileURL));
  file->adviseSequential();
  return UploadBody(std::move(*file), fileURL, byteCount);
}

std::expected<std::size_t, ErrorPtr> UploadBody::read(std::span<std::byte> buffer) {
  const auto wanted = std::min<std::uint64_t>(buffer.size(), byteCount_ - position_);
  if (wanted == 0) return 0;
  const auto count = file_.read(buffer.first(static_cast<std::size_t>(wanted)));
  if (!count) return count;
  if (*count == 0) return std::unexpected(shortened(fileURL_));
  position_ += *count;
  return count;
}

bool UploadBody::rewind() {
  position_ = 0;
  return file_.seek(0);
}

}  // namespace quillbay::platform
