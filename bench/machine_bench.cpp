// The limits of the machine: multiplications and additions apart, as our arithmetic needs them,
// with registers of each width; fused ones for comparison; and the copy rate in each level of
// memory.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "support.h"

namespace bench {

namespace {

constexpr int chains = 12;  // enough independent sums to hide the latency of an addition
constexpr int rounds = 4096;

detail::labels machine_row(long size, double operations, double bytes) {
  return {"machine", size, {operations, bytes}, 0, "", {}};
}

void report(benchmark::State& state, const detail::labels& row) {
  detail::set_counters(state, row, "");
}

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
  detail::configure(
      benchmark::RegisterBenchmark(detail::benchmark_name(row, "machine", name).c_str(),
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
  detail::configure(benchmark::RegisterBenchmark(
                        detail::benchmark_name(row, "machine", "multiply and add").c_str(),
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

}  // namespace

void add_machine_limits() {
  add_rates();
  // Bytes read and written: caches of the first, second and third level, and memory.
  for (long bytes : {16L << 10, 512L << 10, 8L << 20, 128L << 20}) {
    const detail::labels row = machine_row(bytes, 0, double(bytes));
    detail::configure(benchmark::RegisterBenchmark(
                          detail::benchmark_name(row, "machine", "copy").c_str(),
                          [row, bytes](benchmark::State& state) {
                            std::vector<char> from(std::size_t(bytes / 2), 1), to(from.size());
                            for (auto _ : state) {
                              std::memcpy(to.data(), from.data(), from.size());
                              use(to);
                            }
                            report(state, row);
                          }),
                      "machine");
  }
}

}  // namespace bench
