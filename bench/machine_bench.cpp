// The limits of the machine: multiplications and additions apart, as our arithmetic needs them,
// with registers of each width; fused ones for comparison; and the rates of copying, of reading and
// of moving in place in each level of memory.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "support.h"

namespace bench {

namespace {

constexpr int chains = 12;  // enough independent sums to hide the latency of an addition
constexpr int rounds = 4096;

detail::labels machine_row(long size, double operations, double bytes) {
  return {"machine", size, {operations, bytes}, "", {}};
}

void report(benchmark::State& state, const detail::labels& row) { detail::set_counters(state, row, {}, "", 1); }

#if defined(__x86_64__)

typedef double v2 __attribute__((vector_size(16)));
typedef double v4 __attribute__((vector_size(32)));
typedef double v8 __attribute__((vector_size(64)));

// One body for all widths; the factor passes through an empty statement, so that no product is
// shared.
#define BENCH_RATE(name, type, features, step)                                                  \
  __attribute__((target(features))) void name() {                                               \
    type sum[chains], a = {}, b = {};                                                           \
    for (type & s : sum) s = b;                                                                 \
    for (int k = 0; k < rounds; ++k) {                                                          \
      _Pragma("GCC unroll 12") for (int j = 0; j < chains; ++j) {                               \
        type s = sum[j];                                                                        \
        asm volatile("" : "+v"(a));                                                             \
        step;                                                                                   \
        sum[j] = s;                                                                             \
      }                                                                                         \
    }                                                                                           \
    _Pragma("GCC unroll 12") for (int j = 0; j < chains; ++j) asm volatile("" : : "v"(sum[j])); \
  }
#define BENCH_APART(name, type, features) BENCH_RATE(name, type, features, s = s + a * b)
#define BENCH_FUSED(name, type, features) \
  BENCH_RATE(name, type, features, asm("vfmadd231pd %1, %2, %0" : "+v"(s) : "v"(a), "v"(b)))

BENCH_APART(apart_128, v2, "sse2")
BENCH_APART(apart_256, v4, "avx2")
BENCH_APART(apart_512, v8, "avx512f")
BENCH_FUSED(fused_256, v4, "avx2,fma")
BENCH_FUSED(fused_512, v8, "avx512f")

void add_rate(const char* name, long bits, void (*run)()) {
  const detail::labels row = machine_row(bits, 2.0 * chains * rounds * double(bits) / 64, 0);
  detail::configure(benchmark::RegisterBenchmark(detail::benchmark_name(row, "machine", name).c_str(),
                                                 [row, run](benchmark::State& state) {
                                                   for (auto _ : state) run();
                                                   report(state, row);
                                                 }),
                    "machine");
}

void add_rates() {
  add_rate("multiply and add", 128, apart_128);
  if (__builtin_cpu_supports("avx2")) add_rate("multiply and add", 256, apart_256);
  if (__builtin_cpu_supports("avx512f")) add_rate("multiply and add", 512, apart_512);
  if (__builtin_cpu_supports("fma")) add_rate("fused multiply-add", 256, fused_256);
  if (__builtin_cpu_supports("avx512f")) add_rate("fused multiply-add", 512, fused_512);
}

#else

void add_rates() {
  const detail::labels row = machine_row(64, 2.0 * chains * rounds, 0);
  detail::configure(benchmark::RegisterBenchmark(detail::benchmark_name(row, "machine", "multiply and add").c_str(),
                                                 [row](benchmark::State& state) {
                                                   for (auto _ : state) {
                                                     double sum[chains] = {}, a = 0;
                                                     for (int k = 0; k < rounds; ++k) {
                                                       for (double& s : sum) {
                                                         benchmark::DoNotOptimize(a);
                                                         s = s + a * a;
                                                       }
                                                     }
                                                     benchmark::DoNotOptimize(sum);
                                                   }
                                                   report(state, row);
                                                 }),
                    "machine");
}

#endif

// Processors read ahead by themselves, but not to the next page of memory.
constexpr std::size_t half_page = 2048 / sizeof(double), ahead = 16 * half_page;

// touched: the bytes read and written together.
void add_memory(const char* name, long bytes, long touched, void (*run)(std::vector<double>&)) {
  const detail::labels row = machine_row(bytes, 0, double(touched));
  detail::configure(benchmark::RegisterBenchmark(detail::benchmark_name(row, "machine", name).c_str(),
                                                 [row, bytes, run](benchmark::State& state) {
                                                   std::vector<double> all(std::size_t(bytes) / sizeof(double), 1);
                                                   for (auto _ : state) run(all);
                                                   report(state, row);
                                                 }),
                    "machine");
}

}  // namespace

void add_machine_limits() {
  add_rates();
  // Caches of the first, second and third level, the last one nearly filled and overfilled, and memory.
  for (long bytes : {16L << 10, 512L << 10, 8L << 20, 24L << 20, 48L << 20, 128L << 20}) {
    add_memory("copy", bytes, bytes, [](std::vector<double>& all) {
      const std::size_t half = all.size() / 2;
      std::memcpy(all.data(), all.data() + half, half * sizeof(double));
      use(all);
    });
    add_memory("read", bytes, bytes, [](std::vector<double>& all) {
      constexpr std::size_t at_once = 64;
      double sums[at_once] = {};  // one addition for each loaded number, never waited for
      for (std::size_t k = 0; k < all.size(); k += at_once) {
        if (k % half_page == 0 && k + ahead < all.size()) __builtin_prefetch(&all[k + ahead]);
        for (std::size_t j = 0; j < at_once; ++j) sums[j] += all[k + j];
      }
      use(sums);
    });
    // By the size of a plane point, as when the first point of a list is removed.
    add_memory("move", bytes, 2 * bytes, [](std::vector<double>& all) {
      constexpr std::size_t distance = sizeof(vector) / sizeof(double);
      std::memmove(all.data(), all.data() + distance, (all.size() - distance) * sizeof(double));
      use(all);
    });
  }
}

}  // namespace bench
