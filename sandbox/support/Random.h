#pragma once

#include <cstddef>
#include <string>

namespace quillbay::sandbox {

/// Bytes from the system's cryptographic generator.
std::string randomBytes(std::size_t byteCount);

/// Letters and digits, 5.95 bits of randomness each.
std::string randomText(std::size_t length);

}  // namespace quillbay::sandbox
