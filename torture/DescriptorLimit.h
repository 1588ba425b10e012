#pragma once

#include <sys/resource.h>
#include <unistd.h>

namespace quillbay::test {

/// While it lives, this process can have so many more descriptors at a time.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(int count) {
    const int lowestFree = ::dup(STDOUT_FILENO);
    ::close(lowestFree);
    ::getrlimit(RLIMIT_NOFILE, &previous_);
    const rlimit limit = {static_cast<rlim_t>(lowestFree + count), previous_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &previous_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit previous_;
};

}  // namespace quillbay::test
