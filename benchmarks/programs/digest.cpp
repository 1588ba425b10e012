// bench-digest FILE ROUNDS: one line a round, the seconds of the library's fingerprint of the file
// and those of OpenSSL's digest over the same bytes in memory.

#include <QuillbayPlatform/SHA256.h>

#include <array>
#include <fstream>
#include <iostream>

#include "benchmarks/support/FileFingerprints.h"
#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/OpenSslHandles.h"
#include "benchmarks/support/Stopwatch.h"

namespace quillbay::bench {
namespace {

std::vector<char> contents(const std::string& path) {
  std::ifstream stream(path, std::ios::binary | std::ios::ate);
  std::vector<char> bytes(static_cast<std::size_t>(stream.tellg()));
  stream.seekg(0);
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!stream) fail("cannot read " + path);
  return bytes;
}

std::string digestInMemory(const std::vector<char>& bytes) {
  std::array<std::byte, 32> digest = {};
  const DigestContext context(EVP_MD_CTX_new());
  EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr);
  EVP_DigestUpdate(context.get(), bytes.data(), bytes.size());
  EVP_DigestFinal_ex(context.get(), reinterpret_cast<unsigned char*>(digest.data()), nullptr);
  return platform::lowercaseHexadecimal(digest);
}

template <class Work>
double secondsOf(std::string& result, Work work) {
  const Stopwatch stopwatch;
  result = work();
  return stopwatch.seconds();
}

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 2) fail("usage: bench-digest FILE ROUNDS");
  const std::vector<std::string> paths = {arguments[0]};
  const int roundCount = std::stoi(arguments[1]);
  const auto bytes = contents(arguments[0]);
  std::string ofFile;
  std::string ofMemory;
  // Once for nothing: the first run starts the work queue.
  for (int round = -1; round < roundCount; ++round) {
    const double file = secondsOf(ofFile, [&] { return fileFingerprints(paths).front(); });
    const double memory = secondsOf(ofMemory, [&] { return digestInMemory(bytes); });
    if (ofFile != ofMemory) fail("the fingerprints differ");
    if (round >= 0) std::cout << file << ' ' << memory << '\n';
  }
}

}  // namespace
}  // namespace quillbay::bench

int main(int argumentCount, char** arguments) {
  return quillbay::bench::runProgram("bench-digest", argumentCount, arguments,
                                     quillbay::bench::run);
}
