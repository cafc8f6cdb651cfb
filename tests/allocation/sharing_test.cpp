// Copies of a polynomial share its coefficients: the last holder releases them, whatever becomes of the others.
#include <gtest/gtest.h>
#include <tessarn/poly.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "core/shared_array.h"
#include "core/side_table.h"
#include "support/failing_new.h"
#include "support/random.h"

namespace {

using test::live_blocks;

// One way to make, read and write both kinds of polynomial, so that each test runs for binom and hyperbinom: entry i of
// `size` entries is a coefficient.
template <class Polynomial>
struct handled;

template <>
struct handled<binom> {
  static void make(binom& p) { p.create(4); }
  static void set(binom& p, long i, double v) { p.set(static_cast<tessarn::slong>(i), v); }
  static double get(binom& p, long i) { return static_cast<double>(p.get(static_cast<tessarn::slong>(i))); }
  static bool is_empty(binom& p) { return p.getcofcnt() == 0; }
  struct open : binom {
    using binom::cof;
    void drop() { cof = nullptr, cofcnt = 0; }
  };
};

template <>
struct handled<hyperbinom> {
  static void make(hyperbinom& p) { p.create(2); }
  static void set(hyperbinom& p, long i, double v) { p.set(i % 2, i / 2, v); }
  static double get(hyperbinom& p, long i) { return static_cast<double>(p.get(i % 2, i / 2)); }
  static bool is_empty(hyperbinom& p) { return p.getgrade() == 0; }
  struct open : hyperbinom {
    using hyperbinom::cof;
    void drop() { cof = nullptr, grade = 0; }
  };
};

template <class Polynomial>
class Sharing : public ::testing::Test {
 protected:
  using h = handled<Polynomial>;
  static Polynomial of(double v) {
    Polynomial p;
    h::make(p);
    h::set(p, 1, v);
    return p;
  }
  long before_ = live_blocks();
  void TearDown() override { EXPECT_EQ(live_blocks(), before_) << "something leaked"; }
};

using polynomials = ::testing::Types<binom, hyperbinom>;
TYPED_TEST_SUITE(Sharing, polynomials, );

// Members that return a polynomial by value: the caller gets a copy, which shares the coefficients.
template <class Polynomial>
struct model {
  Polynomial curve;
  Polynomial get() { return curve; }
  Polynomial either(bool first, Polynomial other) { return first ? curve : other; }
};

TYPED_TEST(Sharing, MembersAndChoicesAreReturned) {
  using h = handled<TypeParam>;
  model<TypeParam> m{TestFixture::of(3)};
  {
    TypeParam p = m.get(), q = m.get();
    EXPECT_EQ(h::get(p, 1), 3.0);
    h::set(q, 1, 4);
    EXPECT_EQ(h::get(p, 1), 4.0);
  }
  EXPECT_EQ(h::get(m.curve, 1), 4.0);
  const TypeParam kept = m.either(true, TestFixture::of(5)), other = m.either(false, TestFixture::of(5));
  TypeParam kept_again = kept, other_again = other;
  EXPECT_EQ(h::get(kept_again, 1), 4.0);
  EXPECT_EQ(h::get(other_again, 1), 5.0);
}

TYPED_TEST(Sharing, TheCopyOutlivesItsSource) {
  using h = handled<TypeParam>;
  std::unique_ptr<TypeParam> source(new TypeParam(TestFixture::of(3)));
  TypeParam copied(*source);
  source.reset();
  EXPECT_EQ(h::get(copied, 1), 3.0);
  h::set(copied, 1, 6);
  EXPECT_EQ(h::get(copied, 1), 6.0);
}

TYPED_TEST(Sharing, ParametersByValueCapturesAndStructs) {
  using h = handled<TypeParam>;
  TypeParam p = TestFixture::of(3);
  const auto by_value = [](TypeParam q) { return h::get(q, 1); };
  EXPECT_EQ(by_value(p), 3.0);
  auto captured = [p]() mutable { return h::get(p, 1); };
  auto captured_again = captured;
  EXPECT_EQ(captured() + captured_again(), 6.0);
  model<TypeParam> m{p}, n = m;
  h::set(n.curve, 1, 7);
  EXPECT_EQ(h::get(p, 1), 7.0);
}

TYPED_TEST(Sharing, VectorsOfPolynomials) {
  using h = handled<TypeParam>;
  TypeParam p = TestFixture::of(3);
  std::vector<TypeParam> v;
  for (int i = 0; i < 20; ++i) v.push_back(p);
  std::vector<TypeParam> w(v);
  v.erase(v.begin(), v.begin() + 7);
  v.insert(v.begin() + 2, TypeParam(p));  // of its own: libc++ assigns a constant, which copies the coefficients
  h::set(w[11], 1, 8);
  for (TypeParam& q : v) EXPECT_EQ(h::get(q, 1), 8.0);
  EXPECT_EQ(h::get(p, 1), 8.0);
}

TYPED_TEST(Sharing, EveryWayToGiveAnArrayUp) {
  using h = handled<TypeParam>;
  TypeParam p = TestFixture::of(3), other = TestFixture::of(9);
  {
    TypeParam q(p);
    q.empty();
    EXPECT_TRUE(h::is_empty(q));
    TypeParam r(p);
    h::make(r);
    TypeParam s(p);
    s.resize(3);
    TypeParam t(p);
    t *= other;
    TypeParam u(p);
    u += t;
    TypeParam v(p);
    v = other;
    TypeParam w(p);
    w = p;
    h::set(w, 1, 1);
    TypeParam x(p);
    x = std::move(other);
    TypeParam y(p), z(p);
    y = z;
    h::set(y, 1, 2);
    z = TypeParam(p);
  }
  EXPECT_EQ(h::get(p, 1), 3.0);
}

TEST(SharingBinom, EveryFurtherWayToGiveAnArrayUp) {
  const long before = live_blocks();
  {
    binom p, d;
    p.create(3);
    p.set(2, 1);
    d = p;
    binom q(p), r(p), s(p), t(p), e(d);
    q.shift_h(2);
    EXPECT_EQ(q.get(0), 4.0);
    r.func_1(r);
    EXPECT_EQ(r.get(1), 2.0);
    p.func_1(s);
    EXPECT_EQ(s.get(1), 2.0);
    p.func_1(d);
    EXPECT_EQ(e.get(2), 1.0);
    t = t.antifunction(1, 2, 0.25);
    EXPECT_EQ(p.get(2), 1.0);
    EXPECT_EQ(p.getcofcnt(), 3u);
  }
  EXPECT_EQ(live_blocks(), before);
}

TYPED_TEST(Sharing, ClonesAreDeep) {
  using h = handled<TypeParam>;
  TypeParam p = TestFixture::of(3), shared(p);
  const TypeParam& constant = shared;
  TypeParam q = constant.clone();
  h::set(q, 1, 4);
  h::set(q, 2, 4);
  EXPECT_EQ(h::get(p, 1), 3.0);
  EXPECT_EQ(h::get(p, 2), 0.0);
  EXPECT_EQ(h::get(q, 1), 4.0);
  TypeParam none = TypeParam().clone();
  EXPECT_TRUE(h::is_empty(none));
}

// Random copies, moves, assignments and releases beside a model in which every object is told which array it has.
TYPED_TEST(Sharing, RandomSequences) {
  using h = handled<TypeParam>;
  test::random_source r(91);
  std::vector<std::pair<std::unique_ptr<TypeParam>, std::shared_ptr<double>>> objects;
  for (int step = 0; step < 20000; ++step) {
    const std::size_t n = objects.size();
    const std::size_t i = n ? r.below(static_cast<std::uint32_t>(n)) : 0;
    const std::size_t j = n ? r.below(static_cast<std::uint32_t>(n)) : 0;
    switch (n == 0 ? 0 : r.below(8)) {
      case 0: objects.emplace_back(new TypeParam(TestFixture::of(step)), std::make_shared<double>(step)); break;
      case 1:
      case 2:
        if (n < 300) objects.emplace_back(new TypeParam(*objects[i].first), objects[i].second);
        break;
      case 3:
        *objects[i].first = *objects[j].first;
        if (i != j) objects[i].second = std::make_shared<double>(*objects[j].second);
        break;
      case 4: {
        TypeParam moved(std::move(*objects[i].first));
        *objects[i].first = std::move(moved);
        break;
      }
      case 5:
        h::set(*objects[i].first, 1, step);
        *objects[i].second = step;
        break;
      default: objects.erase(objects.begin() + static_cast<std::ptrdiff_t>(i)); break;
    }
    if (!objects.empty()) {
      auto& seen = objects[r.below(static_cast<std::uint32_t>(objects.size()))];
      ASSERT_EQ(h::get(*seen.first, 1), *seen.second) << "step " << step;
    }
  }
}

// Every copy either is made or changes nothing.
TYPED_TEST(Sharing, CopiesFailCleanly) {
  using h = handled<TypeParam>;
  constexpr std::size_t many = 400;
  std::vector<TypeParam> sources;
  for (std::size_t i = 0; i < many; ++i) sources.push_back(TestFixture::of(static_cast<double>(i)));
  std::vector<std::unique_ptr<TypeParam>> copies(many);
  long failures = 0;
  for (std::size_t i = 0; i < many; ++i) {
    alignas(TypeParam) unsigned char place[sizeof(TypeParam)];
    TypeParam* copied = nullptr;
    const test::outcome o = test::run_failing(0, [&] { copied = new (place) TypeParam(sources[i]); });
    EXPECT_EQ(o.threw, o.failed);
    failures += o.threw;
    if (copied) copied->~TypeParam();
    copies[i].reset(new TypeParam(sources[i]));
  }
  EXPECT_GT(failures, 5) << "the table of this many arrays has to grow";
  for (std::size_t i = 0; i < many; ++i) EXPECT_EQ(h::get(*copies[i], 1), static_cast<double>(i));
}

// A program that takes the array out of an object of a derived class and releases it leaves an entry behind.
TYPED_TEST(Sharing, StaleEntriesAreDropped) {
  using h = handled<TypeParam>;
  typename h::open p;
  h::make(p);
  typename h::open q(p), r(p);
  tessarn::real* const taken = p.cof;
  p.drop(), q.drop(), r.drop();
  tessarn::detail::real_array array(taken);  // as if released, and allocated at the same address
  tessarn::real* const again = tessarn::detail::held(std::move(array));
  ASSERT_EQ(again, taken);
  tessarn::detail::give_up(again);  // its only holder
}

#if !defined(__EMSCRIPTEN__) || defined(__EMSCRIPTEN_PTHREADS__)  // there are threads
// Each thread works on objects of its own, which share arrays with those of the other threads.
TYPED_TEST(Sharing, Threads) {
  using h = handled<TypeParam>;
  constexpr int threads = 4, rounds = 3000;
  std::atomic<int> wrong{0};
  for (int repeat = 0; repeat < 3; ++repeat) {
    std::vector<TypeParam> given;
    for (int i = 0; i < threads * 8; ++i) given.push_back(TestFixture::of(i % 8));
    for (int i = 8; i < threads * 8; ++i)
      given[static_cast<std::size_t>(i)] = TypeParam(given[static_cast<std::size_t>(i % 8)]);
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t) {
      std::vector<TypeParam> own(std::make_move_iterator(given.begin() + t * 8),
                                 std::make_move_iterator(given.begin() + t * 8 + 8));
      running.emplace_back([own = std::move(own), &wrong]() mutable {
        for (int i = 0; i < rounds; ++i) {
          const auto k = static_cast<std::size_t>(i % 8);
          TypeParam copied(own[k]), again(copied);
          if (h::get(again, 1) != static_cast<double>(k)) ++wrong;
          own[k] = std::move(copied);
          TypeParam other = TypeParam(again).clone();
          if (h::get(other, 1) != static_cast<double>(k)) ++wrong;
        }
      });
    }
    given.clear();
    for (std::thread& t : running) t.join();
  }
  EXPECT_EQ(wrong, 0);
}

// The last holder releases the array without a lock, and yet after everything that the other one did with it: a thread
// sanitizer tells otherwise. Nothing else orders the two threads.
TYPED_TEST(Sharing, TheLastHolderComesAfterTheOthers) {
  using h = handled<TypeParam>;
  for (int round = 0; round < 200; ++round) {
    std::unique_ptr<TypeParam> a(new TypeParam(TestFixture::of(round))), b(new TypeParam(*a));
    std::atomic<bool> done{false};
    std::thread first([&a, &done, round] {
      h::set(*a, 1, round + 1);
      a.reset();
      done.store(true, std::memory_order_relaxed);
    });
    while (!done.load(std::memory_order_relaxed)) std::this_thread::yield();
    b.reset();
    first.join();
  }
}
#endif

// The table beside a plain list of pairs, with addresses that collide.
TEST(SideTable, AgreesWithAPlainList) {
  static tessarn::detail::side_table<int> table;
  const long before = live_blocks();
  test::random_source r(92);
  std::vector<std::pair<const char*, int>> model;
  static const char addresses[4096] = {};
  for (int step = 0; step < 60000; ++step) {
    const std::uint32_t spread = 1 + r.below(4096);
    const char* key = addresses + r.below(spread) / 16 * 16;
    const auto at = std::find_if(model.begin(), model.end(), [&](const auto& m) { return m.first == key; });
    const bool there = at != model.end();
    switch (r.below(step % 10000 < 6000 ? 3u : 5u)) {
      case 0:
      case 1:
        table.change(key, [&](int& v) { v += step; });
        if (there)
          at->second += step;
        else
          model.emplace_back(key, step);
        break;
      case 2: {
        int seen = -1;
        const bool found = table.use(key, [&](int& v) { return seen = v, true; });
        ASSERT_EQ(found, there);
        ASSERT_EQ(seen, there ? at->second : -1);
        break;
      }
      default:
        ASSERT_EQ(table.erase(key), there);
        if (there) model.erase(at);
        break;
    }
  }
  while (!model.empty()) {
    ASSERT_TRUE(table.erase(model.back().first));
    model.pop_back();
    model.shrink_to_fit();
  }
  model = {};
  EXPECT_EQ(live_blocks(), before);
}

}  // namespace
