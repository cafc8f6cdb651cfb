// The least-squares plane and the minimum zone.
#include "tessarn/flat.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "analysis/doubled_matrix.h"
#include "analysis/eigen3.h"
#include "analysis/outermost.h"
#include "analysis/point_set.h"
#include "analysis/rounding_mode.h"
#include "analysis/width.h"

namespace tessarn {

using namespace analysis;

namespace {

constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

// A plane by a normal of length 1 and a point in local coordinates.
struct local_plane {
  doubled normal[3], point[3];
};

doubled dot(const doubled (&a)[3], const doubled (&b)[3]) noexcept { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// Turns the normal so that its largest component is positive; whether it was turned.
bool orient(doubled (&normal)[3]) noexcept {
  int largest = 0;
  for (int k = 1; k < 3; ++k)
    if (magnitude(normal[k]) > magnitude(normal[largest])) largest = k;
  if (normal[largest].high > 0) return false;
  for (doubled& v : normal) v = -v;
  return true;
}

class flat_points {
 public:
  flat_points(const space_points& points, const flatness_options& options) : columns_(columns_of(points)) {
    if (!columns_.sizes_agree())
      state_ = status::sizes_differ;
    else if (size() == 0)
      state_ = status::no_points;
    else
      take(options.leave_out_not_finite);
    if (state_ == status::ok) measure();
  }

  status state() const noexcept { return state_; }
  std::size_t size() const noexcept { return columns_.size(); }
  std::size_t used() const noexcept { return used_; }
  bool counts(std::size_t i) const noexcept { return columns_.finite(i); }

  status find_least_squares(local_plane& p, double& determination, double& noise) noexcept;
  void fill(const local_plane& p, double noise, reference_plane& r);
  status find_zone(flatness_result& r);

 private:
  void take(bool leave_out) {
    arrays_.take(columns_.c, 3, size());
    all_ = arrays_.finite();
    used_ = all_ ? size() : 0;
    if (!all_) look(leave_out);
    if (state_ != status::ok) return;
    if (used_ == 0)
      state_ = status::no_points;
    else if (used_ < 3)
      state_ = status::too_few_points;
    if (state_ != status::ok || all_) return;
    numbers_ = numbers<std::size_t>(used_);
    std::size_t to = 0;
    for (std::size_t i = 0; i < size(); ++i)
      if (counts(i)) numbers_[to++] = i;
    arrays_.take(columns_.c, 3, used_, numbers_.data());
  }
  void look(bool leave_out) noexcept {
    for (std::size_t i = 0; i < size(); ++i) {
      if (counts(i)) {
        if (used_++ == 0) first_ = i;
      } else if (!leave_out) {
        state_ = status::not_finite;
        return;
      }
    }
  }

  // Units and the centroid.
  void measure() noexcept {
    local_ = local_points<3>(columns_, first_, arrays_);
    if (!local_.choose_unit()) {
      state_ = status::too_few_distinct;
      return;
    }
    for (doubled& v : mean_) v = 0.0;
    kernel_columns_ = local_.kernel_columns(arrays_, mean_, rest_);
    kernel_sums<4> sums;
    for_each_part(arrays_, [&](std::size_t, std::size_t count) {
      detail::shape_kernels_in_use().add_means(kernel_columns_, 3, nullptr, count, sums.partial);
    });
    for (std::size_t k = 0; k < 3; ++k) mean_[k] = sums.sum(k) / doubled(static_cast<double>(used_));
    kernel_columns_ = local_.kernel_columns(arrays_, mean_, rest_);
  }

  // The number that the caller has given the point.
  std::size_t number(std::size_t i) const noexcept { return all_ ? i : numbers_[i]; }
  doubled residual(const local_plane& p, std::size_t i) const noexcept {
    doubled d[3];
    for (int k = 0; k < 3; ++k) d[k] = local_.local_of(k, i) - p.point[k];
    return dot(p.normal, d);
  }
  int lattice_exponent() const noexcept;
  detail::local_columns lattice_columns() const noexcept;
  void place(const local_plane& p, double noise, reference_plane& r) const noexcept;
  void make_lattice(std::vector<lattice_point>& places, std::vector<std::size_t>& owners);
  status store_zone(const width_of_body& w, const std::vector<std::size_t>& owners, flatness_result& r);
  status store_plane(const std::vector<lattice_point>& places, const hull_facet& f,
                     const std::vector<std::size_t>& owners, flatness_result& r);

  point_columns<3> columns_;
  local_points<3> local_;
  status state_ = status::ok;
  std::size_t used_ = 0, first_ = 0;
  point_arrays arrays_;              // the points that count
  bool all_ = false;                 // which are all points
  numbers<std::size_t> numbers_{0};  // or those with these numbers
  detail::local_columns kernel_columns_{};
  eigen_system<3> axes_;       // of the scatter
  doubled mean_[3], rest_[3];  // the second relative to the centre of the kernels' columns
};

// The rounding of the coordinates, by at most 2^-53 of their sizes |A|, moves an entry of the scatter matrix in the
// direction of the second value s by at most 2^-52 |A| sqrt(n s); four times that is taken for no difference.
status flat_points::find_least_squares(local_plane& p, double& determination, double& noise) noexcept {
  doubled scatter[3][3];
  kernel_sums<6> sums;
  for_each_part(arrays_, [&](std::size_t, std::size_t count) {
    detail::shape_kernels_in_use().add_products(kernel_columns_, 3, nullptr, count, sums.partial);
  });
  std::size_t next = 0;
  for (int r = 0; r < 3; ++r)
    for (int c = r; c < 3; ++c)
      scatter[r][c] = sums.sum(next++) - doubled(static_cast<double>(used_)) * rest_[r] * rest_[c];
  const eigen_system<3>& e = axes_ = eigen_of_symmetric(scatter);
  for (int k = 0; k < 3; ++k) {
    p.normal[k] = e.vectors[0][k];
    p.point[k] = mean_[k];
  }
  orient(p.normal);
  const double n = static_cast<double>(used_), trace = (scatter[0][0] + scatter[1][1] + scatter[2][2]).high;
  const double across = (e.values[0] + e.values[1]).high / n, gap = (e.values[1] - e.values[0]).high;
  determination = gap > 0 ? gap / trace : 0;
  noise = (n + 64) * 0x1p-100;
  const double squared = local_.squared_magnitude();
  if (across <= 0x1p-104 * squared + (0x1p-90 + n * 0x1p-100) * trace / n) return status::collinear;
  const double second = e.values[1].high > 0 ? e.values[1].high : 0;
  const double tolerance = 0x1p-50 * std::sqrt(squared) * std::sqrt(n * second) + (0x1p-84 + n * 0x1p-100) * trace;
  if (!(gap > tolerance)) return status::not_determined;
  // The scatter is off by 2^-100 of the trace for each point; what turns the normal towards the second direction moves
  // residuals by the extent in this direction.
  noise *= 1 + std::sqrt(second / trace) / determination;
  return status::ok;
}

// The normal, the point and the offset in the units of the caller. Numbers below the noise become 0.
void flat_points::place(const local_plane& p, double noise, reference_plane& r) const noexcept {
  real* const normal[] = {&r.normal.x, &r.normal.y, &r.normal.z};
  real* const point[] = {&r.point.x, &r.point.y, &r.point.z};
  doubled off[3];
  int largest = local_.exponent();
  for (int k = 0; k < 3; ++k) {
    *normal[k] = magnitude(p.normal[k]) < std::min(noise, 0x1p-80) ? 0 : p.normal[k].high;
    const double v = scaled(local_.global(k, p.point[k]).high, local_.shift(k));
    *point[k] = v;
    off[k] = p.point[k] - local_.local(k, v);
    if (v != 0) largest = std::max(largest, exponent_of(v));
  }
  doubled offset = scaled(dot(p.normal, off), local_.exponent() - largest);
  for (int k = 0; k < 3; ++k) offset += p.normal[k] * doubled(scaled(static_cast<double>(*point[k]), -largest));
  r.offset = magnitude(offset) < noise ? 0 : scaled(offset.high, largest);
}

// Residuals and their summary.
void flat_points::fill(const local_plane& p, double noise, reference_plane& r) {
  place(p, noise, r);
  r.residuals = mat<long double>(std::size_t{1}, size());
  double* const residuals = detail::as_doubles(r.residuals.getData());
  numbers<double> some(all_ ? 0 : used_);
  detail::number_pair normal[3];
  doubled offset = 0.0;
  for (int k = 0; k < 3; ++k) {
    normal[k] = pair_of(p.normal[k]);
    offset += p.normal[k] * (p.point[k] - mean_[k] + rest_[k]);
  }
  kernel_sums<1> sums;
  detail::residual_range range{};
  for_each_part(arrays_, [&](std::size_t i, std::size_t count) {
    const detail::residual_output out{(all_ ? residuals : some.data()) + i, scale_of(local_.exponent()), noise,
                                      nullptr};
    include(range,
            detail::shape_kernels_in_use().plane_residuals(kernel_columns_, normal, pair_of(offset), count, out,
                                                           sums.partial),
            i);
  });
  if (!all_) {
    for (std::size_t i = 0, next = 0; i < size(); ++i) residuals[i] = counts(i) ? some[next++] : no_number;
  }
  r.highest = static_cast<ulong>(number(range.highest_at));
  r.lowest = static_cast<ulong>(number(range.lowest_at));
  const doubled square = sums.sum(0) / doubled(static_cast<double>(used_));
  r.root_mean_square = scaled(square_root(square).high, local_.exponent());
  const doubled highest = range.highest == 0 ? doubled(0.0) : residual(p, r.highest);  // 0: below the noise
  const doubled lowest = range.lowest == 0 ? doubled(0.0) : residual(p, r.lowest);
  const doubled apart = highest - lowest;
  r.peak_to_valley = scaled(apart.high, local_.exponent());
  if (!is_finite(r.peak_to_valley) || !is_finite(r.root_mean_square) || !is_finite(r.offset))
    r.state = status::out_of_range;
}

// Of the largest coordinate in magnitude, without those in which all points agree.
int flat_points::lattice_exponent() const noexcept {
  double largest = 0;
  for (int k = 0; k < 3; ++k)
    if (!local_.constant(k)) largest = std::max({largest, magnitude(arrays_.least(k)), magnitude(arrays_.greatest(k))});
  return exponent_of(largest);
}

// The lattice, with the first point as the origin of the kernels.
detail::local_columns flat_points::lattice_columns() const noexcept {
  const detail::result_scale unit = scale_of(-lattice_exponent());
  detail::local_columns lattice{};
  for (int k = 0; k < 3; ++k) {
    lattice.c[k] = arrays_.column(k);
    for (int i = 0; i < 2; ++i) lattice.factors[k][i] = local_.constant(k) ? 0 : unit.factors[i];
    lattice.origin[k] = lattice_coordinate(lattice, k, columns_.c[k][first_]);
  }
  return lattice;
}

// The places of the points that can be corners of the hull, without repetitions and in ascending order, and for each
// place the first point there.
void flat_points::make_lattice(std::vector<lattice_point>& places, std::vector<std::size_t>& owners) {
  if (used_ > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw std::bad_alloc();
  struct owned {
    lattice_point place;
    std::size_t owner;
  };
  std::vector<owned> all;
  const detail::local_columns lattice = lattice_columns();
  for (const std::size_t i : outermost_points(arrays_, lattice, axes_)) {
    owned o;
    o.owner = number(i);
    for (int k = 0; k < 3; ++k) o.place.c[k] = lattice_coordinate(lattice, k, columns_.c[k][o.owner]);
    all.push_back(o);
  }
  const auto order = [](const owned& a, const owned& b) {
    for (int k = 0; k < 3; ++k)
      if (a.place.c[k] != b.place.c[k]) return a.place.c[k] < b.place.c[k];
    return a.owner < b.owner;
  };
  std::sort(all.begin(), all.end(), order);
  for (const owned& o : all) {
    if (!places.empty() && std::equal(o.place.c, o.place.c + 3, places.back().c)) continue;
    places.push_back(o.place);
    owners.push_back(o.owner);
  }
}

// The middle plane goes through the foot of the centroid.
void through_foot(const doubled (&mean)[3], const doubled (&anchor)[3], doubled half, local_plane& p) noexcept {
  doubled d[3];
  for (int k = 0; k < 3; ++k) d[k] = mean[k] - anchor[k];
  const doubled height = dot(p.normal, d) + half;
  for (int k = 0; k < 3; ++k) p.point[k] = mean[k] - height * p.normal[k];
}

status flat_points::store_zone(const width_of_body& w, const std::vector<std::size_t>& owners, flatness_result& r) {
  const int e = lattice_exponent();
  local_plane p;
  for (int k = 0; k < 3; ++k) p.normal[k] = w.normal[k];
  const bool turned = orient(p.normal);
  for (int i = 0; i < 4; ++i)
    r.touching[i] = static_cast<ulong>(owners[static_cast<std::size_t>(w.touching[turned ? (i + w.above) % 4 : i])]);
  r.touching_above = static_cast<ulong>(turned ? 4 - w.above : w.above);
  r.touching_below = 4 - r.touching_above;
  doubled upper[3];
  for (int k = 0; k < 3; ++k) upper[k] = local_.local_of(k, r.touching[0]);
  through_foot(mean_, upper, scaled(w.width, e - local_.exponent()) * doubled(0.5), p);
  r.middle.state = status::ok;
  fill(p, 0x1p-100, r.middle);
  r.zone = r.middle.peak_to_valley = scaled(w.width.high, e);
  r.middle.highest = *std::min_element(r.touching, r.touching + r.touching_above);
  r.middle.lowest = *std::min_element(r.touching + r.touching_above, r.touching + 4);
  return r.middle.state;
}

// Points in one plane: the zone is 0, and so are the residuals, since all of them are below an infinite noise.
status flat_points::store_plane(const std::vector<lattice_point>& places, const hull_facet& f,
                                const std::vector<std::size_t>& owners, flatness_result& r) {
  const auto at = [&](int i) -> const lattice_point& { return places[static_cast<std::size_t>(f.v[i])]; };
  const direction n = rounded_cross_product({at(1), at(0)}, {at(2), at(0)});
  const double largest = std::max({magnitude(n.c[0]), magnitude(n.c[1]), magnitude(n.c[2])});
  local_plane p;
  for (int k = 0; k < 3; ++k) p.normal[k] = scaled(n.c[k], -exponent_of(largest));
  const doubled length = square_root(dot(p.normal, p.normal));
  for (doubled& v : p.normal) v = v / length;
  orient(p.normal);
  doubled anchor[3];
  for (int i = 0; i < 3; ++i) r.touching[i] = static_cast<ulong>(owners[static_cast<std::size_t>(f.v[i])]);
  for (int k = 0; k < 3; ++k) anchor[k] = local_.local_of(k, r.touching[0]);
  through_foot(mean_, anchor, 0.0, p);
  r.touching_above = 3;
  r.middle.state = status::ok;
  fill(p, std::numeric_limits<double>::infinity(), r.middle);
  place(p, 0x1p-100, r.middle);
  if (!is_finite(r.middle.offset)) r.middle.state = status::out_of_range;
  return r.middle.state;
}

status flat_points::find_zone(flatness_result& r) {
  std::vector<lattice_point> places;
  std::vector<std::size_t> owners;
  make_lattice(places, owners);
  const convex_hull hull = hull_of(places);
  if (hull.kind == hull_kind::point || hull.kind == hull_kind::line) return status::collinear;
  if (hull.kind == hull_kind::plane) return store_plane(places, hull.facets[0], owners, r);
  return store_zone(width_of(places, polytope_of(places, hull.facets)), owners, r);
}

}  // namespace

flatness_result flatness(space_points points, const flatness_options& options) {
  flatness_result r;
  flat_points p(points, options);
  r.state = r.middle.state = r.least_squares.state = p.state();
  if (r.state == status::sizes_differ) return r;
  r.points_used = static_cast<ulong>(p.used());
  r.points_left_out = static_cast<ulong>(p.size() - p.used());
  if (r.state == status::ok && !rounds_to_nearest())
    r.state = r.middle.state = r.least_squares.state = status::other_rounding;
  if (r.state != status::ok) return r;
  local_plane least;
  double determination = 0, noise = 0;
  r.least_squares.state = p.find_least_squares(least, determination, noise);
  r.determination = determination;
  p.fill(least, noise, r.least_squares);
  if (r.least_squares.state == status::out_of_range) {
    r.least_squares = reference_plane();
    r.least_squares.state = status::out_of_range;
  }
  r.state = p.find_zone(r);
  if (r.state == status::ok) return r;
  flatness_result none;  // without the planes of the zone
  none.state = none.middle.state = r.state;
  none.least_squares = std::move(r.least_squares);
  none.determination = r.determination;
  none.points_used = r.points_used;
  none.points_left_out = r.points_left_out;
  return none;
}

}  // namespace tessarn
