// One lane, a plain double, for compilers without vector types; included by simd/lanes.h.
#pragma once

#include <math.h>

namespace tessarn::detail::TESSARN_ISA {

static constexpr size_t width = 1;
static constexpr int register_count = 16;
typedef double vec;
typedef int64_t mask;
TESSARN_INLINE vec load(const double* p) { return *p; }
TESSARN_INLINE void store(double* p, vec v) { *p = v; }
TESSARN_INLINE mask load_mask(const int64_t* p) { return *p; }
TESSARN_INLINE vec broadcast(double v) { return v; }
TESSARN_INLINE vec broadcast_from(const double* p) { return *p; }
TESSARN_INLINE vec lane_numbers() { return 0; }
TESSARN_INLINE vec absolute(vec v) { return fabs(v); }
TESSARN_INLINE vec select(mask m, vec a, vec b) { return m ? a : b; }
TESSARN_INLINE vec without_nan(vec v) { return v == v ? v : 0.0; }
// Comparisons of plain numbers are bool, whose own ~ is never 0.
TESSARN_INLINE mask complement(bool m) { return m ? 0 : -1; }
TESSARN_INLINE bool none(mask m) { return m == 0; }
TESSARN_INLINE vec square_root(vec v) { return sqrt(v); }

}  // namespace tessarn::detail::TESSARN_ISA
