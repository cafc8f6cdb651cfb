// How far a loop is unrolled. Each macro stands in the line before its loop:
//   TESSARN_UNROLL       a loop of at most eight rounds over an array: whole, so that the array stays in registers
//   TESSARN_UNROLL_MORE  a loop of at most 32 rounds: whole
//   TESSARN_UNROLL_LONG  a long loop of short rounds: eight rounds at a time
//   TESSARN_KEEP_LOOP    a loop that the compiler must not unroll
#pragma once

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
