// Loads the module by name, finds its members by their decorated names, unloads and reloads it:
//   loader_client MODULE NAMES
#include <cstdio>
#include <cstring>
#include <vector>

#include "check.h"
#include "system.h"

namespace {

using real = long double;

template <class Function>
Function find(void* module, const char* name) {
  return reinterpret_cast<Function>(GetProcAddress(module, name));
}

// A vector as it lies in memory, without the library's headers.
struct plane_vector {
  void** table;
  real x, y;
};

struct members {
  plane_vector*(__cdecl* construct)(plane_vector*, real, real);
  real(__cdecl* length)(plane_vector*);
  plane_vector*(__cdecl* allocate)(unsigned long);
  void** table;

  explicit members(void* module)
      : construct(find<decltype(construct)>(module, "??0vector@@QEAA@OO@Z")),
        length(find<decltype(length)>(module, "?lenld@vector@@QEAAOXZ")),
        allocate(find<decltype(allocate)>(module, "?new_vector@@YAPEAVvector@@K@Z")),
        table(static_cast<void**>(GetProcAddress(module, "??_7vector@@6B@"))) {}
  bool found() const { return construct && length && allocate && table; }
};

// Calls a member, and releases an array through the first slot of the virtual table as delete[] does.
bool use(const members& m) {
  plane_vector v;
  m.construct(&v, 3, 4);
  if (v.table != m.table || m.length(&v) != 5) return false;
  plane_vector* array = m.allocate(5);
  if (array[4].x != 0 || array[4].table != m.table) return false;
  constexpr unsigned release_array = 3;
  reinterpret_cast<void*(__cdecl*)(void*, unsigned)>(array->table[0])(array, release_array);
  return true;
}

void every_name(void* module, const char* list) {
  std::FILE* file = std::fopen(list, "r");
  CHECK(file != nullptr);
  if (!file) return;
  char line[2048];
  int found = 0, missing = 0;
  while (std::fgets(line, sizeof line, file)) {
    char* blank = std::strchr(line, ' ');
    if (!blank) continue;
    *blank = 0;
    if (GetProcAddress(module, line)) {
      ++found;
    } else {
      ++missing;
      std::printf("not found: %s\n", line);
    }
  }
  std::fclose(file);
  std::printf("%d names found\n", found);
  CHECK(found > 500 && missing == 0);
}

struct usage {
  unsigned long long memory = 0;
  unsigned long handles = 0;
};

usage now() {
  usage u;
  memory_counters counters;
  std::memset(&counters, 0, sizeof counters);
  counters.size = sizeof counters;
  CHECK(K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) != 0);
  u.memory = counters.working_set;
  CHECK(GetProcessHandleCount(GetCurrentProcess(), &u.handles) != 0);
  return u;
}

// The counter must notice what is touched, else the comparison below says nothing.
void counter_is_live() {
  const usage before = now();
  constexpr size_t size = 16u << 20;
  std::vector<char> block(size, 1);
  const usage after = now();
  std::printf("%llu to %llu bytes with %u more\n", before.memory, after.memory, static_cast<unsigned>(size));
  CHECK(block[size / 2] == 1 && after.memory >= before.memory + size / 2);
}

bool once(const char* path) {
  void* module = LoadLibraryA(path);
  if (!module) return false;
  const members m(module);
  const bool good = m.found() && use(m);
  return FreeLibrary(module) != 0 && good && GetModuleHandleA("Tessarn_x64.dll") == nullptr;
}

void load_and_unload(const char* path) {
  constexpr int warm_up = 50, rounds = 1000;
  for (int i = 0; i < warm_up; ++i) CHECK(once(path));
  const usage before = now();
  int good = 0;
  for (int i = 0; i < rounds; ++i) good += once(path);
  const usage after = now();
  std::printf("%d rounds: memory %llu to %llu bytes, handles %lu to %lu\n", good, before.memory, after.memory,
              before.handles, after.handles);
  CHECK(good == rounds);
  CHECK(after.memory <= before.memory + (64u << 10));
  CHECK(after.handles <= before.handles);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  void* module = LoadLibraryA(argv[1]);
  CHECK(module != nullptr);
  if (!module) return check::finish();
  every_name(module, argv[2]);
  CHECK(FreeLibrary(module) != 0);
  counter_is_live();
  load_and_unload(argv[1]);
  return check::finish();
}
