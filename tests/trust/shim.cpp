// SPDX-License-Identifier: MIT

// A library to be preloaded into a program: it makes one allocation fail, or the clock jump.
//
//   QUELLAR_FAILING_ALLOCATION=N  the allocation with this number, from 0 on, fails once
//   QUELLAR_ALLOCATIONS=FILE      the number of allocations is written there at the end
//   QUELLAR_CLOCK=SECONDS         the time of day is that much later, or earlier
//   QUELLAR_CLOCK=restless        each look at the time of day is twenty years before or after the one before it

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

namespace {

std::atomic<long> allocations{0};
// Nothing fails before the environment can be read.
std::atomic<long> failing{-1};
std::atomic<long> clockOffset{0};
std::atomic<bool> isRestless{false};
std::atomic<unsigned> looks{0};
/// An operator new of the library may itself call malloc, which is the same allocation.
thread_local bool isWithinNew __attribute__((tls_model("initial-exec"))) = false;

struct WithinNew {
  WithinNew() { isWithinNew = true; }
  ~WithinNew() { isWithinNew = false; }
  WithinNew(const WithinNew&) = delete;
  WithinNew& operator=(const WithinNew&) = delete;
};

bool fails() {
  if (isWithinNew) return false;
  return allocations.fetch_add(1) == failing.load();
}

template <typename Function>
Function next(Function& known, const char* name) {
  if (known == nullptr) known = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
  return known;
}

void* (*nextMalloc)(std::size_t) = nullptr;
void* (*nextCalloc)(std::size_t, std::size_t) = nullptr;
void* (*nextRealloc)(void*, std::size_t) = nullptr;
void* (*nextNew)(std::size_t) = nullptr;
void* (*nextNewArray)(std::size_t) = nullptr;

__attribute__((constructor)) void readEnvironment() {
  if (const char* number = std::getenv("QUELLAR_FAILING_ALLOCATION")) {
    allocations = 0;
    failing = std::atol(number);
  }
  if (const char* clock = std::getenv("QUELLAR_CLOCK")) {
    isRestless = std::strcmp(clock, "restless") == 0;
    clockOffset = std::atol(clock);
  }
}

__attribute__((destructor)) void writeCount() {
  const char* path = std::getenv("QUELLAR_ALLOCATIONS");
  if (path == nullptr) return;
  char digits[32];
  const int size = std::snprintf(digits, sizeof digits, "%ld\n", allocations.load());
  const int file = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (file >= 0 && ::write(file, digits, static_cast<std::size_t>(size)) < 0) std::perror(path);
  ::close(file);
}

bool isTimeOfDay(clockid_t clock) {
  return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
}

long jump() {
  if (!isRestless) return clockOffset;
  constexpr long kTwentyYears = 631152000;
  return looks++ % 2 == 0 ? kTwentyYears : -kTwentyYears;
}

}  // namespace

extern "C" {

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's names are reserved.

void* malloc(std::size_t size) {
  if (fails()) {
    errno = ENOMEM;
    return nullptr;
  }
  return next(nextMalloc, "malloc")(size);
}

void* calloc(std::size_t count, std::size_t size) {
  if (fails()) {
    errno = ENOMEM;
    return nullptr;
  }
  return next(nextCalloc, "calloc")(count, size);
}

void* realloc(void* block, std::size_t size) {
  if (fails()) {
    errno = ENOMEM;
    return nullptr;
  }
  return next(nextRealloc, "realloc")(block, size);
}

int clock_gettime(clockid_t clock, timespec* time) {
  const long result = ::syscall(SYS_clock_gettime, clock, time);
  if (result == 0 && isTimeOfDay(clock)) time->tv_sec += jump();
  return static_cast<int>(result);
}

int gettimeofday(timeval* time, void*) {
  timespec now{};
  const int result = clock_gettime(CLOCK_REALTIME, &now);
  time->tv_sec = now.tv_sec;
  time->tv_usec = now.tv_nsec / 1000;
  return result;
}

time_t time(time_t* result) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  if (result != nullptr) *result = now.tv_sec;
  return now.tv_sec;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

}  // extern "C"

void* operator new(std::size_t size) {
  if (fails()) throw std::bad_alloc();
  const WithinNew within;
  return next(nextNew, "_Znwm")(size);
}

void* operator new[](std::size_t size) {
  if (fails()) throw std::bad_alloc();
  const WithinNew within;
  return next(nextNewArray, "_Znam")(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (fails()) return nullptr;
  try {
    const WithinNew within;
    return next(nextNew, "_Znwm")(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
