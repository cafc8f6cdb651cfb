#include "failing_new_matrix.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> in_use{0};
std::atomic<long> allowed_left{-1};  // negative: no limit

void* allocate(std::size_t size) {
  if (allowed_left.load() >= 0 && allowed_left.fetch_sub(1) == 0) {
    allowed_left = 0;
    throw std::bad_alloc();
  }
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p == nullptr) throw std::bad_alloc();
  ++in_use;
  return p;
}

void* allocate_aligned(std::size_t size, std::size_t alignment) {
  if (allowed_left.load() >= 0 && allowed_left.fetch_sub(1) == 0) {
    allowed_left = 0;
    throw std::bad_alloc();
  }
  void* p = std::aligned_alloc(alignment, (size + alignment) / alignment * alignment);
  if (p == nullptr) throw std::bad_alloc();
  ++in_use;
  return p;
}

void release(void* p) noexcept {
  if (p == nullptr) return;
  --in_use;
  std::free(p);
}

}  // namespace

namespace test {

long blocks_in_use() { return in_use; }
allocation_limit::allocation_limit(long allowed) { allowed_left = allowed; }
allocation_limit::~allocation_limit() { allowed_left = -1; }

}  // namespace test

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return allocate(size);
  } catch (...) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}
void* operator new(std::size_t size, std::align_val_t a) {
  return allocate_aligned(size, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t size, std::align_val_t a) {
  return allocate_aligned(size, static_cast<std::size_t>(a));
}
void operator delete(void* p) noexcept { release(p); }
void operator delete[](void* p) noexcept { release(p); }
void operator delete(void* p, std::size_t) noexcept { release(p); }
void operator delete[](void* p, std::size_t) noexcept { release(p); }
void operator delete(void* p, std::align_val_t) noexcept { release(p); }
void operator delete[](void* p, std::align_val_t) noexcept { release(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { release(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { release(p); }
