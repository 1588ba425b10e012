#include "ThreadLimit.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <limits>

namespace {

constexpr int unlimited = std::numeric_limits<int>::max();
constinit std::atomic<int> remainingCount = unlimited;

}  // namespace

/// In place of the C library's for every library of the process.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*run)(void*), void* argument) noexcept {
  if (remainingCount != unlimited && remainingCount.fetch_sub(1) <= 0) return EAGAIN;
  const auto create = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, __func__));
  return create(thread, attributes, run, argument);
}

namespace quillbay::test {

ThreadLimit::ThreadLimit(int threadCount) { remainingCount = threadCount; }
ThreadLimit::~ThreadLimit() { remainingCount = unlimited; }

}  // namespace quillbay::test
