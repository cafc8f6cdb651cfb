// Every allocation of every owning operation is made to fail once. Afterwards each object is as it
// was or empty and usable, nothing has leaked, and the arguments are untouched.
#include <gtest/gtest.h>
#include <tessarn/geometry.h>
#include <tessarn/poly.h>
#include <tessarn/vectors.h>

#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "support/failing_new.h"
#include "support/lists.h"

namespace {

using plain::poly;
using plain::surface;
using plain::vec2;
using test::fail_every_allocation;
using test::fill;
using test::live_blocks;
using test::same;
using test::same_points;

// As run_failing, for operations that cannot do without the memory.
template <class Call>
test::outcome run(long k, Call&& call) {
  const test::outcome o = test::run_failing(k, std::forward<Call>(call));
  EXPECT_EQ(o.threw, o.failed) << "a failed allocation and the exception belong together";
  return o;
}

::testing::AssertionResult as_before_or_empty(binom& p, const poly& before) {
  if (p.getcofcnt() == 0) return ::testing::AssertionSuccess();
  return same(p, before);
}

// The fits re-create their polynomial first, so zeros of the new count are allowed as well.
::testing::AssertionResult as_before_empty_or_zeros(binom& p, const poly& before, long m) {
  if (p.getcofcnt() == 0 || same(p, before)) return ::testing::AssertionSuccess();
  return same(p, plain::created(m));
}

struct operation {
  const char* name;
  std::function<void(binom&, binom&)> run;
  long count = 0;  // the number of coefficients that a fit makes
};

const poly p_before{{1, 2, 3}};
const poly q_before{{4, 5, 6, 7, 8}};

TEST(BinomAllocation, EveryOperation) {
  std::vector<vector> points;
  for (int i = 0; i < 9; ++i) points.push_back(vector(i == 4 ? -1.0 : i, i * i));
  const tessarn::ulong n = 9;
  const std::vector<operation> operations{
      {"create", [](binom& p, binom&) { p.create(5); }},
      {"resize up", [](binom& p, binom&) { p.resize(5); }},
      {"resize down", [](binom& p, binom&) { p.resize(2); }},
      {"copy", [](binom& p, binom& q) { p.copy(q); }},
      {"assign", [](binom& p, binom& q) { p = q; }},
      {"func_1 elsewhere", [](binom& p, binom& q) { q.func_1(p); }},
      {"add", [](binom& p, binom& q) { p += q; }},
      {"subtract", [](binom& p, binom& q) { p -= q; }},
      {"multiply", [](binom& p, binom& q) { p *= q; }},
      {"square", [](binom& p, binom&) { p *= p; }},
      {"shift_h", [](binom& p, binom&) { p.shift_h(1.5); }},
  };
  for (const operation& op : operations) {
    SCOPED_TRACE(op.name);
    const long live = live_blocks();
    const long failures = fail_every_allocation([&](long k) {
      binom p, q;
      fill(p, p_before);
      fill(q, q_before);
      const test::outcome o = run(k, [&]() { op.run(p, q); });
      if (o.threw) {
        EXPECT_TRUE(as_before_or_empty(p, p_before));
      }
      EXPECT_TRUE(same(q, q_before));
      // Whatever is left is usable.
      p.create(1);
      p.set(0, 4);
      EXPECT_BITS(p.func(1), 4.0);
      return o;
    });
    EXPECT_EQ(live_blocks(), live);
    EXPECT_GT(failures, 0);
  }
  const std::vector<operation> fits{
      {"create", [&](binom& p, binom&) { p.create(points.data(), n, 4); }, 4},
      {"createtan", [&](binom& p, binom&) { p.createtan(points.data(), n, 4); }, 4},
      {"create a line", [&](binom& p, binom&) { p.create(points.data(), n, 2); }, 2},
  };
  for (const operation& op : fits) {
    SCOPED_TRACE(op.name);
    const long live = live_blocks();
    const long failures = fail_every_allocation([&](long k) {
      binom p, q;
      fill(p, p_before);
      const test::outcome o = run(k, [&]() { op.run(p, q); });
      if (o.threw) {
        EXPECT_TRUE(as_before_empty_or_zeros(p, p_before, op.count));
      }
      return o;
    });
    EXPECT_EQ(live_blocks(), live);
    EXPECT_GT(failures, 0);
  }
}

// Their sums and their normal equations stand on the stack; a constant's points pass through a block.
TEST(BinomAllocation, FitsOfTwoToEightCoefficientsAllocateThemOnly) {
  std::vector<vector> points;
  for (int i = 0; i < 200; ++i) points.push_back(vector(0.01 * (i + 1), i % 7));
  for (tessarn::ulong m = 2; m <= 8; ++m) {
    const long failures = fail_every_allocation([&](long k) {
      binom p;
      return run(k, [&]() { p.create(points.data(), 200, m); });
    });
    EXPECT_EQ(failures, 1) << m;
    const long odd_failures = fail_every_allocation([&](long k) {
      binom p;
      return run(k, [&]() { p.createtan(points.data(), 200, m); });
    });
    EXPECT_EQ(odd_failures, 1) << m;
  }
}

TEST(BinomAllocation, ShiftOfTheEmptyPolynomial) {
  const long live = live_blocks();
  fail_every_allocation([&](long k) {
    binom p;
    const test::outcome o = run(k, [&]() { p.shift_v(2); });
    EXPECT_EQ(p.getcofcnt(), o.threw ? 0u : 1u);
    return o;
  });
  EXPECT_EQ(live_blocks(), live);
}

TEST(BinomAllocation, ScalarAndAntifunction) {
  const long live = live_blocks();
  const long failures = fail_every_allocation([&](long k) {
    binom p, q;
    fill(p, p_before);
    fill(q, q_before);
    const test::outcome o = run(k, [&]() { p.scalar(q, 0, 1, 0.125); });
    EXPECT_TRUE(same(p, p_before));
    EXPECT_TRUE(same(q, q_before));
    return o;
  });
  EXPECT_GT(failures, 0);
  const long more = fail_every_allocation([&](long k) {
    binom p;
    fill(p, p_before);
    const test::outcome o = run(k, [&]() {
      binom g = p.antifunction(0, 1, 0.125);
      EXPECT_EQ(g.getcofcnt(), 3u);
    });
    EXPECT_TRUE(same(p, p_before));
    return o;
  });
  EXPECT_GT(more, 0);
  EXPECT_EQ(live_blocks(), live);
}

TEST(BinomAllocation, SearchesAllocateNothingThatLeaks) {
  binom p;
  fill(p, {{0, 0, 1}});
  const long live = live_blocks();
  fail_every_allocation([&](long k) {
    const test::outcome o = run(k, [&]() { p.find_high_hpoint_arc(-1, 1, 0.3, 1e-6); });
    return o;
  });
  fail_every_allocation([&](long k) {
    const test::outcome o = run(k, [&]() { p.find_zero(-1, 1, 0.3, 1e-6); });
    return o;
  });
  EXPECT_EQ(live_blocks(), live);
}

TEST(BinomAllocation, ImpossibleSizes) {
  const long live = live_blocks();
  {
    binom p;
    fill(p, p_before);
    EXPECT_THROW(p.create(-1), std::bad_alloc);
    EXPECT_TRUE(as_before_or_empty(p, p_before));
    fill(p, p_before);
    EXPECT_THROW(p.create(std::numeric_limits<tessarn::slong>::max()), std::bad_alloc);
    EXPECT_TRUE(as_before_or_empty(p, p_before));
    fill(p, p_before);
    EXPECT_THROW(p.resize(-7), std::bad_alloc);
    EXPECT_TRUE(as_before_or_empty(p, p_before));
    // A quotient of -1 or less asks for four thousand million samples.
    binom q;
    fill(q, q_before);
    fill(p, p_before);
    EXPECT_THROW(p.antifunction(5, 1, 1), std::bad_alloc);
    EXPECT_THROW(p.scalar(q, 5, 1, 1), std::bad_alloc);
    EXPECT_TRUE(same(p, p_before));
    // The derivative of the empty polynomial asks for minus one coefficient.
    binom none;
    EXPECT_THROW(none.func_1(q), std::bad_alloc);
    EXPECT_TRUE(as_before_or_empty(q, q_before));
  }
  EXPECT_EQ(live_blocks(), live);
}

// ---------------------------------------------------------------------------- surfaces

const surface s_before{2, {1, 2, 3, 4}};
const surface t_before{3, {1, 2, 3, 4, 5, 6, 7, 8, 9}};

TEST(HyperbinomAllocation, EveryOperation) {
  std::vector<vector3d> points;
  std::vector<tessarn::real> w;
  for (int i = 0; i < 9; ++i) {
    points.push_back(vector3d(i % 3, i / 3, i * i));
    w.push_back(1 + i);
  }
  struct surface_operation {
    const char* name;
    std::function<void(hyperbinom&, hyperbinom&)> run;
  };
  const std::vector<surface_operation> operations{
      {"create", [](hyperbinom& p, hyperbinom&) { p.create(3); }},
      {"create negative", [](hyperbinom& p, hyperbinom&) { p.create(-3); }},
      {"resize up", [](hyperbinom& p, hyperbinom&) { p.resize(3); }},
      {"resize down", [](hyperbinom& p, hyperbinom&) { p.resize(1); }},
      {"copy", [](hyperbinom& p, hyperbinom& q) { p.copy(q); }},
      {"assign", [](hyperbinom& p, hyperbinom& q) { p = q; }},
      {"add", [](hyperbinom& p, hyperbinom& q) { p += q; }},
      {"subtract", [](hyperbinom& p, hyperbinom& q) { p -= q; }},
      {"multiply", [](hyperbinom& p, hyperbinom& q) { p *= q; }},
      {"square", [](hyperbinom& p, hyperbinom&) { p *= p; }},
      {"fit", [&](hyperbinom& p, hyperbinom&) { p.create(points.data(), 9, 2); }},
      {"weighted fit", [&](hyperbinom& p, hyperbinom&) { p.create(points.data(), w.data(), 9, 2); }},
  };
  for (const surface_operation& op : operations) {
    SCOPED_TRACE(op.name);
    const long live = live_blocks();
    const long failures = fail_every_allocation([&](long k) {
      hyperbinom p, q;
      fill(p, s_before);
      fill(q, t_before);
      const test::outcome o = run(k, [&]() { op.run(p, q); });
      // The fits re-create the table first, so zeros of the same grade are allowed too.
      if (o.threw && p.getgrade() != 0 && !same(p, plain::created_surface(2))) {
        EXPECT_TRUE(same(p, s_before));
      }
      EXPECT_TRUE(same(q, t_before));
      p.create(1);
      EXPECT_BITS(p.func(1, 1), 0.0);
      return o;
    });
    EXPECT_EQ(live_blocks(), live);
    EXPECT_GT(failures, 0);
  }
}

TEST(HyperbinomAllocation, ImpossibleSizes) {
  const long live = live_blocks();
  {
    for (const tessarn::slong g : {46340, 46341, 65536, 65537, -65536, 131072, 2147483647}) {
      hyperbinom p;
      fill(p, s_before);
      EXPECT_THROW(p.create(g), std::bad_alloc) << g;
      if (p.getgrade() != 0) {
        EXPECT_TRUE(same(p, s_before));
      }
      fill(p, s_before);
      EXPECT_THROW(p.resize(g), std::bad_alloc) << g;
      if (p.getgrade() != 0) {
        EXPECT_TRUE(same(p, s_before));
      }
    }
  }
  EXPECT_EQ(live_blocks(), live);
}

// ---------------------------------------------------------------------------- point list

TEST(VectormatAllocation, EveryOperation) {
  const std::vector<vec2> before = [] {
    std::vector<vec2> v;
    for (int i = 0; i < 1024; ++i) v.push_back({double((i * 7) % 1024), i % 5 == 0 ? 9.0 : 1.0});
    return v;
  }();
  struct list_operation {
    const char* name;
    std::function<void(vectormat&)> run;
  };
  const std::vector<list_operation> operations{
      {"add a point of its own", [](vectormat& l) { l.add(l.points[3]); }},
      {"+=",
       [](vectormat& l) {
         vector v(1, 2);
         l += v;
       }},
      {"sort", [](vectormat& l) { l.sort(); }},
      {"avdir", [](vectormat& l) { l.avdir(); }},
      {"DeleteErrors", [](vectormat& l) { l.DeleteErrors(0.5); }},
      {"DeleteErrors(0)", [](vectormat& l) { l.DeleteErrors(0); }},
      {"findline", [](vectormat& l) { delete l.findline(vector(1, 0)); }},
      {"copy", [](vectormat& l) { vectormat copy(l); }},
      {"assign",
       [](vectormat& l) {
         vectormat other;
         vector v(1, 2);
         other.add(v);
         other = l;
       }},
  };
  for (const list_operation& op : operations) {
    SCOPED_TRACE(op.name);
    const long live = live_blocks();
    const long failures = fail_every_allocation([&](long k) {
      vectormat l;
      fill(l, before);
      const bool sorting = std::string(op.name) == "sort";
      const test::outcome o = sorting ? test::run_failing(k, [&]() { op.run(l); }) : run(k, [&]() { op.run(l); });
      // Sorting may do without the memory, but then it must have sorted.
      if (sorting && !o.threw) {
        plain::point_list sorted = test::list_of(before);
        plain::bubble_sort(sorted);
        EXPECT_TRUE(same(l, sorted));
      }
      if (o.threw && l.count != 0) {
        EXPECT_TRUE(same_points(l, before));
        EXPECT_EQ(l.capacity, 1024u);
      }
      vector v(5, 6);
      l.add(v);
      EXPECT_TRUE(same(l.points[l.count - 1], vec2{5, 6}));
      return o;
    });
    EXPECT_EQ(live_blocks(), live);
    if (std::string(op.name) != "sort") {
      EXPECT_GT(failures, 0);
    }
  }
}

TEST(VectormatAllocation, SortWithNanNeedsNoMoreThanItCanGet) {
  const std::vector<vec2> before{{3, 1}, {std::numeric_limits<double>::quiet_NaN(), 0}, {1, 1}};
  const long live = live_blocks();
  fail_every_allocation([&](long k) {
    vectormat l;
    fill(l, before);
    const test::outcome o = test::run_failing(k, [&]() { l.sort(); });
    if (o.threw) {
      EXPECT_TRUE(same_points(l, before));
    }
    return o;
  });
  EXPECT_EQ(live_blocks(), live);
}

TEST(VectormatAllocation, AssignmentKeepsTheTargetOrEmptiesIt) {
  const long live = live_blocks();
  fail_every_allocation([&](long k) {
    vectormat a, b;
    fill(a, {{1, 2}, {3, 4}});
    fill(b, {{5, 6}});
    const test::outcome o = run(k, [&]() { b = a; });
    if (o.threw && b.count != 0) {
      EXPECT_TRUE(same_points(b, {{5, 6}}));
    }
    EXPECT_TRUE(same_points(a, {{1, 2}, {3, 4}}));
    return o;
  });
  EXPECT_EQ(live_blocks(), live);
}

// ---------------------------------------------------------------------------- geometry, allocators

// Few points need none; each of the others is repeated once.
TEST(PlaneAllocation, FitReleasesItsWorkingCopy) {
  std::vector<vector3d> points;
  for (int i = 0; i < 6000; ++i) points.push_back(vector3d(i % 50, i / 50 % 60, (i * i) % 7));
  for (const tessarn::ulong n : {3u, 4u, 30u, 300u, 6000u}) {
    const long live = live_blocks();
    const long failures = fail_every_allocation([&](long k) { return run(k, [&]() { plane p(points.data(), n); }); });
    EXPECT_EQ(live_blocks(), live);
    EXPECT_EQ(failures > 0, n > 30);
  }
  const long live = live_blocks();
  fail_every_allocation([&](long k) {
    vector3d normal;
    const test::outcome o = run(k, [&]() { plane::CalcNormale(normal, points.data(), 30, points.data(), 30); });
    return o;
  });
  EXPECT_EQ(live_blocks(), live);
}

TEST(ArrayAllocators, FailCleanly) {
  const long live = live_blocks();
  for (const tessarn::ulong n : {0u, 3u}) {
    fail_every_allocation([&](long k) {
      vector* v = nullptr;
      const test::outcome o = run(k, [&]() { v = new_vector(n); });
      if (n == 0) {
        delete v;
      } else {
        delete[] v;
      }
      return o;
    });
    fail_every_allocation([&](long k) {
      vector3d* v = nullptr;
      const test::outcome o = run(k, [&]() { v = new_vector3d(n); });
      if (n == 0) {
        delete v;
      } else {
        delete[] v;
      }
      return o;
    });
    fail_every_allocation([&](long k) {
      polarvector3d* v = nullptr;
      const test::outcome o = run(k, [&]() { v = new_polarvector3d(n); });
      if (n == 0) {
        delete v;
      } else {
        delete[] v;
      }
      return o;
    });
  }
  EXPECT_THROW(new_vector(4294967295u), std::bad_alloc);
  EXPECT_THROW(new_vector3d(4294967295u), std::bad_alloc);
  EXPECT_THROW(new_polarvector3d(4294967295u), std::bad_alloc);
  EXPECT_EQ(live_blocks(), live);
}

}  // namespace
