// Counts what the module allocates and releases: its imports of malloc and free are replaced by functions of this
// program. A request above the limit fails, as it does on a machine with less memory.
#pragma once

#include <cstdlib>
#include <cstring>

#include "system.h"

namespace heap {

inline int allocated = 0;
inline int released = 0;
inline void* last_allocated = nullptr;
inline void* last_released = nullptr;
inline unsigned long long largest_request = 1ull << 30;

inline void* __cdecl count_malloc(size_t size) {
  if (size > largest_request) return nullptr;
  ++allocated;
  return last_allocated = std::malloc(size);
}

inline void __cdecl count_free(void* block) {
  if (block == nullptr) return;
  ++released;
  last_released = block;
  std::free(block);
}

inline void reset() {
  allocated = released = 0;
  last_allocated = last_released = nullptr;
}

inline unsigned number_at(const unsigned char* p) {
  unsigned v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

// Replaces one import of the module; false when it has none of that name.
inline bool replace_import(unsigned char* module, const char* name, void* replacement) {
  const unsigned char* header = module + number_at(module + 0x3C);
  constexpr unsigned import_directory = 0x90;  // in the 64-bit header: the second data directory
  const unsigned char* library = module + number_at(header + import_directory);
  constexpr unsigned descriptor_size = 20;
  for (; number_at(library + 12) != 0; library += descriptor_size) {
    const auto* names = reinterpret_cast<const unsigned long long*>(module + number_at(library));
    auto* addresses = reinterpret_cast<void**>(module + number_at(library + 16));
    for (; *names != 0; ++names, ++addresses) {
      if (*names >> 63) continue;  // imported by number
      if (std::strcmp(reinterpret_cast<const char*>(module + *names + 2), name) != 0) continue;
      unsigned long former = 0;
      constexpr unsigned long read_write = 4;
      if (!VirtualProtect(addresses, sizeof *addresses, read_write, &former)) return false;
      *addresses = replacement;
      return VirtualProtect(addresses, sizeof *addresses, former, &former) != 0;
    }
  }
  return false;
}

inline bool hook(const char* module_name) {
  auto* module = static_cast<unsigned char*>(GetModuleHandleA(module_name));
  return module != nullptr && replace_import(module, "malloc", reinterpret_cast<void*>(count_malloc)) &&
         replace_import(module, "free", reinterpret_cast<void*>(count_free));
}

}  // namespace heap
