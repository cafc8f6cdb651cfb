// The registry of the benchmarks: a row is one operation at one size, with our call, those of the
// peers and the plain form, written once and timed alike.
//
// A row names a struct of inputs, constructed from the size when the row's first call is timed and
// released when the next row begins. It has a member `rotation`, the number of its inputs: call i
// works on input i % rotation, so that neither caches nor branch prediction see the same numbers
// every time. Before a peer is timed its results on the first inputs are compared with ours. Our call
// is timed with the kernels of each instruction set that the machine has; all must give the same bits.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "memory.h"
#include "values.h"

namespace bench {

// What happens to the bytes of an operation: they are copied to another place, only read, or moved
// within the place where they are.
enum class traffic { copy, read, move };

// What the stated arithmetic of an operation needs, whichever way it is done: multiplications and
// additions (a division or a root counts as one), and bytes read and written.
struct work {
  double operations = 0;
  double bytes = 0;
  traffic kind = traffic::copy;
  double shared = 0;  // of the bytes, those of a place that is the same for all inputs
};

// Products and sums run side by side: the more numerous ones set the limit.
struct products_and_sums {
  double products = 0, sums = 0;
  double side_by_side() const { return 2 * (products > sums ? products : sums); }
  friend products_and_sums operator+(products_and_sums a, products_and_sums b) {
    return {a.products + b.products, a.sums + b.sums};
  }
};

// The correctly rounded powers x^2 .. x^(count - 1) by the chains that the library uses
// (poly/kernels/power_chains.inl).
products_and_sums powers_below(int count);

// How much of the peers' and our own results must agree.
struct agreement {
  double tolerance = 1e-9;  // largest difference, relative to the largest value
  bool plain_bits = true;   // the plain form must give our bits, not only our values
};

// Inputs for small operations are many, for large ones few.
inline int rotation_for(double bytes_of_one) {
  if (bytes_of_one < 4e3) return 31;
  if (bytes_of_one < 64e3) return 7;
  return bytes_of_one < 4e6 ? 3 : 2;
}

// The value, and everything that can be reached from it, counts as used.
template <class T>
inline void use(T& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

namespace detail {

// The row whose inputs are alive; setting another one releases them.
void set_current(const void* row, std::function<void()> release);
bool is_current(const void* row);

struct labels {
  std::string operation;
  long size = 0;
  work needs;
  std::string note;
  agreement agree;
  bool in_headers = false;
};

// Instruction sets by their number, the baseline first: the best one that the machine has, the lowest one to time, the
// name of one, and the library's choice of it from now on.
int best_set();
int lowest_set();
const char* set_name(int set);
void use_set(int set);

// "operation|size|family|call", with family one of ours, plain, machine, or the peer's column.
std::string benchmark_name(const labels& row, const std::string& family, const std::string& call);
// inputs: how many take turns.
void set_counters(benchmark::State& state, const labels& row, const memory_use& memory, const std::string& hash,
                  int inputs);
void configure(benchmark::internal::Benchmark* b, const std::string& family);
// Empty when the two agree, else the reason.
std::string disagreement(const values& ours, const values& other, const labels& row, bool bits);

}  // namespace detail

// Rows made from now on time the best instruction set alone.
void time_best_set_only();

struct no_preparation {};

template <class Inputs>
class row {
  struct shared {
    detail::labels labels;
    std::function<std::unique_ptr<Inputs>()> make;
    std::unique_ptr<Inputs> inputs;
    std::function<values(Inputs&, int, hasher&)> ours;
    std::vector<values> expected;  // our results on the first inputs
    std::string hash;              // of our results on all inputs
  };

 public:
  row(std::string operation, long size, work needs) : state_(std::make_shared<shared>()) {
    state_->labels = {std::move(operation), size, needs, "", {}};
    state_->make = [size] { return std::make_unique<Inputs>(size); };
  }
  row& note(std::string text) {
    state_->labels.note = std::move(text);
    return *this;
  }
  // The operation is compiled into its caller, so there is nothing to choose an instruction set for.
  row& in_headers() {
    state_->labels.in_headers = true;
    return *this;
  }
  row& agree(agreement a) {
    state_->labels.agree = a;
    return *this;
  }

  // A call is f(inputs, i), giving its result by value or reference. What it overwrites is restored
  // by prepare(inputs), which is not timed, once a rotation.
  template <class Call, class Prepare = no_preparation>
  row& ours(Call f, Prepare prepare = {}) {
    state_->ours = [f, prepare](Inputs& in, int i, hasher& hash) {
      run_preparation(in, prepare);
      auto&& result = f(in, i);
      hash.add(bits_of(result));
      return values_of(result);
    };
    // The sets below the best one are timed in one program only: the library is the same in both.
#ifndef BENCH_NATIVE
    const int lowest = state_->labels.in_headers ? detail::best_set() : detail::lowest_set();
#else
    const int lowest = detail::best_set();
#endif
    for (int set = detail::best_set(); set >= lowest; --set) add("ours", detail::set_name(set), f, prepare, set);
    return *this;
  }
  template <class Call, class Prepare = no_preparation>
  row& peer(const std::string& family, const std::string& call, Call f, Prepare prepare = {}) {
    add(family, call, f, prepare);
    return *this;
  }
  template <class Call, class Prepare = no_preparation>
  row& plain(Call f, Prepare prepare = {}) {
#ifndef BENCH_NATIVE
    add("plain", "plain form", f, prepare);
#else
    (void)f;
    (void)prepare;
#endif
    return *this;
  }

 private:
  template <class Prepare>
  static void run_preparation(Inputs& in, const Prepare& prepare) {
    if constexpr (!std::is_same_v<Prepare, no_preparation>) prepare(in);
  }

  // Makes the inputs, and our results to compare with.
  static void enter(shared& s) {
    if (detail::is_current(&s)) return;
    detail::use_set(detail::best_set());
    detail::set_current(&s, [&s] {
      s.inputs.reset();
      s.expected.clear();
    });
    s.inputs = s.make();
    s.hash = hash_of_ours(s);
  }

  // Of the results on all inputs with the set in use; keeps the first ones when none are kept yet.
  static std::string hash_of_ours(shared& s) {
    hasher all;
    const bool keep = s.expected.empty();
    for (int i = 0; i < s.inputs->rotation; ++i) {
      values v = s.ours(*s.inputs, i, all);
      if (keep && i < 2) s.expected.push_back(std::move(v));
    }
    return all.text();
  }

  template <class Call, class Prepare>
  static std::string check(shared& s, const std::string& family, Call& f, const Prepare& prepare) {
    if (family == "ours") {
      if (hash_of_ours(s) == s.hash) return {};
      return std::string("the results differ from those of ") + detail::set_name(detail::best_set());
    }
    for (std::size_t i = 0; i < s.expected.size(); ++i) {
      run_preparation(*s.inputs, prepare);
      auto&& result = f(*s.inputs, static_cast<int>(i));
      const std::string reason = detail::disagreement(s.expected[i], values_of(result), s.labels,
                                                      family == "plain" && s.labels.agree.plain_bits);
      if (!reason.empty()) return reason;
    }
    return {};
  }

  // Of one call, its result included.
  template <class Call, class Prepare>
  static memory_use memory_of_call(shared& s, Call& f, const Prepare& prepare) {
    run_preparation(*s.inputs, prepare);
    start_counting_memory();
    auto&& result = f(*s.inputs, 0);
    use(result);
    return stop_counting_memory();
  }

  template <class Call, class Prepare>
  void add(const std::string& family, const std::string& call, Call f, Prepare prepare, int set = detail::best_set()) {
    auto timed = [s = state_, family, f, prepare, set, checked = false,
                  memory = memory_use()](benchmark::State& state) mutable {
      enter(*s);
      detail::use_set(set);
      if (!checked) {
        const std::string reason = check(*s, family, f, prepare);
        if (!reason.empty()) {
          state.SkipWithError(reason.c_str());
          return;
        }
        memory = memory_of_call(*s, f, prepare);
        checked = true;
      }
      Inputs& in = *s->inputs;
      const int rotation = in.rotation;
      int i = 0;
      for (auto _ : state) {
        if constexpr (!std::is_same_v<Prepare, no_preparation>) {
          if (i == 0) {
            state.PauseTiming();
            prepare(in);
            state.ResumeTiming();
          }
        }
        auto&& result = f(in, i);
        use(result);
        if (++i == rotation) i = 0;
      }
      detail::set_counters(state, s->labels, memory, s->hash, rotation);
    };
    // A copy of the function serves all repetitions: Google Benchmark wants it copyable.
    auto function = std::make_shared<decltype(timed)>(std::move(timed));
    detail::configure(benchmark::RegisterBenchmark(detail::benchmark_name(state_->labels, family, call).c_str(),
                                                   [function](benchmark::State& state) { (*function)(state); }),
                      family);
  }

  std::shared_ptr<shared> state_;
};

}  // namespace bench
