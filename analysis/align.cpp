// The best motion between two sets of points.
#include "tessarn/align.h"

#include <algorithm>
#include <limits>

#include "analysis/doubled_matrix.h"
#include "analysis/eigen3.h"
#include "analysis/point_set.h"
#include "analysis/rotation.h"

namespace tessarn {

using namespace analysis;

namespace {

constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

// The pairs of the caller, and which of them count.
template <int D>
class pairs {
 public:
  pairs(const point_columns<D>& a, const point_columns<D>& b, const align_options& options)
      : a_(a), b_(b), weights_(options.weights), leave_out_(options.leave_out_not_finite) {
    const bool weighted = !weights_.empty();
    if (!a.sizes_agree() || !b.sizes_agree() || a.size() != b.size() || (weighted && weights_.size() != a.size()))
      state_ = status::sizes_differ;
    else if (a.size() == 0)
      state_ = status::no_points;
    else if (!take_all())
      look();
    if (state_ != status::ok) return;
    if (used_ == 0)
      state_ = weighted && !leave_out_ ? status::bad_weight : status::no_points;
    else if (used_ < D)
      state_ = status::too_few_points;
    else if (!all_)
      take_some();
  }

  status state() const noexcept { return state_; }
  std::size_t size() const noexcept { return a_.size(); }
  std::size_t used() const noexcept { return used_; }
  std::size_t first() const noexcept { return first_; }
  bool finite(std::size_t i) const noexcept { return a_.finite(i) && b_.finite(i) && is_finite(weight_of(i)); }
  bool counts(std::size_t i) const noexcept { return weight_of(i) > 0 && finite(i); }
  const point_columns<D>& a() const noexcept { return a_; }
  const point_columns<D>& b() const noexcept { return b_; }
  // The pairs that count: their coordinates, their weights in units of the power of two of the largest one, or null
  // where all are 1, and whether these are all pairs; if not, the number of each.
  point_arrays& arrays_a() noexcept { return arrays_a_; }
  point_arrays& arrays_b() noexcept { return arrays_b_; }
  const double* scaled_weights() const noexcept { return weights_.empty() ? nullptr : scaled_weights_.data(); }
  bool all() const noexcept { return all_; }
  std::size_t number(std::size_t i) const noexcept { return all_ ? i : numbers_[i]; }

 private:
  double weight_of(std::size_t i) const noexcept { return weights_.empty() ? 1 : static_cast<double>(weights_[i]); }

  // Without weights, and with all pairs finite, there is nothing to look for.
  bool take_all() {
    if (!weights_.empty()) return false;
    arrays_a_.take(a_.c, D, size());
    arrays_b_.take(b_.c, D, size());
    all_ = arrays_a_.finite() && arrays_b_.finite();
    used_ = all_ ? size() : 0;
    return all_;
  }

  void take_some() {
    numbers_ = numbers<std::size_t>(used_);
    double* const w = weights_.empty() ? nullptr : scaled_weights_.take(whole_vectors(used_));
    std::size_t to = 0;
    for (std::size_t i = 0; i < size(); ++i) {
      if (!counts(i)) continue;
      if (w) w[to] = scaled(weight_of(i), -weight_exponent_);
      numbers_[to++] = i;
    }
    for (; w && to < whole_vectors(used_); ++to) w[to] = 0;
    arrays_a_.take(a_.c, D, used_, numbers_.data());
    arrays_b_.take(b_.c, D, used_, numbers_.data());
  }

  // Counts the pairs that are finite and have a weight.
  void look() noexcept {
    double largest = 0;
    for (std::size_t i = 0; i < size(); ++i) {
      if (!finite(i)) {
        if (leave_out_) continue;
        state_ = status::not_finite;
        return;
      }
      const double w = weight_of(i);
      if (w < 0) {
        state_ = status::bad_weight;
        return;
      }
      if (w == 0) continue;
      if (used_++ == 0) first_ = i;
      largest = w > largest ? w : largest;
    }
    weight_exponent_ = largest > 0 ? exponent_of(largest) : 0;
  }

  point_columns<D> a_, b_;
  column_view weights_;
  bool leave_out_;
  status state_ = status::ok;
  std::size_t used_ = 0, first_ = 0;
  int weight_exponent_ = 0;
  point_arrays arrays_a_, arrays_b_;
  scratch scaled_weights_;
  bool all_ = false;
  numbers<std::size_t> numbers_{0};
};

// The weights from number i on, if there are any.
const double* from(const double* weights, std::size_t i) noexcept { return weights ? weights + i : nullptr; }

// One of the two sets: its local coordinates, their weighted mean and their scatter about it. The kernels take them
// about a double near the mean, which is `rest` farther on.
template <int D>
struct centred_set {
  point_arrays& arrays;
  local_points<D> points;
  detail::local_columns columns{};
  doubled mean[D], rest[D], scatter[D][D];

  centred_set(const point_columns<D>& all, std::size_t first, point_arrays& counted) noexcept
      : arrays(counted), points(all, first, counted) {}

  // The weighted mean; gives the sum of the squared weights.
  doubled find_mean(const double* weights) noexcept {
    for (doubled& v : mean) v = 0.0;
    columns = points.kernel_columns(arrays, mean, rest);
    kernel_sums<D + 1> sums;
    for_each_part(arrays, [&](std::size_t i, std::size_t count) {
      detail::shape_kernels_in_use().add_means(columns, D, from(weights, i), count, sums.partial);
    });
    const doubled total = weights ? sums.sum(D) : doubled(static_cast<double>(arrays.size()));
    for (int k = 0; k < D; ++k) mean[k] = sums.sum(static_cast<std::size_t>(k)) / total;
    columns = points.kernel_columns(arrays, mean, rest);
    return total;
  }
  // The scatter, in doubled precision.
  void find_scatter(const double* weights, doubled total) noexcept {
    kernel_sums<D*(D + 1) / 2> sums;
    for_each_part(arrays, [&](std::size_t i, std::size_t count) {
      detail::shape_kernels_in_use().add_products(columns, D, from(weights, i), count, sums.partial);
    });
    std::size_t next = 0;
    for (int r = 0; r < D; ++r)
      for (int c = r; c < D; ++c) scatter[r][c] = sums.sum(next++) - total * rest[r] * rest[c];
  }
  doubled centred(int k, std::size_t i) const noexcept { return points.local_of(k, i) - mean[k]; }
  doubled trace() const noexcept {
    doubled sum = scatter[0][0];
    for (int k = 1; k < D; ++k) sum += scatter[k][k];
    return sum;
  }
};

// The sums over all pairs, and what follows from them. Local coordinates are below 4 in magnitude.
template <int D>
class motion {
 public:
  motion(pairs<D>& p, const align_options& options) noexcept
      : pairs_(p), a_(p.a(), p.first(), p.arrays_a()), b_(p.b(), p.first(), p.arrays_b()), options_(options) {
    if (!choose_units()) {
      state_ = status::too_few_distinct;
      return;
    }
    centre();
    multiply();
    rotate();
    choose_scale();
  }

  status state() const noexcept { return state_; }
  const best_rotation<D>& rotation() const noexcept { return rotation_; }
  double determination() const noexcept {
    return state_ == status::too_few_distinct
               ? 0
               : (rotation_.gap / (square_root(a_.trace()) * square_root(b_.trace()))).high;
  }
  double entry(int row, int column) const noexcept {
    const doubled v = rotation_.entries[row][column];
    return magnitude(v) < 0x1p-80 ? cleaned(v) : v.high;  // R stays orthogonal
  }
  // The scale in the units of the caller, with its rounding to them.
  double scale() const noexcept {
    return options_.scale ? scaled(scale_.high, b_.points.exponent() - a_.points.exponent()) : 1;
  }
  // b - motion(a) of a pair in units of 2^exponent(), coordinate by coordinate.
  void difference(std::size_t i, doubled (&d)[D]) const noexcept {
    doubled a[D];
    for (int k = 0; k < D; ++k) a[k] = scale_ * a_.centred(k, i);
    for (int r = 0; r < D; ++r) {
      d[r] = b_.centred(r, i) * doubled(b_unit_) - turned(r, a);
      if (magnitude(d[r]) < noise_) d[r] = 0.0;
    }
  }
  int exponent() const noexcept { return exponent_; }
  // All differences of the pairs that count, in units of the caller, and their lengths.
  detail::residual_range differences(double* differences, double* lengths, doubled& mean_square) noexcept;
  bool place(double (&centre)[D], double (&image)[D], double (&translation)[D]) const noexcept;

 private:
  double cleaned(doubled v) const noexcept { return magnitude(v) < noise_ ? 0 : v.high; }
  doubled turned(int row, const doubled (&a)[D]) const noexcept {
    doubled sum = rotation_.entries[row][0] * a[0];
    for (int k = 1; k < D; ++k) sum += rotation_.entries[row][k] * a[k];
    return sum;
  }

  bool choose_units() noexcept {
    const bool wide_a = a_.points.choose_unit(), wide_b = b_.points.choose_unit();
    return wide_a && wide_b;
  }

  void centre() noexcept {
    weights_ = a_.find_mean(pairs_.scaled_weights());
    b_.find_mean(pairs_.scaled_weights());
  }

  // The sums are about the doubles near the means, and are moved to the means. The scatters tell how long and how thick
  // the sets are: the squares are needed as they are, and of the others double precision does except near a line.
  void multiply() noexcept {
    kernel_sums<D * D> sums;
    kernel_sums<D*(D + 1)> lengths;
    const double* weights = pairs_.scaled_weights();
    for_each_part(a_.arrays, [&](std::size_t i, std::size_t count) {
      b_.arrays.load(i);
      detail::shape_kernels_in_use().add_pair_products(a_.columns, b_.columns, D, from(weights, i), count, sums.partial,
                                                       lengths.partial);
    });
    std::size_t next = 0;
    for (centred_set<D>* s : {&a_, &b_})
      for (int r = 0; r < D; ++r)
        for (int c = r; c < D; ++c) s->scatter[r][c] = lengths.sum(next++) - weights_ * s->rest[r] * s->rest[c];
    for (int r = 0; r < D; ++r)
      for (int c = 0; c < D; ++c)
        h_[r][c] = sums.sum(static_cast<std::size_t>(D * r + c)) - weights_ * b_.rest[r] * a_.rest[c];
  }

  void rotate() noexcept;
  void choose_scale() noexcept;

  const pairs<D>& pairs_;
  centred_set<D> a_, b_;
  const align_options& options_;
  status state_ = status::ok;
  doubled weights_, h_[D][D], scale_ = 1.0;  // the scale is that of local coordinates
  double b_unit_ = 1;
  int exponent_ = 0;
  // About the error of a difference in the units of the set. Smaller differences become 0, so that they are 0 where the
  // exact ones are, and so do entries of the rotation that are smaller still.
  double noise_ = 0;
  best_rotation<D> rotation_;
};

// The mean square of the distances from the best line, and whether these are no larger than what the rounding of the
// coordinates explains, or the rounding of the sums.
struct thickness {
  double mean_square = 0;
  bool on_a_line = false;
};

thickness thickness_of(centred_set<3>& s, const double* scaled_weights, doubled weights, double sums) noexcept {
  thickness t;
  double rounded[3][3];
  for (int r = 0; r < 3; ++r)
    for (int c = r; c < 3; ++c) rounded[r][c] = s.scatter[r][c].high;
  const eigen_system<3, double> near = eigen_of_symmetric(rounded);
  double across = near.values[0] + near.values[1];
  if (across > 0x1p-20 * near.values[2]) {  // far from a line: the rounding of the scatter is a part of 2^-25 of it
    t.mean_square = across / weights.high;
    return t;
  }
  s.find_scatter(scaled_weights, weights);
  const eigen_system<3> e = eigen_of_symmetric(s.scatter);
  across = ((e.values[0] + e.values[1]) / weights).high;
  t.mean_square = across > 0 ? across : 0;
  t.on_a_line = across <= 0x1p-104 * s.points.squared_magnitude() + sums * (s.trace() / weights).high;
  return t;
}

// In the plane it is the whole set that is turned.
thickness thickness_of(centred_set<2>& s, const double*, doubled weights, double) noexcept {
  return {(s.trace() / weights).high, false};
}

// Rounding of the coordinates, by at most u = 2^-53 of |A| and |B|, changes a singular value by at most the sum of
// w^2 u (|B| ta + |A| tb), where ta and tb are the distances of the points from the line that stays; twice that for the
// gap, and twice again to be safe. The sums are off by less than 2^-84 + n 2^-100 of |a| |b|.
template <int D>
void motion<D>::rotate() noexcept {
  const double n = static_cast<double>(pairs_.used()), sums = 0x1p-90 + n * 0x1p-100;
  const double* w = pairs_.scaled_weights();
  const thickness ta = thickness_of(a_, w, weights_, sums), tb = thickness_of(b_, w, weights_, sums);
  const double rounding = std::sqrt(b_.points.squared_magnitude()) * std::sqrt(ta.mean_square) +
                          std::sqrt(a_.points.squared_magnitude()) * std::sqrt(tb.mean_square);
  const double product = std::sqrt(a_.trace().high) * std::sqrt(b_.trace().high);
  const double tolerance = 0x1p-51 * weights_.high * rounding + (0x1p-84 + n * 0x1p-100) * product;
  rotation_ = rotation_of(h_, tolerance, options_.reflections);
  if (ta.on_a_line || tb.on_a_line)
    state_ = status::collinear;
  else if (!(rotation_.gap.high > tolerance))
    state_ = status::not_determined;
  // The sums are off by 2^-100 of |a| |b| for each term. What that turns about the line of the points moves them by the
  // part of their extent that is across the line.
  const double part = std::sqrt(ta.mean_square / (a_.trace() / weights_).high);
  noise_ = (n + 64) * 0x1p-100;
  if (state_ == status::ok) noise_ *= product * (part / rotation_.gap.high + 1 / rotation_.wide_gap.high);
}

// The scale of S. Umeyama, 1991, equation 42. Without it both sets get the larger of their units.
template <int D>
void motion<D>::choose_scale() noexcept {
  const int ea = a_.points.exponent(), eb = b_.points.exponent();
  exponent_ = options_.scale || eb > ea ? eb : ea;
  if (options_.scale) {
    scale_ = rotation_.product / a_.trace();
    const double s = scale();
    if (!is_finite(s) || (scale_.high > 0 && s < 0x1p-1022)) state_ = status::out_of_range;
    return;
  }
  scale_ = scaled(1.0, ea - exponent_);
  b_unit_ = scaled(1.0, eb - exponent_);
}

// The centroid of a as doubles, its image, and the translation that goes with them: each sum is formed in a unit in
// which it cannot overflow. False when a number leaves the range of a double.
template <int D>
bool motion<D>::place(double (&centre)[D], double (&image)[D], double (&translation)[D]) const noexcept {
  doubled off[D], far[D];  // of the rounded centroid: from the centroid, and from the origin
  int largest = -1074;     // the exponent of the largest coordinate of the centre
  for (int k = 0; k < D; ++k) {
    centre[k] = scaled(a_.points.global(k, a_.mean[k]).high, a_.points.shift(k));
    off[k] = scale_ * (a_.points.local(k, centre[k]) - a_.mean[k]);
    if (centre[k] != 0 && exponent_of(centre[k]) > largest) largest = exponent_of(centre[k]);
  }
  // The scale in the units of the caller is `scale` times 2^unit.
  const doubled scale = options_.scale ? scale_ : doubled(1.0);
  const int unit = options_.scale ? b_.points.exponent() - a_.points.exponent() : 0;
  for (int k = 0; k < D; ++k) far[k] = scale * doubled(scaled(centre[k], -largest));
  const int far_exponent = largest + unit;
  bool finite = true;
  for (int r = 0; r < D; ++r) {
    const int shift = b_.points.shift(r);
    const doubled at = b_.points.global(r, b_.mean[r]) + scaled(turned(r, off), exponent_ - shift);
    image[r] = scaled(at.high, shift);
    const int at_exponent = at.high == 0 ? far_exponent : exponent_of(at.high) + shift;
    const int common = (far_exponent > at_exponent ? far_exponent : at_exponent) + 4;
    const doubled t = scaled(at, shift - common) - scaled(turned(r, far), far_exponent - common);
    translation[r] = scaled(cleaned(t * doubled(16.0)), common - 4);
    finite = finite && is_finite(image[r]) && is_finite(translation[r]);
  }
  return finite;
}

void set_point(vector3d& p, const double (&v)[3]) noexcept {
  p.x = v[0];
  p.y = v[1];
  p.z = v[2];
}
void set_point(vector& p, const double (&v)[2]) noexcept {
  p.x = v[0];
  p.y = v[1];
}

// The length of a difference, without overflow or underflow of the squares.
template <int D>
double length(const doubled (&d)[D]) noexcept {
  double largest = 0;
  for (int k = 0; k < D; ++k) largest = magnitude(d[k]) > largest ? magnitude(d[k]) : largest;
  if (largest == 0) return 0;
  const int e = exponent_of(largest);
  doubled sum = 0.0;
  for (int k = 0; k < D; ++k) {
    const doubled v = scaled(d[k], -e);
    sum += v * v;
  }
  return scaled(square_root(sum).high, e);
}

template <int D>
detail::residual_range motion<D>::differences(double* differences, double* lengths, doubled& mean_square) noexcept {
  detail::number_pair matrix[D * D], offset[D];
  for (int r = 0; r < D; ++r) {
    doubled sum = doubled(b_unit_) * b_.rest[r];
    for (int c = 0; c < D; ++c) {
      const doubled entry = rotation_.entries[r][c] * scale_;
      matrix[D * r + c] = pair_of(entry);
      sum -= entry * a_.rest[c];
    }
    offset[r] = pair_of(sum);
  }
  kernel_sums<1> squares;
  detail::residual_range range{};
  for_each_part(a_.arrays, [&](std::size_t i, std::size_t count) {
    b_.arrays.load(i);
    const detail::residual_output out{lengths + i, scale_of(exponent_), noise_, from(pairs_.scaled_weights(), i)};
    include(range,
            detail::shape_kernels_in_use().motion_residuals(a_.columns, b_.columns, D, b_unit_, matrix, offset, count,
                                                            out, differences + D * i, squares.partial),
            i);
  });
  mean_square = squares.sum(0) / weights_;
  return range;
}

// Differences and distances of all pairs, and their summary; false when one is too large for a real.
template <int D, class Alignment>
bool judge(const pairs<D>& p, motion<D>& m, Alignment& r) {
  r.differences = mat<long double>(std::size_t{D}, p.size());
  r.distances = mat<long double>(std::size_t{1}, p.size());
  double* const differences = detail::as_doubles(r.differences.getData());
  double* const distances = detail::as_doubles(r.distances.getData());
  doubled mean_square;
  detail::residual_range range;
  if (p.all()) {
    range = m.differences(differences, distances, mean_square);
  } else {
    numbers<double> some(detail::checked_product(std::size_t{D}, p.used())), lengths(p.used());
    range = m.differences(some.data(), lengths.data(), mean_square);
    // The others: those with a weight of 0, and those that are not finite.
    for (std::size_t i = 0, next = 0; i < p.size(); ++i) {
      if (p.counts(i)) {
        std::copy_n(some.data() + D * next, D, differences + D * i);
        distances[i] = lengths[next++];
        continue;
      }
      doubled d[D];
      const bool finite = p.finite(i);
      if (finite) m.difference(i, d);
      for (int k = 0; k < D; ++k)
        differences[D * i + static_cast<std::size_t>(k)] = finite ? scaled(d[k].high, m.exponent()) : no_number;
      distances[i] = finite ? scaled(length(d), m.exponent()) : no_number;
    }
  }
  r.largest_at = static_cast<ulong>(p.number(range.largest_at));
  r.largest_residual = scaled(range.largest, m.exponent());
  r.root_mean_square = scaled(square_root(mean_square).high, m.exponent());
  return is_finite(r.largest_residual) && is_finite(r.root_mean_square);
}

template <int D, class Alignment>
Alignment find(const point_columns<D>& a, const point_columns<D>& b, const align_options& options) {
  Alignment r;
  pairs<D> p(a, b, options);
  r.state = p.state();
  r.points_used = static_cast<ulong>(p.used());
  r.points_left_out = static_cast<ulong>(p.state() == status::sizes_differ ? 0 : p.size() - p.used());
  if (r.state != status::ok) return r;
  motion<D> m(p, options);
  r.state = m.state();
  if (r.state == status::too_few_distinct || r.state == status::out_of_range) return r;
  double centre[D], image[D], translation[D];
  const bool placed = m.place(centre, image, translation);
  if (!placed || !judge(p, m, r)) {
    Alignment none;
    none.state = status::out_of_range;
    none.points_used = r.points_used;
    none.points_left_out = r.points_left_out;
    return none;
  }
  r.rotation = mat<long double>(D, D);
  for (int row = 0; row < D; ++row)
    for (int c = 0; c < D; ++c) r.rotation.getData()[row * D + c] = m.entry(row, c);
  r.scale = m.scale();
  r.reflected = m.rotation().reflected;
  r.determination = m.determination() > 0 ? m.determination() : 0;
  set_point(r.centre, centre);
  set_point(r.image, image);
  set_point(r.translation, translation);
  return r;
}

}  // namespace

space_alignment align(space_points a, space_points b, const align_options& options) {
  return find<3, space_alignment>(columns_of(a), columns_of(b), options);
}

plane_alignment align(plane_points a, plane_points b, const align_options& options) {
  return find<2, plane_alignment>(columns_of(a), columns_of(b), options);
}

vector3d space_alignment::map(const vector3d& p) const {
  const real d[] = {p.x - centre.x, p.y - centre.y, p.z - centre.z};
  real v[] = {0, 0, 0};
  if (rotation.getHeight() == 3)
    for (int r = 0; r < 3; ++r) {
      const real* row = rotation.getData() + 3 * r;
      v[r] = scale * ((row[0] * d[0] + row[1] * d[1]) + row[2] * d[2]);
    }
  return {image.x + v[0], image.y + v[1], image.z + v[2]};
}

vector plane_alignment::map(const vector& p) const {
  const real d[] = {p.x - centre.x, p.y - centre.y};
  real v[] = {0, 0};
  if (rotation.getHeight() == 2)
    for (int r = 0; r < 2; ++r)
      v[r] = scale * (rotation.getData()[2 * r] * d[0] + rotation.getData()[2 * r + 1] * d[1]);
  return {image.x + v[0], image.y + v[1]};
}

}  // namespace tessarn
