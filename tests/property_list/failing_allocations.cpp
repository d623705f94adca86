// SPDX-License-Identifier: MIT
#include "failing_allocations.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr long kAll = std::numeric_limits<long>::max();
/// How many allocations succeed until one fails.
long allocationsLeft = kAll;
bool hasFailed = false;

void* allocated(std::size_t size) {
  if (allocationsLeft != kAll && allocationsLeft-- == 0) {
    hasFailed = true;
    allocationsLeft = kAll;
    return nullptr;
  }
  return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

void* operator new(std::size_t size) {
  void* memory = allocated(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocated(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocated(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}

namespace quellar::tests {

void failAllocationAfter(long successes) {
  hasFailed = false;
  allocationsLeft = successes;
}

bool stopFailing() {
  allocationsLeft = kAll;
  return hasFailed;
}

}  // namespace quellar::tests
