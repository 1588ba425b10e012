#include "sandbox/http/RequestStream.h"

#include <strings.h>

#include <algorithm>

namespace quillbay::sandbox {

namespace {

// The library refuses longer lines; what follows in one is passed on piece by piece.
constexpr std::size_t lineByteLimit = 16 * 1024;

bool isRangeHeader(const std::string& line) {
  constexpr std::string_view name = "Range:";
  return ::strncasecmp(line.data(), name.data(), name.size()) == 0;
}

}  // namespace

ssize_t RequestStream::read(char* data, std::size_t byteLimit) {
  if (line_.empty() && !isInHead_) return connection_.read(data, byteLimit);
  if (line_.empty() && !readHeadLine()) return -1;
  const std::size_t count = std::min(byteLimit, line_.size());
  std::copy_n(line_.begin(), count, data);
  line_.erase(0, count);
  return static_cast<ssize_t>(count);
}

bool RequestStream::readHeadLine() {
  if (isMalformed_) return false;
  char c = 0;
  while (line_.size() < lineByteLimit && c != '\n') {
    if (connection_.read(&c, 1) != 1) return false;
    line_ += c;
  }
  isInHead_ = line_ != "\r\n";
  isMalformed_ = !head_.accepts(line_);
  if (isRangeHeader(line_)) line_.replace(0, std::string_view("Range").size(), rangeAlias);
  return true;
}

}  // namespace quillbay::sandbox
