#include "benchmarks/runner/DataFiles.h"

#include <algorithm>
#include <fstream>
#include <random>

#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {
namespace {

constexpr std::uint64_t kPieceByteCount = std::uint64_t{1} << 20;

void writeRandom(const std::filesystem::path& path, std::uint64_t byteCount,
                 std::mt19937_64& random) {
  std::ofstream stream(path, std::ios::binary);
  std::vector<std::uint64_t> piece(std::min(byteCount, kPieceByteCount) / sizeof(std::uint64_t));
  for (std::uint64_t written = 0; written < byteCount; written += kPieceByteCount) {
    std::ranges::generate(piece, std::ref(random));
    stream.write(reinterpret_cast<const char*>(piece.data()),
                 static_cast<std::streamsize>(piece.size() * sizeof(std::uint64_t)));
  }
  stream.close();
  if (!stream) fail("cannot write " + path.string());
}

}  // namespace

DataFiles makeDataFiles(const std::filesystem::path& folder) {
  std::mt19937_64 random(20260101);
  DataFiles files{folder / "large", folder / "medium", {}};
  writeRandom(files.large, kLargeByteCount, random);
  writeRandom(files.medium, kMediumByteCount, random);
  const auto smallFolder = folder / "small";
  create_directory(smallFolder);
  for (std::size_t i = 0; i < kSmallFileCount; ++i) {
    files.small.push_back(smallFolder / ("file-" + std::to_string(i) + ".dat"));
    writeRandom(files.small.back(), kSmallByteCount, random);
  }
  return files;
}

}  // namespace quillbay::bench
