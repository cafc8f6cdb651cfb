// The way by which the library's own sources reach the fields of the owning classes.
#pragma once

#include "tessarn/matrix.h"
#include "tessarn/poly.h"

namespace tessarn::detail {

using real_mat = mat<long double>;
using complex_mat = mat<cplx>;
using real_sqmat = sqmat<long double>;
using complex_sqmat = sqmat<cplx>;

struct access {
  template <class M>
  static auto& data(M& m) noexcept { return m.data; }
  template <class M>
  static auto& width(M& m) noexcept { return m.width; }
  template <class M>
  static auto& height(M& m) noexcept { return m.height; }
  template <class M>
  static auto& size(M& m) noexcept { return m.size; }
  template <class P>
  static auto& count(P& p) noexcept { return p.cofcnt; }
  template <class P>
  static auto& grade(P& p) noexcept { return p.grade; }
  template <class P>
  static auto& coefficients(P& p) noexcept { return p.cof; }
};

}  // namespace tessarn::detail
