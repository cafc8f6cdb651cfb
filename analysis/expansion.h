// Exact sums, differences and products of doubles, as sums of doubles that do not overlap.
//
// The algorithms are those of J. Shewchuk, Adaptive precision floating-point arithmetic and fast robust geometric
// predicates, 1997: fast expansion sum and scale expansion, with zeros left out. They are exact as long as nothing
// overflows and no error of a product is below the smallest double.
#pragma once

#include "analysis/doubled.h"

namespace tessarn::analysis {

// The sum of terms[0] to terms[size - 1], each larger than all before it together. Zero has no terms.
template <int Capacity>
struct expansion {
  double terms[Capacity];
  int size = 0;

  void append(double v) noexcept {
    if (v != 0) terms[size++] = v;
  }
  // -1, 0 or 1: the largest term decides.
  int sign() const noexcept { return size == 0 ? 0 : terms[size - 1] > 0 ? 1 : -1; }
  // The number rounded to doubled precision, within 2^-100 of itself.
  doubled rounded() const noexcept {
    doubled sum = 0.0;
    for (int i = 0; i < size; ++i) sum += terms[i];
    return sum;
  }
};

inline expansion<2> exact(doubled v) noexcept {
  expansion<2> e;
  e.append(v.low);
  e.append(v.high);
  return e;
}

template <int M, int N>
expansion<M + N> operator+(const expansion<M>& a, const expansion<N>& b) noexcept {
  expansion<M + N> s;
  int i = 0, j = 0;
  const auto smaller = [&]() noexcept {
    if (j == b.size || (i < a.size && magnitude(a.terms[i]) < magnitude(b.terms[j]))) return a.terms[i++];
    return b.terms[j++];
  };
  if (a.size + b.size == 0) return s;
  double rest = smaller();
  while (i < a.size || j < b.size) {
    const doubled t = exact_sum(rest, smaller());
    s.append(t.low);
    rest = t.high;
  }
  s.append(rest);
  return s;
}

template <int N>
expansion<N> operator-(expansion<N> a) noexcept {
  for (int i = 0; i < a.size; ++i) a.terms[i] = -a.terms[i];
  return a;
}

template <int N>
expansion<2 * N> operator*(const expansion<N>& a, double b) noexcept {
  expansion<2 * N> p;
  if (a.size == 0 || b == 0) return p;
  const doubled first = exact_product(a.terms[0], b);
  p.append(first.low);
  double rest = first.high;
  for (int i = 1; i < a.size; ++i) {
    const doubled t = exact_product(a.terms[i], b), low = exact_sum(rest, t.low);
    p.append(low.low);
    const doubled high = ordered_sum(t.high, low.high);
    p.append(high.low);
    rest = high.high;
  }
  p.append(rest);
  return p;
}

// The product with a number of one or two terms, as differences of two doubles are.
template <int N>
expansion<4 * N> operator*(const expansion<N>& a, const expansion<2>& b) noexcept {
  return a * (b.size > 0 ? b.terms[0] : 0.0) + a * (b.size > 1 ? b.terms[1] : 0.0);
}

}  // namespace tessarn::analysis
