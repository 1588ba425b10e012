#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/http/Reply.h"

namespace quillbay::sandbox {

struct ZipEntry {
  std::string name;
  std::uint64_t byteCount = 0;
  /// Called when the entry's turn comes, so that thousands of files need one descriptor.
  std::function<std::shared_ptr<FileDescriptor>()> open;
};

/// A ZIP archive made while it is sent, of any size, in constant memory. Unsafe characters in names
/// are replaced; names that occur twice, or differ in case only, are numbered.
Producer zipStream(std::vector<ZipEntry> entries);

}  // namespace quillbay::sandbox
