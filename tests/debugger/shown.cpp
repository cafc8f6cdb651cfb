// Objects of every class, for the debugger to print.
#include <tessarn/tessarn.h>

// Optimised, the function keeps a frame of its own, and the addresses keep what they point to in memory.
__attribute__((noinline)) static void stop_here(const mat<long double>& by_reference, const plane* by_pointer,
                                                const void* const* objects) {
  asm volatile("" : : "r"(&by_reference), "r"(by_pointer), "r"(objects) : "memory");
}

int main() {
  cplx z(1.5, -0.25);
  vector v(3, -4.5);
  vector3d w(1, 2, 3.25);
  polarvector3d p(0.5, 0.25, 2);
  mat<long double> m, none;
  m.create(3, 2);
  for (tessarn::ulong i = 0; i < 6; ++i) m.set(i % 3, i / 3, 1.5 * i);
  sqmat<long double> s;
  s.create(2);
  for (tessarn::ulong i = 0; i < 4; ++i) s.set(i % 2, i / 2, i + 1.0);
  sqmat<cplx> c;
  c.create(1);
  c.set(0, 0, z);
  binom b, no_terms;
  b.create(4);
  b.set(0, 1.5);
  b.set(1, -2);
  b.set(3, 0.1);
  hyperbinom h;
  h.create(2);
  h.set(1, 0, 7);
  h.set(0, 1, 5);
  vectormat list;
  list.add(v);
  list.add(vector(1, 2));
  line3d line(w, vector3d(0, 0, 1));
  plane upward(w, vector3d(0, 0, 1));
  const void* objects[] = {&z, &v, &w, &p, &m, &none, &s, &c, &b, &no_terms, &h, &list, &line, &upward};
  stop_here(m, &upward, objects);
  return 0;
}
