#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace quillbay::bench {

inline constexpr std::uint64_t kLargeByteCount = std::uint64_t{1} << 30;
inline constexpr std::uint64_t kMediumByteCount = std::uint64_t{64} << 20;
inline constexpr std::uint64_t kSmallByteCount = 4096;
inline constexpr std::size_t kSmallFileCount = 10'000;

/// The files that are hashed and uploaded. Random bytes, just written and so in the page cache.
struct DataFiles {
  std::filesystem::path large;
  std::filesystem::path medium;
  std::vector<std::filesystem::path> small;
};

/// Writes them into `folder`; fails if there is no room.
DataFiles makeDataFiles(const std::filesystem::path& folder);

}  // namespace quillbay::bench
