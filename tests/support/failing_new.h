// A global operator new that counts live blocks and fails when it is told to. Its source belongs to
// the one test program that needs it.
#pragma once

#include <cstddef>
#include <new>

namespace test {

// The blocks that are allocated and not yet released.
long live_blocks();
// The bytes asked for since the program began.
long long requested_bytes();
// Lets the next k allocations succeed and the one after them fail, once.
void fail_after(long k);
// Ends the countdown; true when an allocation failed since fail_after.
bool stop_failing();
// Requests above this size always fail, whatever the machine would grant.
inline constexpr std::size_t largest_request = std::size_t{1} << 31;

// What became of an operation whose k-th allocation was to fail: it may also have managed without
// the memory, or have needed no k-th allocation.
struct outcome {
  bool failed = false;
  bool threw = false;
};

// Runs call() with its allocation number k failing.
template <class Call>
outcome run_failing(long k, Call&& call) {
  outcome o;
  fail_after(k);
  try {
    call();
  } catch (const std::bad_alloc&) {
    o.threw = true;
  }
  o.failed = stop_failing();
  return o;
}

// attempt(k) prepares fresh objects and runs the operation by run_failing; it is called for k = 0,
// 1,
// ... until no allocation is left to fail. Returns how many were made to fail.
template <class Attempt>
long fail_every_allocation(Attempt&& attempt) {
  for (long k = 0;; ++k) {
    if (!attempt(k).failed) return k;
  }
}

}  // namespace test
