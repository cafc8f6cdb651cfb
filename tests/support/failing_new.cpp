#include "support/failing_new.h"

#include <atomic>
#include <cstdlib>

namespace {

// Counted in relaxed order: a count must not order the threads of a program that is looked at for races.
constexpr auto relaxed = std::memory_order_relaxed;
std::atomic<long> live{0};
std::atomic<long long> requested{0};
std::atomic<long> countdown{-1};
std::atomic<int> failed{0};  // not a bool: RISC-V has no instruction that exchanges one byte

void* allocate(std::size_t size) {
  if (size > test::largest_request) return nullptr;
  if (countdown.load(relaxed) >= 0 && countdown.fetch_sub(1, relaxed) == 0) {
    failed = 1;
    return nullptr;
  }
  requested.fetch_add(static_cast<long long>(size), relaxed);
  void* p = std::malloc(size ? size : 1);
  if (p) live.fetch_add(1, relaxed);
  return p;
}

void* allocate_or_throw(std::size_t size) {
  void* p = allocate(size);
  if (!p) throw std::bad_alloc();
  return p;
}

void* allocate_aligned(std::size_t size, std::align_val_t alignment) {
  if (size > test::largest_request) throw std::bad_alloc();
  if (countdown.load(relaxed) >= 0 && countdown.fetch_sub(1, relaxed) == 0) {
    failed = 1;
    throw std::bad_alloc();
  }
  requested.fetch_add(static_cast<long long>(size), relaxed);
  const auto a = static_cast<std::size_t>(alignment);
#if defined(_WIN32)
  void* p = _aligned_malloc(size, a);
#else
  void* p = std::aligned_alloc(a, (size + a - 1) / a * a);
#endif
  if (!p) throw std::bad_alloc();
  live.fetch_add(1, relaxed);
  return p;
}

void release(void* p) noexcept {
  if (!p) return;
  live.fetch_sub(1, relaxed);
  std::free(p);
}

void release_aligned(void* p) noexcept {
#if defined(_WIN32)
  if (!p) return;
  live.fetch_sub(1, relaxed);
  _aligned_free(p);
#else
  release(p);
#endif
}

}  // namespace

namespace test {

long live_blocks() { return live; }

long long requested_bytes() { return requested; }

void fail_after(long k) {
  failed = 0;
  countdown = k;
}

bool stop_failing() {
  countdown = -1;
  return failed.exchange(0) != 0;
}

}  // namespace test

void* operator new(std::size_t size) { return allocate_or_throw(size); }
void* operator new[](std::size_t size) { return allocate_or_throw(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t a) { return allocate_aligned(size, a); }
void* operator new[](std::size_t size, std::align_val_t a) { return allocate_aligned(size, a); }
void operator delete(void* p) noexcept { release(p); }
void operator delete[](void* p) noexcept { release(p); }
void operator delete(void* p, std::size_t) noexcept { release(p); }
void operator delete[](void* p, std::size_t) noexcept { release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { release(p); }
void operator delete(void* p, std::align_val_t) noexcept { release_aligned(p); }
void operator delete[](void* p, std::align_val_t) noexcept { release_aligned(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { release_aligned(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { release_aligned(p); }
