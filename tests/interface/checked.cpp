// The checked mode: each misuse stops the program with this file and its line. Without arguments, lists the cases and
// does what is right in the checked mode; with a number, commits that misuse.
#define TESSARN_CHECKED
#include <tessarn/tessarn.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace {

struct misuse {
  int line;
  void (*commit)();
};

#define MISUSE(statement)       \
  misuse {                      \
    __LINE__, [] { statement; } \
  }

mat<long double> m32() { return mat<long double>{{1, 2, 3}, {4, 5, 6}}; }
sqmat<long double> s2() { return sqmat<long double>{{1, 2}, {3, 5}}; }
mat<long double> ready, other;
mat<cplx> complex_ready;
sqmat<long double> square;
sqmat<cplx> complex_square(2), complex_three(3);
vectormat list{{1, 2}};

const misuse misuses[] = {
    MISUSE((void)m32().get(3, 0)),
    MISUSE((void)m32().get(0, 2)),
    MISUSE(ready.set(0, 0, 1)),
    MISUSE((void)(m32() + mat<long double>(2, 2))),
    MISUSE((void)(m32() - mat<long double>(2, 2))),
    MISUSE((void)(m32() * m32())),
    MISUSE((void)(m32() == mat<long double>(2, 2))),
    MISUSE((void)(m32() != mat<long double>(2, 2))),
    MISUSE(ready.solve(m32(), mat<long double>(1, 3))),
    MISUSE((void)complex_ready.get(0, 0)),
    MISUSE(complex_ready.set(0, 0, cplx(1, 2))),
    MISUSE((void)s2().get(2, 0)),
    MISUSE(square.set(0, 0, 1)),
    MISUSE((void)(s2() * sqmat<long double>(3))),
    MISUSE(square *= s2()),
    MISUSE((void)(s2() == sqmat<long double>(3))),
    MISUSE((void)(s2() != sqmat<long double>(3))),
    MISUSE(square.setColumn(0, mat<long double>(1, 2))),
    MISUSE(s2().solve(other)),
    MISUSE((void)complex_square.get(0, 2)),
    MISUSE(complex_square.set(2, 0, cplx(1, 1))),
    MISUSE(complex_square *= complex_three),
    MISUSE((void)(complex_square* complex_three)),
    MISUSE(complex_square.setColumn(0, mat<cplx>(1, 1))),
    MISUSE(complex_square.solve(complex_ready)),
    MISUSE(list[1].x = 2),
};

// The operations of the list above, with matching sizes and indices inside: they give their documented results.
bool right_use() {
  mat<long double> a = m32(), b(2, 3), x;
  b.set(0, 0, 1);
  const sqmat<long double> s = s2();
  sqmat<long double> t = s;
  t *= s;
  mat<long double> right{{1}, {3}};
  sqmat<long double>{{2, 0}, {0, 2}}.solve(right);
  x.solve(mat<long double>{{1, 0}, {0, 1}, {1, 1}}, mat<long double>{{1}, {2}, {3}});
  complex_square.set(0, 0, cplx(0, 1));
  complex_square.setColumn(1, complex_square.getColumn(0));
  t.setColumn(0, t.getColumn(1));
  return (a * b).get(0, 0) == 1 && a + a == 2 * a && (a - a).get(2, 1) == 0 && !(a != m32()) &&
         (s * s).get(0, 0) == 7 && t.get(0, 0) == 12 && right.get(0, 1) == 1.5 && x.getHeight() == 2 &&
         list[0].y == 2 && s == s2() && (complex_square * complex_square).get(0, 0) == cplx(-1, 0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) {
    misuses[std::atoi(argv[1])].commit();
    return 0;
  }
  if (!right_use()) return 1;
  for (const misuse& m : misuses) std::printf("%d\n", m.line);
  return 0;
}
