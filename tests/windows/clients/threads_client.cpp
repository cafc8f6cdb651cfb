// Distinct objects used from eight threads at once give the bits of a single thread, while other threads are
// attached and detached all the time.
#include <tessarn/tessarn.h>

#include <atomic>
#include <cstdint>
#include <cstring>

#include "check.h"
#include "system.h"

namespace {

using tessarn::real;

constexpr int workers = 8;
constexpr int rounds = 40;

constexpr int visitors = 100;  // threads that come and go meanwhile

std::atomic<bool> g_stop{false};
std::uint64_t g_alone[workers];
int g_runs[workers];
int g_wrong[workers];

void mix(std::uint64_t& hash, real value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  hash = (hash ^ bits) * 1099511628211u;
}

// One use of each kind of object, over sizes that reach the kernels.
std::uint64_t work(unsigned seed) {
  std::uint64_t hash = 14695981039346656037u;
  for (int round = 0; round < rounds; ++round) {
    const tessarn::ulong n = 4 + static_cast<tessarn::ulong>(round) % 21;
    mat<long double> a, b, inverse;
    a.create(n, n);
    b.create(n, n);
    for (tessarn::ulong y = 0; y < n; ++y)
      for (tessarn::ulong x = 0; x < n; ++x) {
        seed = seed * 1664525u + 1013904223u;
        a.set(x, y, static_cast<real>(seed >> 8) / 16777216 + (x == y ? 3 : 0));
        b.set(x, y, static_cast<real>(seed & 0xFFFF) / 65536);
      }
    mat<long double> product = a * b;
    for (tessarn::ulong i = 0; i < n * n; ++i) mix(hash, product.getData()[i]);
    mat<long double> u, s, v;
    a.decompose(u, s, v);
    mix(hash, s.get(0, 0));
    vectormat list;
    for (tessarn::ulong i = 0; i < 3 * n; ++i) list.add(vector(i, a.getData()[i % (n * n)]));
    binom p;
    p.create(list.points, list.count, 4);
    for (tessarn::slong i = 0; i < 4; ++i) mix(hash, p.get(i));
    vector* points = new_vector(n);
    points[n - 1].x = static_cast<real>(round);
    mix(hash, points[n - 1].lenld());
    delete[] points;
  }
  return hash;
}

unsigned long __stdcall run_worker(void* argument) {
  const auto i = reinterpret_cast<std::uintptr_t>(argument);
  do {
    ++g_runs[i];
    g_wrong[i] += work(static_cast<unsigned>(i)) != g_alone[i];
  } while (!g_stop);
  return 0;
}

unsigned long __stdcall run_short(void*) {
  const vector v(3, 4);
  return v.lenul();
}

void wait(void* thread) {
  constexpr unsigned long forever = 0xFFFFFFFFu;
  WaitForSingleObject(thread, forever);
  CloseHandle(thread);
}

}  // namespace

int main() {
  for (unsigned i = 0; i < workers; ++i) g_alone[i] = work(i);
  CHECK(g_alone[0] != g_alone[1]);
  void* threads[workers];
  for (std::uintptr_t i = 0; i < workers; ++i) {
    threads[i] = CreateThread(nullptr, 0, run_worker, reinterpret_cast<void*>(i), 0, nullptr);
    CHECK(threads[i] != nullptr);
  }
  for (int i = 0; i < visitors; ++i) wait(CreateThread(nullptr, 0, run_short, nullptr, 0, nullptr));
  g_stop = true;
  int runs = 0;
  for (int i = 0; i < workers; ++i) {
    wait(threads[i]);
    runs += g_runs[i];
    CHECK(g_runs[i] > 0 && g_wrong[i] == 0);
  }
  std::printf("%d runs in %d threads, while %d others came and went\n", runs, workers, visitors);
  return check::finish();
}
