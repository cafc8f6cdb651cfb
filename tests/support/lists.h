// Point lists of the library beside their plain counterparts.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "plain/list.h"
#include "support/pairs.h"

namespace test {

inline void fill(::vectormat& l, const std::vector<plain::vec2>& points) {
  for (const plain::vec2& p : points) {
    ::vector v(p.x, p.y);
    l.add(v);
  }
}

inline plain::point_list list_of(const std::vector<plain::vec2>& points) {
  plain::point_list l;
  for (const plain::vec2& p : points) plain::add(l, p);
  return l;
}

inline ::testing::AssertionResult same_points(const ::vectormat& a, const std::vector<plain::vec2>& b) {
  if (a.count != b.size()) {
    return ::testing::AssertionFailure() << a.count << " points from the library, " << b.size() << " plainly";
  }
  for (std::size_t i = 0; i < b.size(); ++i) {
    if (auto r = same(a.points[i], b[i]); !r) return r << " (point " << i << ")";
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult same(const ::vectormat& a, const plain::point_list& b) {
  if (auto r = same_points(a, b.points); !r) return r;
  if (a.capacity != b.capacity) {
    return ::testing::AssertionFailure() << "capacity " << a.capacity << " from the library, " << b.capacity
                                         << " plainly";
  }
  return ::testing::AssertionSuccess();
}

}  // namespace test
