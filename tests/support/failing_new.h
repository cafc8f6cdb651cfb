// A global operator new that counts live blocks and fails when it is told to. Its source belongs to
// the one test program that needs it.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace test {

// The blocks that are allocated and not yet released.
long live_blocks();
// Lets the next k allocations succeed and the one after them fail, once.
void fail_after(long k);
// Ends the countdown; true when an allocation failed since fail_after.
bool stop_failing();
// Requests above this size always fail, whatever the machine would grant.
inline constexpr std::size_t largest_request = std::size_t{1} << 31;

// Runs the operation with its first, second, ... allocation failing, each time on fresh objects:
// attempt() prepares the objects, calls arm(), runs the operation, and checks what it finds when
// the operation threw. Ends with the first run in which no allocation is left to fail. Returns how
// many allocations were made to fail.
template <class Attempt>
long fail_every_allocation(Attempt&& attempt) {
  for (long k = 0;; ++k) {
    bool threw = false;
    attempt([k]() { fail_after(k); }, threw);
    if (!threw) {
      stop_failing();
      return k;
    }
  }
}

}  // namespace test
