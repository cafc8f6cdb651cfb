// Which instruction sets the processor and the operating system have.
#include "simd/isa.h"

#if (defined(__x86_64__) || defined(_M_X64)) && !defined(TESSARN_SCALAR_LANES)
#if defined(_MSC_VER)
#include <intrin.h>
#else
#include <cpuid.h>
#endif
#define TESSARN_X86 1
#endif

namespace tessarn::detail {
namespace {

#if defined(TESSARN_X86)

struct cpuid_registers {
  unsigned a, b, c, d;
};

cpuid_registers cpuid(unsigned leaf) noexcept {
#if defined(_MSC_VER)
  int v[4];
  __cpuidex(v, static_cast<int>(leaf), 0);
  return {static_cast<unsigned>(v[0]), static_cast<unsigned>(v[1]), static_cast<unsigned>(v[2]),
          static_cast<unsigned>(v[3])};
#else
  cpuid_registers r = {0, 0, 0, 0};
  __cpuid_count(leaf, 0, r.a, r.b, r.c, r.d);
  return r;
#endif
}

// Which registers the operating system saves when it switches threads. A set whose registers it does not save must not
// be used, whatever the processor has.
unsigned long long extended_control() noexcept {
#if defined(_MSC_VER)
  return _xgetbv(0);
#else
  unsigned low, high;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return (static_cast<unsigned long long>(high) << 32) | low;
#endif
}

// The bits of leaves 1 and 7 of CPUID, and 0x6 (SSE and AVX state) and 0xE0 (the three parts of AVX-512 state) of what
// is saved. AVX-512 is taken only with all five subsets that its kernels are compiled for.
isa detect() noexcept {
  if (cpuid(0).a < 7) return isa::baseline;
  const cpuid_registers one = cpuid(1);
  const cpuid_registers seven = cpuid(7);
  const auto has = [](unsigned flags, int bit) { return ((flags >> bit) & 1u) != 0; };
  if (!has(one.c, 27)) return isa::baseline;  // OSXSAVE
  const unsigned long long saved = extended_control();
  bool avx2 = (saved & 0x6) == 0x6 && has(one.c, 28) && has(seven.b, 5) && has(seven.b, 8);  // AVX, AVX2, BMI2
#if defined(_MSC_VER) && !defined(__clang__)
  // /arch:AVX2 means a whole processor: FMA, MOVBE, F16C, BMI1 and LZCNT too.
  avx2 = avx2 && has(one.c, 12) && has(one.c, 22) && has(one.c, 29) && has(seven.b, 3) && has(cpuid(0x80000001u).c, 5);
#endif
  const bool avx512 = avx2 && (saved & 0xE6) == 0xE6 && has(seven.b, 16) && has(seven.b, 17) && has(seven.b, 28) &&
                      has(seven.b, 30) && has(seven.b, 31);  // F, DQ, CD, BW, VL
  return avx512 ? isa::avx512 : avx2 ? isa::avx2 : isa::baseline;
}

#else

isa detect() noexcept { return isa::baseline; }

#endif

std::atomic<int> g_limit{set_count - 1};

isa lower(isa a, isa b) noexcept { return static_cast<int>(a) < static_cast<int>(b) ? a : b; }

}  // namespace

std::atomic<int> g_chosen_isa{-1};

isa best_isa() noexcept { return lower(detect(), static_cast<isa>(g_limit.load(std::memory_order_relaxed))); }

void limit_isa(isa best) noexcept {
  g_limit.store(static_cast<int>(best), std::memory_order_relaxed);
  g_chosen_isa.store(-1, std::memory_order_relaxed);  // chosen anew
}

isa force_isa(isa wanted) noexcept {
  const isa used = lower(wanted, best_isa());
  g_chosen_isa.store(static_cast<int>(used), std::memory_order_relaxed);
  return used;
}

isa use_best_isa() noexcept { return force_isa(static_cast<isa>(set_count - 1)); }

}  // namespace tessarn::detail
