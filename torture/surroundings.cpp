// Preloaded into a program: takes the place of the C library's clocks and writes, for every library
// of the process, and does what `Surroundings` says.

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "Surroundings.h"

namespace {

using quillbay::torture::Surroundings;

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

Surroundings* mapSurroundings() {
  static Surroundings ordinary;
  const char* path = std::getenv(Surroundings::kVariable);
  const int file = path == nullptr ? -1 : ::open(path, O_RDWR | O_CLOEXEC);
  if (file < 0) return &ordinary;
  void* mapped = ::mmap(nullptr, sizeof(Surroundings), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ::close(file);
  return mapped == MAP_FAILED ? &ordinary : static_cast<Surroundings*>(mapped);
}

Surroundings& surroundings() {
  static Surroundings* const mapped = mapSurroundings();
  return *mapped;
}

template <class Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

std::int64_t nanoseconds(const timespec& time) {
  return time.tv_sec * kNanosecondsPerSecond + time.tv_nsec;
}

timespec timeOf(std::int64_t nanoseconds) {
  return {.tv_sec = nanoseconds / kNanosecondsPerSecond,
          .tv_nsec = nanoseconds % kNanosecondsPerSecond};
}

std::int64_t systemTime(clockid_t clock) {
  static auto* const get = original<decltype(::clock_gettime)>("clock_gettime");
  timespec time{};
  get(clock, &time);
  return nanoseconds(time);
}

/// Where the fast clock and the system's were alike.
std::int64_t steadyStart() {
  static const std::int64_t start = systemTime(CLOCK_MONOTONIC);
  return start;
}

/// How much of `byteCount` a file takes; nothing, with an error, if the disk is full.
ssize_t roomFor(int descriptor, std::size_t byteCount) {
  auto& room = surroundings().freeByteCount;
  struct stat file{};
  const bool isOnDisk =
      descriptor > STDERR_FILENO && ::fstat(descriptor, &file) == 0 && S_ISREG(file.st_mode);
  std::int64_t before = room;
  const auto wanted = static_cast<std::int64_t>(byteCount);
  if (!isOnDisk || before == Surroundings::kUnlimited) return wanted;
  std::int64_t taken = std::min(before, wanted);
  while (!room.compare_exchange_weak(before, before - taken)) taken = std::min(before, wanted);
  if (taken > 0 || wanted == 0) return taken;
  errno = ENOSPC;
  return -1;
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (clock == CLOCK_REALTIME) {
    const std::int64_t jump = surroundings().wallClockJumpSeconds * kNanosecondsPerSecond;
    *time = timeOf(systemTime(clock) + jump);
    return 0;
  }
  if (clock == CLOCK_MONOTONIC) {
    const std::int64_t start = steadyStart();
    *time = timeOf(start + (systemTime(clock) - start) * surroundings().steadyClockSpeed);
    return 0;
  }
  *time = timeOf(systemTime(clock));
  return 0;
}

int gettimeofday(timeval* time, void* /*zone*/) noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  *time = {.tv_sec = now.tv_sec, .tv_usec = now.tv_nsec / 1000};
  return 0;
}

time_t time(time_t* result) noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  if (result != nullptr) *result = now.tv_sec;
  return now.tv_sec;
}

/// The system waits by its own clocks.
int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                           const timespec* end) {
  static auto* const wait = original<decltype(pthread_cond_clockwait)>("pthread_cond_clockwait");
  timespec now{};
  clock_gettime(clock, &now);
  const std::int64_t left = nanoseconds(*end) - nanoseconds(now);
  const std::int64_t speed = clock == CLOCK_MONOTONIC ? surroundings().steadyClockSpeed : 1;
  const timespec systemEnd = timeOf(systemTime(clock) + left / speed);
  return wait(condition, mutex, clock, &systemEnd);
}

ssize_t write(int descriptor, const void* bytes, std::size_t byteCount) {
  static auto* const put = original<decltype(::write)>("write");
  const ssize_t room = roomFor(descriptor, byteCount);
  return room < 0 ? room : put(descriptor, bytes, static_cast<std::size_t>(room));
}

ssize_t pwrite64(int descriptor, const void* bytes, std::size_t byteCount, off64_t offset) {
  static auto* const put = original<decltype(::pwrite64)>("pwrite64");
  const ssize_t room = roomFor(descriptor, byteCount);
  return room < 0 ? room : put(descriptor, bytes, static_cast<std::size_t>(room), offset);
}

}  // extern "C"
