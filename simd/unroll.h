// Loops whose rounds stand one behind the other.
#pragma once

// Before a loop of at most eight rounds over an array, so that the array stays in registers.
// The same of at most 32 rounds; before a long loop of short rounds; and before a loop that is to stay one.
#if defined(__clang__)
#define TESSARN_UNROLL_MORE _Pragma("clang loop unroll(full)")
#define TESSARN_UNROLL _Pragma("clang loop unroll(full)")
#define TESSARN_UNROLL_LONG _Pragma("clang loop unroll_count(8)")
#define TESSARN_KEEP_LOOP _Pragma("clang loop unroll(disable)")
#elif defined(__GNUC__)
#define TESSARN_UNROLL_MORE _Pragma("GCC unroll 32")
#define TESSARN_UNROLL _Pragma("GCC unroll 8")
#define TESSARN_UNROLL_LONG _Pragma("GCC unroll 8")
#define TESSARN_KEEP_LOOP _Pragma("GCC unroll 1")
#else
#define TESSARN_UNROLL
#define TESSARN_UNROLL_LONG
#define TESSARN_UNROLL_MORE
#define TESSARN_KEEP_LOOP
#endif
