// Vectors of doubles for the kernels, as wide as the instruction set that the file is compiled for. Included by
// kernel sources only: each is compiled once for every instruction set, in the namespace TESSARN_ISA, so that
// no two builds share a symbol. Kernels use no standard containers and no shared inline functions.
//
// Lanes hold independent results, so the width never shows in the bits.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "simd/unroll.h"

// Whether the compiler has vector types and the processor vectors of doubles to go with them: SSE2, AArch64, VSX, the
// vector facility of IBM Z, WebAssembly's SIMD, LSX. Without these the compiler takes the types apart into single
// numbers, which costs time, and on ARMv7 more than four minutes a file. TESSARN_SCALAR_LANES builds the way of those
// that have none.
#if (defined(__GNUC__) || defined(__clang__)) && !defined(TESSARN_SCALAR_LANES) &&                               \
    (defined(__SSE2__) || defined(__aarch64__) || defined(__VSX__) || (defined(__s390x__) && defined(__VX__)) || \
     defined(__wasm_simd128__) || defined(__loongarch_sx))
#define TESSARN_VECTOR_LANES 1
#else
#define TESSARN_VECTOR_LANES 0
#endif

#if defined(__GNUC__) || defined(__clang__)
#define TESSARN_INLINE static inline __attribute__((always_inline))
#define TESSARN_MEMBER inline __attribute__((always_inline))
#else
#define TESSARN_INLINE static __forceinline
#define TESSARN_MEMBER __forceinline
#endif

#if TESSARN_VECTOR_LANES
#include "simd/lanes_vector.h"
#else
#include "simd/lanes_scalar.h"
#endif
#include "simd/points.h"
