// Allocation failure at every allocation of every matrix operation: each object is afterwards as it
// was, or empty, and nothing leaks.
#include <tessarn/vectors.h>

#include <functional>
#include <new>

#include "../matrix/matrix_support.h"
#include "../support/failing_new.h"

namespace {

using namespace test;

// The objects an operation may touch. The sizes of the inputs keep every path in play.
struct world {
  real_matrix a, b, dst;
  real_square s, t;
  complex_matrix ca, cb;
  complex_square cs, ct;

  explicit world(u32 n) {
    random_source random(161);
    a = to_library(random_matrix(n, n + 2, random, entries::ordinary));
    b = to_library(random_matrix(1, n + 2, random, entries::ordinary));
    dst = to_library(random_matrix(2, 2, random, entries::ordinary));
    s = to_library(random_square(n, random, entries::ordinary));
    t = to_library(random_square(n + 1, random, entries::ordinary));
    ca = to_library(random_cmatrix(n, n, random, entries::ordinary));
    cb = to_library(random_cmatrix(1, n, random, entries::ordinary));
    cs = to_library(random_csquare(n, random, entries::ordinary));
    ct = to_library(random_csquare(n + 1, random, entries::ordinary));
  }
};

template <class M>
bool empty_or(const M& now, const M& before) {
  if (now.getData() == nullptr) return now.getWidth() == 0 && now.getHeight() == 0;
  return now.getWidth() == before.getWidth() && now.getHeight() == before.getHeight();
}

void expect_kept(world& now, world& before) {
  EXPECT_TRUE(empty_or(now.a, before.a) && empty_or(now.b, before.b) && empty_or(now.dst, before.dst) &&
              empty_or(now.ca, before.ca) && empty_or(now.cb, before.cb));
  const struct {
    const real_matrix &now, &before;
  } pairs[] = {{now.a, before.a}, {now.b, before.b}, {now.dst, before.dst}};
  for (const auto& p : pairs) {
    if (p.now.getData() == nullptr) continue;
    EXPECT_TRUE(same(p.now, to_plain(p.before)));
  }
  const struct { real_square &now, &before; } squares[] = {{now.s, before.s}, {now.t, before.t}};
  for (const auto& p : squares) {
    if (p.now.getSize() == 0) {
      EXPECT_EQ(p.now.getData(), nullptr);
      continue;
    }
    ASSERT_EQ(p.now.getSize(), p.before.getSize());
    EXPECT_FALSE(p.now != p.before);
  }
  const struct { complex_square &now, &before; } csquares[] = {{now.cs, before.cs}, {now.ct, before.ct}};
  for (const auto& p : csquares) {
    EXPECT_TRUE(p.now.getSize() == 0 || p.now.getSize() == p.before.getSize());
    for (u32 i = 0; i < p.now.getSize(); ++i) {
      EXPECT_TRUE(p.now.get(i, 0) == p.before.get(i, 0));
    }
  }
}

// Runs the operation with its first, second, ... allocation failing until none is left to fail.
long failures_of(const char* what, u32 n, const std::function<void(world&)>& operation) {
  SCOPED_TRACE(what);
  const long blocks = live_blocks();
  return fail_every_allocation([&](long k) {
    outcome o;
    {
      world now(n), before(n);
      o = run_failing(k, [&] { operation(now); });
      if (o.threw) expect_kept(now, before);
      // Whatever state they are in, the objects can be used and released.
      now.a.create(2, 2);
      now.s.create(2);
      now.cs.create(2);
    }
    EXPECT_EQ(live_blocks(), blocks) << "failing at allocation " << k;
    return o;
  });
}

TEST(MatrixAllocation, EveryFailureLeavesObjectsUsable) {
  const struct {
    const char* name;
    std::function<void(world&)> run;
  } operations[] = {
      {"mat copy", [](world& w) { real_matrix c(w.a); }},
      {"mat =", [](world& w) { w.dst = w.a; }},
      {"mat create", [](world& w) { w.a.create(5, 6); }},
      {"mat +", [](world& w) { real_matrix c = w.a + w.a; }},
      {"mat -", [](world& w) { real_matrix c = w.a - w.a; }},
      {"mat *", [](world& w) { real_matrix c = w.a * w.dst; }},
      {"mat * scalar", [](world& w) { real_matrix c = w.a * 2.0; }},
      {"mat / scalar", [](world& w) { real_matrix c = w.a / 2.0; }},
      {"mat transpose", [](world& w) { w.a.transpose(w.dst); }},
      {"mat transpose into itself", [](world& w) { w.a.transpose(w.a); }},
      {"mat normalize", [](world& w) { real_matrix c = w.b.normalize(); }},
      {"mat solve", [](world& w) { w.dst.solve(w.a, w.b); }},
      {"mat solve into an argument", [](world& w) { w.b.solve(w.a, w.b); }},
      {"mat invert, rectangular", [](world& w) { w.a.invert(w.dst); }},
      {"mat invert, square", [](world& w) { w.dst.invert(w.a); }},
      {"mat decompose",
       [](world& w) {
         real_matrix v;
         w.a.decompose(w.dst, w.b, v);
       }},
      {"mat decompose into itself", [](world& w) { w.a.decompose(w.dst, w.b, w.a); }},
      {"complex mat copy", [](world& w) { complex_matrix c(w.ca); }},
      {"complex mat =", [](world& w) { w.cb = w.ca; }},
      {"complex mat create", [](world& w) { w.ca.create(5, 6); }},
      {"sqmat copy", [](world& w) { real_square c(w.s); }},
      {"sqmat =", [](world& w) { w.s = w.t; }},
      {"sqmat create", [](world& w) { w.s.create(7); }},
      {"sqmat getColumn", [](world& w) { real_matrix c = w.s.getColumn(0); }},
      {"sqmat transpose", [](world& w) { w.s.transpose(w.t); }},
      {"sqmat transpose into itself", [](world& w) { w.s.transpose(w.s); }},
      {"sqmat *=", [](world& w) { w.s *= w.s; }},
      {"sqmat *", [](world& w) { w.t = w.s * w.s; }},
      {"sqmat det",
       [](world& w) {
         (void)w.s.det();
         (void)w.t.det();
       }},
      {"sqmat cof", [](world& w) { (void)w.t.cof(1, 1); }},
      {"sqmat solve", [](world& w) { w.s.solve(w.b); }},
      {"sqmat orthogonalize", [](world& w) { w.s.orthogonalize(); }},
      {"sqmat optimize",
       [](world& w) {
         real_square c(w.s);
         c.optimize();
       }},
      {"complex sqmat copy", [](world& w) { complex_square c(w.cs); }},
      {"complex sqmat =", [](world& w) { w.cs = w.ct; }},
      {"complex sqmat create", [](world& w) { w.cs.create(7); }},
      {"complex sqmat getColumn", [](world& w) { complex_matrix c = w.cs.getColumn(0); }},
      {"complex sqmat *=", [](world& w) { w.cs *= w.cs; }},
      {"complex sqmat *", [](world& w) { w.ct = w.cs * w.cs; }},
      {"complex sqmat det", [](world& w) { (void)w.cs.det(); }},
      {"complex sqmat cof", [](world& w) { (void)w.ct.cof(1, 1); }},
      {"complex sqmat solve", [](world& w) { w.cs.solve(w.cb); }},
      {"complex sqmat orthogonalize", [](world& w) { w.cs.orthogonalize(); }},
  };
  for (u32 n : {2u, 3u, 4u, 6u, 20u}) {
    for (const auto& o : operations) failures_of(o.name, n, o.run);
  }
}

TEST(MatrixAllocation, FailuresAreReallyProvoked) {
  EXPECT_GE(failures_of("copy", 4, [](world& w) { real_matrix c(w.a); }), 1);
  EXPECT_GE(failures_of("create", 4, [](world& w) { w.cs.create(9); }), 1);
  EXPECT_GE(failures_of("decompose", 4,
                        [](world& w) {
                          real_matrix v;
                          w.a.decompose(w.dst, w.b, v);
                        }),
            3);
  // Beyond some size the workspace is allocated too.
  EXPECT_GE(failures_of("decompose", 40,
                        [](world& w) {
                          real_matrix v;
                          w.a.decompose(w.dst, w.b, v);
                        }),
            4);
}

TEST(MatrixAllocation, Matching) {
  std::vector<vector3d> a, b;
  random_source random(162);
  for (int i = 0; i < 6; ++i) {
    a.emplace_back(random.uniform(), random.uniform(), random.uniform());
    b.emplace_back(random.uniform(), random.uniform(), random.uniform());
  }
  EXPECT_GE(failures_of("calc_match", 3, [&](world& w) { w.s.calc_match(a.data(), b.data(), 6); }), 1);
  EXPECT_GE(failures_of("calc_transform", 3, [&](world& w) { w.s.calc_transform(a.data(), b.data(), 6); }), 1);
}

}  // namespace
