// The sums of the polynomial fits in lanes, for the kernels of the polynomials; each build has its own.
#pragma once

#include "poly/kernels/power_chains.inl"
#include "poly/kernels/kernels.h"

namespace tessarn::detail::TESSARN_ISA {

constexpr size_t sum_vectors = partial_sums / width;

// Sums that run side by side.
constexpr size_t product_rows = width == 1 ? 1 : width / 2;

// Eight plane points with point k in lane 3 k + 1 mod 8, which takes no shuffles but one; mixed() brings a vector into
// this order, in_order() back. Other widths take the points as they come.
#if defined(TESSARN_ISA_avx512)
TESSARN_INLINE void load_mixed_points(const double* p, vec& x, vec& y) {
  const vec a = load(p), b = load(p + 8), c = load(p + 16);
  x = __builtin_shufflevector(__builtin_shufflevector(c, a, 0, 9, 2, 3, 12, 5, 6, 15), b, 0, 1, 10, 3, 4, 13, 6, 7);
  const vec after =
      __builtin_shufflevector(__builtin_shufflevector(c, a, 0, 1, 10, 3, 4, 13, 6, 7), b, 8, 1, 2, 11, 4, 5, 14, 7);
  y = __builtin_shufflevector(after, after, 1, 2, 3, 4, 5, 6, 7, 0);
}
TESSARN_INLINE vec mixed(vec v) { return __builtin_shufflevector(v, v, 5, 0, 3, 6, 1, 4, 7, 2); }
TESSARN_INLINE vec in_order(vec v) { return __builtin_shufflevector(v, v, 1, 4, 7, 2, 5, 0, 3, 6); }
#else
TESSARN_INLINE void load_mixed_points(const double* p, vec& x, vec& y) { load_plane_points(p, x, y); }
TESSARN_INLINE vec mixed(vec v) { return v; }
TESSARN_INLINE vec in_order(vec v) { return v; }
#endif

// True for baseline x86-64: 16 registers of two doubles.
constexpr bool few_registers = width < 4;

TESSARN_INLINE mask not_finite(vec v) { return v - v != vec{}; }

// Finds abscissas that the chains do not take, and the marker, which is not 0.
template <size_t EXPONENTS>
class abscissa_check {
 public:
  TESSARN_MEMBER explicit abscissa_check(double marker) : marker_(bits_at(&marker)) {}
  TESSARN_MEMBER bool passes(const double* points) const {
    TESSARN_UNROLL
    for (size_t k = 0; k < partial_sums; ++k) {
      const double* x = points + 3 * k + 1;
      if (bits_at(x) == marker_ || !chain_takes<EXPONENTS>(x)) return false;
    }
    return true;
  }

 private:
  uint64_t marker_;
};

// The last points, fewer than GROUP, and zeros behind them, which change no sum.
template <size_t GROUP>
class filled_points {
 public:
  TESSARN_MEMBER filled_points(const double* points, size_t n) : points_(points), whole_(n - n % GROUP) {
    if (n == whole_) return;
    for (size_t k = 0; k < GROUP; ++k) {
      rest_[3 * k + 1] = whole_ + k < n ? points[3 * (whole_ + k) + 1] : 0;
      rest_[3 * k + 2] = whole_ + k < n ? points[3 * (whole_ + k) + 2] : 0;
    }
  }
  // Point i, a multiple of GROUP.
  TESSARN_MEMBER const double* at(size_t i) const { return i < whole_ ? points_ + 3 * i : rest_; }

 private:
  const double* points_;
  size_t whole_;
  double rest_[3 * GROUP];
};

// The sums for a number of exponents that is a compile-time constant.
template <size_t EXPONENTS>
struct plane_sums {
  static constexpr size_t rows = EXPONENTS + (EXPONENTS + 1) / 2;
  vec sum[rows][sum_vectors];

  TESSARN_MEMBER void load_from(const double* sums) {
    for (size_t v = 0; v < sum_vectors; ++v) {
      TESSARN_UNROLL_MORE
      for (size_t k = 1; k < rows; ++k) sum[k][v] = mixed(load(sums + k * partial_sums + v * width));
    }
  }
  TESSARN_MEMBER void store_to(double* sums) const {
    for (size_t v = 0; v < sum_vectors; ++v) {
      TESSARN_UNROLL_MORE
      for (size_t k = 1; k < rows; ++k) store(sums + k * partial_sums + v * width, in_order(sum[k][v]));
    }
  }
  // The power e of VECTORS vectors of points, which go to the sums' vectors from the first on.
  template <size_t VECTORS>
  TESSARN_MEMBER void add(size_t e, const vec* power, const vec* y, size_t first = 0) {
    for (size_t v = 0; v < VECTORS; ++v) {
      const size_t to = (first + v) % sum_vectors;
      if (e > 0) sum[e][to] += power[v];
      if (2 * e < EXPONENTS) sum[EXPONENTS + e][to] += e > 0 ? power[v] * y[v] : y[v];
    }
  }
};

template <size_t VECTORS>
TESSARN_INLINE void load_some_points(const double* points, vec* x, vec* y) {
  for (size_t v = 0; v < VECTORS; ++v) load_mixed_points(points + 3 * v * width, x[v], y[v]);
}

// Without chains nothing but the marker and what is not finite is in the way, which is found behind a block, and the
// block undone.
TESSARN_INLINE size_t add_line_points(const double* points, size_t n, double marker, double* sums) {
  constexpr size_t block = 128, at_once = few_registers ? 1 : sum_vectors;
  const filled_points<partial_sums> all(points, n);
  plane_sums<3> good;
  good.load_from(sums);
  size_t i = 0;
  while (i < n) {
    const size_t end = n - i < block ? n : i + block;
    plane_sums<3> next = good;
    mask bad = {};
    for (size_t first = 0; first < sum_vectors; first += at_once)
      for (size_t k = i; k < end; k += partial_sums) {
        vec x[at_once], y[at_once], square[at_once];
        load_some_points<at_once>(all.at(k) + 3 * first * width, x, y);
        for (size_t v = 0; v < at_once; ++v) {
          bad |= x[v] == broadcast(marker);
          square[v] = x[v] * x[v];
        }
        next.add<at_once>(0, x, y, first);
        next.add<at_once>(1, x, y, first);
        next.add<at_once>(2, square, y, first);
      }
    for (size_t v = 0; v < sum_vectors; ++v) bad |= not_finite(next.sum[2][v]);
    if (!none(bad)) break;
    good = next;
    i = end;
  }
  good.store_to(sums);
  return i;
}

// The powers of VECTORS vectors of points, and their ordinates.
template <size_t EXPONENTS, size_t VECTORS>
struct plane_powers {
  vec power[EXPONENTS][VECTORS], y[VECTORS];
};

// Keeps the powers of a chain.
template <size_t EXPONENTS, size_t VECTORS>
struct keep_powers {
  plane_powers<EXPONENTS, VECTORS>* to;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    for (size_t v = 0; v < VECTORS; ++v) to->power[e][v] = power[v];
  }
};

// The powers again where a quick chain is in doubt, from the first; power e of vector v is power[e * vectors + v].
static void make_certain(vec* power, size_t exponents, size_t vectors) {
  for (size_t v = 0; v < vectors; ++v) {
    double_double_chains<1> chain;
    const vec x = power[vectors + v];
    chain.run(&x, exponents, [=](size_t e, const vec* p) { power[e * vectors + v] = *p; });
  }
}

// Points, GROUP of them at once, on their way into sums.
template <size_t EXPONENTS, size_t GROUP>
struct points_to_add {
  static constexpr size_t group = GROUP, vectors = GROUP / width;
  using powers = plane_powers<EXPONENTS, vectors>;
  filled_points<GROUP> all;
  size_t n;
  abscissa_check<EXPONENTS> check;
  double* sums;

  void add_certain(size_t i) const {
    plane_sums<EXPONENTS> sum;
    sum.load_from(sums);
    powers these;
    load_some_points<vectors>(all.at(i), these.power[1], these.y);
    make_certain(these.power[0], EXPONENTS, vectors);
    for (size_t e = 0; e < EXPONENTS; ++e) sum.template add<vectors>(e, these.power[e], these.y);
    sum.store_to(sums);
  }
};

// With few exponents the sums stay in registers. The chains of the next points begin beside those of these, to hide the
// latency of their steps.
template <size_t EXPONENTS>
struct few_powers : points_to_add<EXPONENTS, partial_sums> {
  using base = points_to_add<EXPONENTS, partial_sums>;
  static constexpr size_t vectors = base::vectors;

  // From point i on; gives the point where it ends, and doubt where a chain is the reason.
  TESSARN_MEMBER size_t add(size_t i, mask& doubt) const {
    plane_sums<EXPONENTS> sum;
    sum.load_from(this->sums);
    half_exponent_chains<vectors, EXPONENTS> chain, next;
    vec x[vectors], y[vectors], next_y[vectors];
    load_some_points<vectors>(this->all.at(i), x, y);
    chain.begin(x, EXPONENTS);
    for (; i < this->n; i += base::group) {
      if (!this->check.passes(this->all.at(i))) break;
      load_some_points<vectors>(this->all.at(i + base::group < this->n ? i + base::group : i), x, next_y);
      next.begin(x, EXPONENTS);
      typename base::powers these;
      chain.finish(EXPONENTS, keep_powers<EXPONENTS, vectors>{&these});
      if (!none(chain.doubt)) {
        doubt = chain.doubt;
        break;
      }
      TESSARN_UNROLL
      for (size_t e = 0; e < EXPONENTS; ++e) sum.template add<vectors>(e, these.power[e], y);
      chain = next;
      for (size_t v = 0; v < vectors; ++v) y[v] = next_y[v];
    }
    sum.store_to(this->sums);
    return i;
  }
};

// The same with few registers, vector by vector.
template <size_t EXPONENTS>
struct few_powers_singly : points_to_add<EXPONENTS, partial_sums> {
  using base = points_to_add<EXPONENTS, partial_sums>;

  TESSARN_MEMBER size_t add(size_t i, mask& doubt) const {
    plane_sums<EXPONENTS> sum;
    sum.load_from(this->sums);
    for (; i < this->n; i += base::group) {
      const double* p = this->all.at(i);
      if (!this->check.passes(p)) break;
      plane_powers<EXPONENTS, 1> these[base::vectors];
      half_exponent_chains<1, EXPONENTS> chain;
      TESSARN_KEEP_LOOP
      for (size_t v = 0; v < base::vectors; ++v) {
        vec x;
        load_some_points<1>(p + 3 * v * width, &x, these[v].y);
        chain.run(&x, EXPONENTS, keep_powers<EXPONENTS, 1>{&these[v]});
      }
      if (!none(chain.doubt)) {
        doubt = chain.doubt;
        break;
      }
      for (size_t e = 0; e < EXPONENTS; ++e)
        for (size_t v = 0; v < base::vectors; ++v) sum.template add<1>(e, these[v].power[e], these[v].y, v);
    }
    sum.store_to(this->sums);
    return i;
  }
};

// Keeps the powers of some points, and adds those of the points before between the steps.
template <size_t EXPONENTS, size_t VECTORS>
struct keep_and_add {
  plane_powers<EXPONENTS, VECTORS>* to;
  const plane_powers<EXPONENTS, VECTORS>* before;
  plane_sums<EXPONENTS>* sum;
  TESSARN_MEMBER void operator()(size_t e, const vec* power) const {
    if (e > 0) keep_powers<EXPONENTS, VECTORS>{to}(e, power);
    sum->template add<VECTORS>(e, before->power[e], before->y);
  }
};

// With many exponents the sums stay in memory, and two groups of points take part at once.
template <size_t EXPONENTS>
struct many_powers : points_to_add<EXPONENTS, 2 * partial_sums> {
  using base = points_to_add<EXPONENTS, 2 * partial_sums>;
  static constexpr size_t vectors = base::vectors;

  TESSARN_MEMBER size_t add(size_t i, mask& doubt) const {
    plane_sums<EXPONENTS> sum;
    sum.load_from(this->sums);
    typename base::powers powers[2] = {};
    const auto* before = powers;  // zeros change no sum
    size_t turn = 1;
    for (; i < this->n; i += base::group) {
      const double* p = this->all.at(i);
      if (!this->check.passes(p) || !this->check.passes(p + 3 * partial_sums)) break;
      vec x[vectors];
      load_some_points<vectors>(p, x, powers[turn].y);
      half_exponent_chains<vectors, EXPONENTS> chain;
      chain.run(x, EXPONENTS, keep_and_add<EXPONENTS, vectors>{&powers[turn], &powers[1 - turn], &sum});
      if (!none(chain.doubt)) {
        doubt = chain.doubt;
        before = nullptr;
        break;
      }
      before = &powers[turn];
      turn = 1 - turn;
    }
    for (size_t e = 0; before && e < EXPONENTS; ++e) sum.template add<vectors>(e, before->power[e], before->y);
    sum.store_to(this->sums);
    return i;
  }
};

// Adds points until one comes whose powers a chain cannot form exactly enough.
template <class Points>
TESSARN_INLINE size_t add_points_by_chains(const double* points, size_t n, double marker, double* sums) {
  const Points p{{{points, n}, n, decltype(Points::check)(marker), sums}};
  for (size_t i = 0; i < n; i += Points::group) {
    mask doubt = {};
    i = p.add(i, doubt);
    if (i >= n) break;
    if (none(doubt)) return i;
    p.add_certain(i);
  }
  return n;
}

}  // namespace tessarn::detail::TESSARN_ISA
