#include "benchmarks/runner/Machine.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <sstream>

#include "benchmarks/runner/ChildProcess.h"

namespace quillbay::bench {
namespace {

/// The value of the first of the lines "name : value"; empty if there is none.
std::string valueIn(const char* file, std::string_view name) {
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    if (!line.starts_with(name)) continue;
    const auto value = line.find_first_not_of(" \t", line.find(':') + 1);
    return value == std::string::npos ? std::string() : line.substr(value);
  }
  return {};
}

/// x86 calls the instructions sha_ni, Arm sha2.
bool hasShaInstructions() {
  std::istringstream words(valueIn("/proc/cpuinfo", "flags") + ' ' +
                           valueIn("/proc/cpuinfo", "Features"));
  return std::any_of(std::istream_iterator<std::string>(words), {},
                     [](const auto& word) { return word == "sha_ni" || word == "sha2"; });
}

std::string memoryText() {
  constexpr double kKibibytesPerGibibyte = 1024.0 * 1024.0;
  const double gibibytes =
      std::strtod(valueIn("/proc/meminfo", "MemTotal").c_str(), nullptr) / kKibibytesPerGibibyte;
  std::ostringstream text;
  text.precision(3);
  text << gibibytes << " GiB";
  return text.str();
}

std::string kernelText() {
  utsname names = {};
  uname(&names);
  const std::string release = names.release;
  return std::string(names.sysname) + ' ' + release.substr(0, release.find('-')) + ' ' +
         names.machine;
}

double loadAverage() {
  double load = 0;
  std::ifstream("/proc/loadavg") >> load;
  return load;
}

/// "curl 7.88.1 (...) libcurl/7.88.1 OpenSSL/3.0.19" of a longer line.
std::string firstWords(const std::string& line, int count) {
  std::istringstream words(line);
  std::string result;
  for (std::string word; count > 0 && words >> word; --count) {
    result.append(result.empty() ? "" : " ").append(word);
  }
  return result;
}

std::string firstLine(const Command& command, const std::filesystem::path& outputFile) {
  runCommand(command, outputFile);
  const std::string text = readText(outputFile);
  return text.substr(0, text.find('\n'));
}

}  // namespace

Machine describeMachine(const std::filesystem::path& outputFile) {
  Machine machine;
  machine.processor = valueIn("/proc/cpuinfo", "model name");
  if (machine.processor.empty()) machine.processor = "unnamed processor";
  machine.coreCount = sysconf(_SC_NPROCESSORS_ONLN);
  machine.hasShaInstructions = hasShaInstructions();
  machine.memory = memoryText();
  machine.kernel = kernelText();
  machine.load = loadAverage();
  machine.compiler = std::string("g++ ") + __VERSION__;
  machine.curl = firstWords(firstLine({"curl", "--version"}, outputFile), 5);
  machine.openssl = firstLine({"openssl", "version"}, outputFile);
  machine.coreutils = firstLine({"sha256sum", "--version"}, outputFile);
  return machine;
}

}  // namespace quillbay::bench
