#include "analysis/round_search.h"

namespace tessarn::analysis {

namespace {

// How near to the minimum a search goes. `near` and `floor`: it ends when its step would change the sum by less than
// near^2 of it plus floor^2 of the total weight. `level` and `level_floor`: below this it also ends when Newton steps
// do not become shorter any more, or do not make the sum smaller. `trusted`: a Newton step that changes the sum by less
// than this fraction is taken without a look at the sum, whose rounding would hide the change. `undamped`: only a
// Newton step ends the search.
struct limits {
  double near, floor, level, level_floor, trusted;
  bool undamped;
};
constexpr limits in_double{0x1p-40, 0x1p-48, 0x1p-20, 0x1p-40, 0x1p-30, false};
constexpr limits in_doubled{0x1p-66, 0x1p-92, 0x1p-40, 0x1p-60, 0x1p-50, true};

// Solves (H + damping diag N) x = g by L D L'; false when the matrix is not positive.
template <class T>
bool solve_damped(const round_sums<T>& s, std::size_t n, double damping, T* x) noexcept {
  T lower[most_entries];
  T pivots[most_unknowns];
  for (std::size_t r = 0; r < n; ++r) {
    T pivot = s.hessian[entry_at(r, r)] + T(damping) * s.normal[entry_at(r, r)];
    T sum = s.gradient[r];
    for (std::size_t c = 0; c < r; ++c) {
      T multiple = s.hessian[entry_at(r, c)];
      for (std::size_t k = 0; k < c; ++k) multiple -= lower[entry_at(r, k)] * lower[entry_at(c, k)] * pivots[k];
      lower[entry_at(r, c)] = multiple / pivots[c];
      pivot -= lower[entry_at(r, c)] * multiple;
      sum -= lower[entry_at(r, c)] * x[c];
    }
    if (!(leading(pivot) > 0)) return false;
    pivots[r] = pivot;
    x[r] = sum;
  }
  for (std::size_t r = n; r-- > 0;) {
    x[r] = x[r] / pivots[r];
    for (std::size_t k = r + 1; k < n; ++k) x[r] -= lower[entry_at(k, r)] * x[k];
  }
  return true;
}

// The decrease that a step promises, twice.
template <class T>
double promise(const round_sums<T>& s, std::size_t n, const T* x) noexcept {
  T sum = 0.0;
  for (std::size_t r = 0; r < n; ++r) sum += s.gradient[r] * x[r];
  return leading(sum);
}

// Newton's method with damping (J. More, 1978, with the second derivatives kept): a step is taken when it makes the sum
// smaller, with less damping next time, and repeated with more damping otherwise.
template <class T>
round_result<T> descend(const shape_data& data, const round_shape<T>& start, const limits& limit, double damping,
                        ulong most_steps) noexcept {
  round_result<T> result;
  result.shape = start;
  const std::size_t n = start.unknowns();
  const double weight = data.total_weight().high;
  tangents<T> t(start);
  round_sums<T> sums(data, start, t);
  const auto ended = [&]() -> round_result<T>& {
    std::copy_n(sums.normal, most_entries, result.normal);
    result.at = t;
    return result;
  };
  double last = std::numeric_limits<double>::infinity();  // the promise of the Newton step before
  while (result.steps < most_steps && damping < 0x1p60) {
    result.squares = leading(sums.squares);
    T x[most_unknowns];
    const bool positive = solve_damped(sums, n, damping, x);
    if (damping == 0) result.determined = positive;
    if (!positive) {
      damping = damping == 0 ? 0x1p-10 : damping * 8;
      ++result.steps;
      continue;
    }
    round_shape<T> next = result.shape;
    const bool moved = move(next, t, x);
    const double promised = promise(sums, n, x);
    const auto below = [&](double share, double floor) {
      return promised <= share * share * result.squares + floor * floor * weight;
    };
    const bool may_end = moved && (damping == 0 || !limit.undamped);
    if (may_end && (below(limit.near, limit.floor) || (promised > last / 4 && below(limit.level, limit.level_floor)))) {
      result.converged = true;
      result.shape = next;
      return ended();
    }
    ++result.steps;
    const tangents<T> next_tangents(next);
    const round_sums<T> next_sums(data, next, next_tangents);
    const bool trusted = damping == 0 && promised <= limit.trusted * result.squares;
    if (moved && (trusted || leading(next_sums.squares - sums.squares) < 0)) {
      last = damping == 0 ? promised : std::numeric_limits<double>::infinity();
      result.shape = next;
      t = next_tangents;
      sums = next_sums;
      damping = damping < 0x1p-16 ? 0 : damping / 16;
    } else if (may_end && below(limit.level, limit.level_floor)) {
      result.converged = true;
      return ended();
    } else {
      damping = damping == 0 ? 0x1p-10 : damping * 8;
    }
  }
  result.squares = leading(sums.squares);
  return ended();
}

}  // namespace

namespace {

detail::number_pair pair_of(double v) noexcept { return {v, 0}; }
using analysis::pair_of;

template <class T>
detail::round_numbers numbers_of(const round_shape<T>& m, const tangents<T>& t) noexcept {
  detail::round_numbers n{};
  n.dimension = m.dimension;
  n.has_axis = m.has_axis;
  n.left_out = t.left_out;
  for (std::size_t k = 0; k < m.parts(); ++k) n.v[k] = pair_of(m.v[k]);
  for (std::size_t r = 0; m.has_axis && r < 3; ++r)
    for (std::size_t k = 0; k < 3; ++k) n.axes[r][k] = pair_of(m.axes[r][k]);
  for (std::size_t i = 0; i <= m.dimension; ++i) {
    n.part[i] = t.part[i];
    n.ratio[i] = pair_of(t.ratio[i]);
    n.curvature[i] = pair_of(t.curvature[i]);
    for (std::size_t j = 0; j <= m.dimension; ++j) n.bend[i][j] = pair_of(t.bend[i][j]);
  }
  return n;
}

constexpr std::size_t most_sums = 1 + most_unknowns + 2 * most_entries;

double partial_sum(const double* p, double) noexcept { return analysis::partial_sum(p); }
doubled partial_sum(const double* p, doubled) noexcept { return whole_sum(p); }
void add_sums(const shape_data& data, const detail::round_numbers& m, double* partial, double) noexcept {
  detail::shape_kernels_in_use().round_sums(data.centred(), m, partial);
}
void add_sums(const shape_data& data, const detail::round_numbers& m, double* partial, doubled) noexcept {
  detail::shape_kernels_in_use().round_sums_doubled(data.centred(), m, partial);
}

}  // namespace

detail::round_numbers kernel_numbers(const round_shape<double>& m) noexcept {
  detail::round_numbers n{};
  n.dimension = m.dimension;
  n.has_axis = m.has_axis;
  for (std::size_t k = 0; k < m.parts(); ++k) n.v[k] = pair_of(m.v[k]);
  for (std::size_t r = 0; m.has_axis && r < 3; ++r)
    for (std::size_t k = 0; k < 3; ++k) n.axes[r][k] = pair_of(m.axes[r][k]);
  return n;
}
detail::round_numbers kernel_numbers(const round_shape<doubled>& m, const tangents<doubled>& t) noexcept {
  return numbers_of(m, t);
}

template <class T>
round_sums<T>::round_sums(const shape_data& data, const round_shape<T>& m, const tangents<T>& t) noexcept {
  const std::size_t n = m.unknowns(), entries = n * (n + 1) / 2;
  constexpr std::size_t size = detail::shape_partial_sums * (sizeof(T) / sizeof(double));
  double partial[most_sums * size] = {};
  add_sums(data, numbers_of(m, t), partial, T());
  const double* next = partial;
  const auto take = [&next]() noexcept {
    const T sum = partial_sum(next, T());
    next += size;
    return sum;
  };
  squares = take();
  for (std::size_t k = 0; k < n; ++k) gradient[k] = take();
  for (std::size_t k = 0; k < entries; ++k) normal[k] = take();
  for (std::size_t k = 0; k < entries; ++k) hessian[k] = take();
}

template struct round_sums<double>;
template struct round_sums<doubled>;

round_result<double> search(const shape_data& data, const round_shape<double>& start, ulong most_steps) noexcept {
  return descend(data, start, in_double, 0x1p-7, most_steps);
}

round_result<doubled> refine(const shape_data& data, const round_result<double>& found, ulong most_steps) noexcept {
  round_shape<doubled> start;
  start.dimension = found.shape.dimension;
  start.has_axis = found.shape.has_axis;
  for (std::size_t k = 0; k < start.parts(); ++k) start.v[k] = found.shape.v[k];
  if (start.has_axis) {
    for (std::size_t i = 0; i < 3; ++i)
      for (std::size_t k = 0; k < 3; ++k) start.axes[i][k] = found.shape.axes[i][k];
    make_orthogonal(start.axes);
  }
  normalise(start);  // the shape is that of a search, whose condition holds to the digits of a double
  round_result<doubled> r = descend(data, start, in_doubled, 0, most_steps - found.steps);
  r.steps += found.steps;
  return r;
}

double squares_of(const shape_data& data, const round_shape<double>& m) noexcept {
  double partial[detail::shape_partial_sums] = {};
  detail::shape_kernels_in_use().round_squares(data.centred(), kernel_numbers(m), partial);
  return partial_sum(partial);
}

}  // namespace tessarn::analysis
