// The program's own malloc and free stand before those of the C library, so that what every library takes is counted,
// whatever language it is written in. While nothing is counted they cost a test of a flag.
#include "memory.h"

#include <errno.h>
#include <malloc.h>

#include <algorithm>
#include <cstdint>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

bool counts = false;
std::int64_t allocations, held, most_held;

void* taken(void* block) noexcept {
  if (!counts || !block) return block;
  ++allocations;
  held += static_cast<std::int64_t>(malloc_usable_size(block));
  most_held = std::max(most_held, held);
  return block;
}

// Blocks from before the count may make `held` negative.
void given_back(void* block) noexcept {
  if (counts && block) held -= static_cast<std::int64_t>(malloc_usable_size(block));
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept { return taken(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) noexcept { return taken(__libc_calloc(count, size)); }
void* memalign(std::size_t alignment, std::size_t size) noexcept { return taken(__libc_memalign(alignment, size)); }
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return taken(__libc_memalign(alignment, size));
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
  *block = taken(__libc_memalign(alignment, size));
  return *block ? 0 : ENOMEM;
}
void* realloc(void* block, std::size_t size) noexcept {
  given_back(block);
  return taken(__libc_realloc(block, size));
}
void free(void* block) noexcept {
  given_back(block);
  __libc_free(block);
}

}  // extern "C"

namespace bench {

void start_counting_memory() {
  allocations = held = most_held = 0;
  counts = true;
}

memory_use stop_counting_memory() {
  counts = false;
  return {static_cast<double>(allocations), static_cast<double>(most_held)};
}

}  // namespace bench
