// The points farthest from a point, or from two: groups of points that lie too near are left out by their radii.
#include "geometry/extremes.h"

#include <algorithm>
#include <cmath>

#include "geometry/coordinates.h"

namespace tessarn::detail {
namespace {

// For the roundings of distances, of the sums of two or three of them and of their squares.
constexpr double outward = 1e-12;
// With fewer blocks a search of all points takes less time.
constexpr std::size_t min_blocks = 32;
// The search begins with so many of the outermost blocks, or with this part of all of them, to have a distance early
// that most groups do not reach.
constexpr std::size_t first_searched = 64, first_part = 16;
// One call of the kernel searches neighbouring groups together: up to so many groups that need no search lie between
// two that do, and it gets up to so many points.
constexpr std::size_t max_gap = 8, max_points = 4096;

double distance(const vector3d& a, const vector3d& b) {
  const auto x = static_cast<double>(a.x - b.x), y = static_cast<double>(a.y - b.y), z = static_cast<double>(a.z - b.z);
  return std::sqrt((x * x + y * y) + z * z);
}

std::size_t parts(std::size_t n, std::size_t each) { return (n + each - 1) / each; }

}  // namespace

distance_index::distance_index(std::size_t points)
    : groups_(parts(points, geometry_kernels_in_use().group_points)),
      blocks_(parts(points, geometry_kernels_in_use().block_points)),
      squares_(blocks_ < min_blocks ? nullptr : new double[groups_ + blocks_]) {}

// The squares are accurate in this range only; elsewhere all points are searched.
void distance_index::prepare(const vector3d& reference) {
  reference_ = reference;
  if (!squares_) return;
  greatest_ = *std::max_element(of_blocks(), of_blocks() + blocks_);
  usable_ = greatest_ > 1e-100 && greatest_ < 1e100 && distance(reference, reference) == 0;
}

// A search: the farthest point so far, and by how much a group must reach to have one as far.
class distance_index::query {
 public:
  query(const point_arrays& points, const vector3d& reference, const vector3d& a, const vector3d* b, double least)
      : points_(points),
        a_(a),
        b_(b),
        from_a_(coordinates_of(a)),
        away_(distance(a, reference)),
        least_(least),
        found_(points.n) {
    if (b == nullptr) return;
    from_b_ = coordinates_of(*b);
    apart_ = distance(a, *b);
    middle_away_ = distance((a + *b) / 2, reference);
    away_ += distance(*b, reference);
  }
  double least() const { return least_; }
  std::size_t found() const { return found_; }
  void expect(double least) { least_ = std::max(least_, least); }

  // The points from begin to end, without the latter.
  void search(std::size_t begin, std::size_t end) {
    const std::size_t n = std::min(points_.n, end) - begin;
    const point_arrays part = {points_.x + begin, points_.y + begin, points_.z + begin, n};
    const geometry_kernels& kernels = geometry_kernels_in_use();
    const std::size_t i = b_ == nullptr ? kernels.farthest(part, from_a_.data(), least_)
                                        : kernels.farthest_from_two(part, from_a_.data(), from_b_.data(), least_);
    if (i == n) return;
    found_ = begin + i;
    const vector3d p(part.x[i], part.y[i], part.z[i]);
    least_ = b_ == nullptr ? distance(p, a_) : distance(p, a_) + distance(p, *b_);
  }
  // The square of the distance from the reference point that a group must reach to have a point as far as least. A
  // point is no farther from a than it is by way of the reference point. For two points there is a second bound: the
  // sum of two distances is at most the root of twice the sum of their squares, which is 4 m^2 + d^2 with m the
  // distance from the middle of a and b, and d that of a and b.
  double square_needed() const {
    double needed = least_ - away_;
    if (b_ != nullptr) {
      const double square = least_ * least_ * (1 - outward) - apart_ * apart_ * (1 + outward);
      needed = 0.5 * std::max(needed, std::sqrt(std::max(0.0, square)) - 2 * middle_away_);
    }
    needed -= outward * (least_ + away_);
    return needed > 0 ? needed * needed * (1 - outward) : 0;
  }

 private:
  const point_arrays& points_;
  const vector3d& a_;
  const vector3d* b_;
  std::array<double, 3> from_a_, from_b_{};
  double away_, apart_ = 0, middle_away_ = 0;
  double least_;
  std::size_t found_;
};

// A distance that some point has: the greatest among the outermost blocks. Enough blocks must count as outermost, so
// that those that are searched do not all lie at the same end of the cloud.
double distance_index::first_guess(query from) const {
  const double* const blocks = squares_.get() + groups_;
  for (const double inwards : {0.002, 0.02, 0.2, 1.0}) {
    const double outer = greatest_ * (1 - inwards);
    const auto reaching = [&](double reach) { return reach >= outer; };
    if (static_cast<std::size_t>(std::count_if(blocks, blocks + blocks_, reaching)) < min_blocks / 2) continue;
    std::size_t left = std::min(first_searched, blocks_ / first_part);
    for (std::size_t k = 0; k < blocks_ && left > 0; ++k) {
      if (!reaching(blocks[k])) continue;
      from.search(k * geometry_kernels_in_use().block_points, (k + 1) * geometry_kernels_in_use().block_points);
      --left;
    }
    break;
  }
  return from.least();
}

// Goes over the blocks, and over the groups of those that reach far enough. Groups that do as well are gathered from
// begin to end, and searched together.
std::size_t distance_index::farthest(const point_arrays& points, const vector3d& a, const vector3d* b,
                                     double least) const {
  query search(points, reference_, a, b, least);
  if (!usable_) {
    search.search(0, points.n);
    return search.found();
  }
  // Of equally far points the first is wanted: their distance must not be excluded here.
  search.expect(first_guess(search) * (1 - outward));
  double needed = search.square_needed();
  const std::size_t width = geometry_kernels_in_use().group_points;
  const std::size_t groups_each = geometry_kernels_in_use().block_points / width;
  const double* const blocks = squares_.get() + groups_;
  std::size_t begin = 0, end = 0;  // groups that have to be searched
  const auto flush = [&] {
    if (begin == end) return;
    search.search(begin * width, end * width);
    needed = search.square_needed();
    begin = end;
  };
  for (std::size_t k = 0; k < blocks_; ++k) {
    if (blocks[k] < needed) continue;
    const std::size_t last = std::min(groups_, (k + 1) * groups_each);
    for (std::size_t g = k * groups_each; g < last; ++g) {
      if (squares_[g] < needed) continue;
      if (g > end + max_gap || (end - begin) * width >= max_points) flush();
      if (begin == end) begin = g;
      end = g + 1;
    }
  }
  flush();
  return search.found();
}

}  // namespace tessarn::detail
