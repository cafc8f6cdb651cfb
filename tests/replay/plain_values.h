// The plain forms of the value classes, for operations that call the C library.
#pragma once

#include "plain/cplx.h"
#include "plain/geometry.h"
#include "plain/vectors.h"
#include "replay/record.h"

namespace replay {

inline double plain_of(real v) { return static_cast<double>(v); }
inline plain::cplx plain_of(const cplx& v) { return {plain_of(v.re), plain_of(v.im)}; }
inline plain::vec2 plain_of(const vector& v) { return {plain_of(v.x), plain_of(v.y)}; }
inline plain::vec3 plain_of(const vector3d& v) { return {plain_of(v.x), plain_of(v.y), plain_of(v.z)}; }
inline plain::polar plain_of(const polarvector3d& v) { return {plain_of(v.alpha), plain_of(v.beta), plain_of(v.len)}; }
inline plain::plane plain_of(const plane& v) {
  plain::plane p;
  p.origin = plain_of(v.origin);
  p.normal = plain_of(v.normal);
  p.axis1 = plain_of(v.axis1);
  p.axis2 = plain_of(v.axis2);
  return p;
}

inline void put_plain(output& out, double v) { out.put(static_cast<real>(v)); }
inline void put_plain(output& out, plain::cplx v) {
  put_plain(out, v.re);
  put_plain(out, v.im);
}
inline void put_plain(output& out, plain::vec3 v) {
  put_plain(out, v.x);
  put_plain(out, v.y);
  put_plain(out, v.z);
}
inline void put_plain(output& out, plain::polar v) {
  put_plain(out, v.alpha);
  put_plain(out, v.beta);
  put_plain(out, v.len);
}
inline void put_plain(output& out, const plain::plane& v) {
  put_plain(out, v.origin);
  put_plain(out, v.normal);
  put_plain(out, v.axis1);
  put_plain(out, v.axis2);
}

}  // namespace replay
