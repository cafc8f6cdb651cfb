// A bound on the time of a call that might not end. A call that has not come back cannot be stopped
// from outside, so the whole test program ends then, with a message that names the place.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <utility>

namespace test {

// An emulated processor may take so many times as long.
#if defined(TESTS_EMULATED)
inline constexpr double patience = 10;
#else
inline constexpr double patience = 1;
#endif

template <class Call>
auto within(double seconds, const char* file, int line, Call&& call) {
#if defined(__EMSCRIPTEN__) && \
    !defined(__EMSCRIPTEN_PTHREADS__)  // no second thread: the suite has a time limit of its own
  (void)seconds, (void)file, (void)line;
  return call();
#else
  seconds *= patience;
  auto result = std::async(std::launch::async, std::forward<Call>(call));
  if (result.wait_for(std::chrono::duration<double>(seconds)) != std::future_status::ready) {
    std::fprintf(stderr, "%s:%d: no end within %g s\n", file, line, seconds);
    std::fflush(stderr);
    std::_Exit(1);
  }
  return result.get();
#endif
}

}  // namespace test

// Evaluates the expression, which must end within the given number of seconds.
#define WITHIN(seconds, ...) ::test::within(seconds, __FILE__, __LINE__, [&]() { return (__VA_ARGS__); })
