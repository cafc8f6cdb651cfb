// Operations of cplx, vector, vector3d, polarvector3d and the allocators.
#include "replay/draw.h"

namespace replay {
namespace {

constexpr unsigned n = 900;

// Reach the protected members.
struct open_cplx : cplx {
  using cplx::rndi;
  using cplx::rndu;
};
struct open_vector3d : vector3d {
  using vector3d::rndi;
  using vector3d::rndu;
};
struct open_polar : polarvector3d {
  using polarvector3d::rndi;
  using polarvector3d::rndu;
};

// A number around the limits of the roundings.
real rounding_case(input& in) {
  switch (in.integer(0, 3)) {
    case 0: return in.any();
    case 1: return static_cast<real>(in.integer(-9, 9)) * static_cast<real>(0.5);
    case 2: return in.within(-4294967296.5, 4294967296.5);
    default: return static_cast<real>(2147483647) + static_cast<real>(in.integer(-4, 4)) * static_cast<real>(0.25);
  }
}

const operation angle_table[] = {
    REPLAY("sin", 4 * n, out.put(tessarn::angles::sin(in.any()))),
    REPLAY("cos", 4 * n, out.put(tessarn::angles::cos(in.any()))),
    REPLAY("sin_cos", 4 * n, const auto both = tessarn::angles::sin_cos(in.any()); out.put(both.sine);
           out.put(both.cosine)),
    REPLAY("asin", 4 * n, out.put(tessarn::angles::asin(in.within(-1, 1)))),
    REPLAY("acos", 4 * n, out.put(tessarn::angles::acos(in.within(-1, 1)))),
};

const operation complex_table[] = {
    REPLAY("cplx()", 1, (void)in; out.put(cplx())),
    REPLAY("cplx(re, im)", n, out.put(draw<cplx>(in))),
    REPLAY("cplx(angle)", n, out.put(cplx(in.any()))),
    ONE("cplx copy", n, cplx, cplx b(a); out.put(b)),
    INTO("cplx =", n, cplx, cplx, out.put(a = b)),
    TWO("cplx +", n, cplx, cplx, out.put(a + b)),
    TWO("cplx -", n, cplx, cplx, out.put(a - b)),
    TWO("cplx * cplx", n, cplx, cplx, out.put(a* b)),
    TWO("cplx * real", n, cplx, real, out.put(a* b)),
    TWO("real * cplx, -cplx", n, cplx, real, out.put(b* a); out.put(-a)),
    TWO("cplx / cplx", n, cplx, cplx, out.put(a / b); out.put(a)),
    TWO("cplx / real", n, cplx, real, out.put(a / b)),
    INTO("cplx +=", n, cplx, cplx, a += b; out.put(a)),
    INTO("cplx -=", n, cplx, cplx, a -= b; out.put(a)),
    INTO("cplx *= cplx", n, cplx, cplx, a *= b; out.put(a)),
    INTO("cplx *= real", n, cplx, real, a *= b; out.put(a)),
    INTO("cplx /= cplx", n, cplx, cplx, a /= b; out.put(a)),
    INTO("cplx /= real", n, cplx, real, a /= b; out.put(a)),
    TWO("cplx ==", n, cplx, cplx, out.put(a == b)),
    TWO("cplx !=", n, cplx, cplx, out.put(a != b)),
    TWO("cplx <", n, cplx, cplx, out.put(a < b)),
    TWO("cplx >", n, cplx, cplx, out.put(a > b)),
    ONE("cplx lenld", n, cplx, out.put(a.lenld())),
    ONE("cplx lenul", n, cplx, out.put(a.lenul())),
    ONE("cplx phi", n, cplx, out.put(a.phi())),
    ONE("cplx sqrt", n, cplx, out.put(a.sqrt())),
    REPLAY("cplx rndu, rndi", n, real v = rounding_case(in); out.put_number(open_cplx::rndu(v));
           out.put(open_cplx::rndi(v))),
};

const operation plane_table[] = {
    REPLAY("vector()", 1, (void)in; out.put(vector())),
    REPLAY("vector(x, y)", n, out.put(draw<vector>(in))),
    ONE("vector copy", n, vector, vector b(a); out.put(b)),
    INTO("vector =", n, vector, vector, out.put(a = b); out.put(a)),
    INTO("vector = vectormat", n, vector, vectormat, out.put(a = b); out.put(a)),
    TWO("vector +", n, vector, vector, out.put(a + b)),
    TWO("vector -", n, vector, vector, out.put(a - b)),
    TWO("real * vector, -vector", n, vector, real, out.put(b* a); out.put(-a)),
    TWO("vector * real", n, vector, real, out.put(a* b)),
    TWO("vector / real", n, vector, real, out.put(a / b)),
    TWO("vector resize", n, vector, real, out.put(a.resize(b))),
    INTO("vector +=", n, vector, vector, a += b; out.put(a)),
    INTO("vector -=", n, vector, vector, a -= b; out.put(a)),
    INTO("vector *=", n, vector, real, a *= b; out.put(a)),
    INTO("vector /=", n, vector, real, a /= b; out.put(a)),
    TWO("vector ==", n, vector, vector, out.put(a == b)),
    ONE("vector lenld", n, vector, out.put(a.lenld())),
    ONE("vector lenul", n, vector, out.put(a.lenul())),
    ONE("vector rx, ry", n, vector, out.put(a.rx()); out.put(a.ry())),
    REPLAY("vector rndu, rndi", n, real v = rounding_case(in); out.put_number(vector::rndu(v));
           out.put(vector::rndi(v))),
    ONE("vector arc()", n, vector, out.put(a.arc())),
    TWO("vector arc", n, vector, vector, out.put(a.arc(b))),
    ONE("vector dirarc()", n, vector, out.put(a.dirarc())),
    TWO("vector dirarc", n, vector, vector, out.put(a.dirarc(b))),
    REPLAY("vector flip", n, vector a = draw<vector>(in); a.flip(); out.put(a)),
    REPLAY("new_vector", 60, const int k = in.integer(0, 40); vector* p = new_vector(static_cast<tessarn::ulong>(k));
           for (int i = 0; i < (k ? k : 1); ++i) out.put(p[i]); if (k) delete[] p; else delete p),
};

const operation space_table[] = {
    REPLAY("vector3d()", 1, (void)in; out.put(vector3d())),
    REPLAY("vector3d(x, y, z)", n, out.put(draw<vector3d>(in))),
    ONE("vector3d copy", n, vector3d, vector3d b(a); out.put(b)),
    ONE("vector3d(polar)", n, polarvector3d, out.put(vector3d(a))),
    ONE("vector3d(polar*)", n, polarvector3d, out.put(vector3d(&a))),
    INTO("vector3d =", n, vector3d, vector3d, out.put(a = b)),
    TWO("vector3d +", n, vector3d, vector3d, out.put(a + b)),
    TWO("vector3d -", n, vector3d, vector3d, out.put(a - b)),
    TWO("real * vector3d, -vector3d", n, vector3d, real, out.put(b* a); out.put(-a)),
    TWO("vector3d * vector3d", n, vector3d, vector3d, out.put(a* b)),
    TWO("vector3d * real", n, vector3d, real, out.put(a* b)),
    TWO("vector3d / real", n, vector3d, real, out.put(a / b)),
    TWO("vector3d cross", n, vector3d, vector3d, out.put(a.cross(b))),
    TWO("vector3d resize", n, vector3d, real, out.put(a.resize(b))),
    TWO("vector3d projection", n, vector3d, vector3d, out.put(a.projection(b))),
    TWO("vector3d rotate(a1, a2)", n, vector3d, real, out.put(a.rotate(b, in.any()))),
    TWO("vector3d rotate(axis)", n, vector3d, vector3d, out.put(a.rotate(b, in.any()))),
    INTO("vector3d +=", n, vector3d, vector3d, a += b; out.put(a)),
    INTO("vector3d -=", n, vector3d, vector3d, a -= b; out.put(a)),
    INTO("vector3d *= real", n, vector3d, real, a *= b; out.put(a)),
    INTO("vector3d /= real", n, vector3d, real, a /= b; out.put(a)),
    INTO("vector3d *= vector3d", n, vector3d, vector3d, a *= b; out.put(a)),
    TWO("vector3d ==", n, vector3d, vector3d, out.put(a == b)),
    ONE("vector3d lenld", n, vector3d, out.put(a.lenld())),
    ONE("vector3d lenul", n, vector3d, out.put(a.lenul())),
    ONE("vector3d rx, ry, rz", n, vector3d, out.put(a.rx()); out.put(a.ry()); out.put(a.rz())),
    REPLAY("vector3d rndu, rndi", n, open_vector3d a; real v = rounding_case(in); out.put_number(a.rndu(v));
           out.put(a.rndi(v))),
    TWO("vector3d arc", n, vector3d, vector3d, out.put(a.arc(b))),
    REPLAY("new_vector3d", 60, const int k = in.integer(0, 40);
           vector3d* p = new_vector3d(static_cast<tessarn::ulong>(k));
           for (int i = 0; i < (k ? k : 1); ++i) out.put(p[i]); if (k) delete[] p; else delete p),
};

const operation polar_table[] = {
    REPLAY("polar()", 1, (void)in; out.put(polarvector3d())),
    REPLAY("polar(alpha, beta, len)", n, out.put(draw<polarvector3d>(in))),
    ONE("polar copy", n, polarvector3d, polarvector3d b(a); out.put(b)),
    ONE("polar(vector3d)", n, vector3d, out.put(polarvector3d(a))),
    ONE("polar(vector3d*)", n, vector3d, out.put(polarvector3d(&a))),
    ONE("polar to vector3d", n, polarvector3d, out.put(a.operator vector3d())),
    INTO("polar =", n, polarvector3d, polarvector3d, out.put(a = b); out.put(a)),
    INTO("polar = vector3d", n, polarvector3d, vector3d, out.put(a = b); out.put(a = &b)),
    ONE("polar lenld", n, polarvector3d, out.put(a.lenld())),
    ONE("polar lenul", n, polarvector3d, out.put(a.lenul())),
    ONE("polar ralpha, rbeta, rlen", n, polarvector3d, out.put(a.ralpha()); out.put(a.rbeta()); out.put(a.rlen())),
    REPLAY("polar rndu, rndi", n, open_polar a; real v = rounding_case(in); out.put_number(a.rndu(v));
           out.put(a.rndi(v))),
    TWO("polar resize", n, polarvector3d, real, out.put(a.resize(b))),
    TWO("polar rotate", n, polarvector3d, real, out.put(a.rotate(b, in.any()))),
    TWO("polar * real", n, polarvector3d, real, out.put(a* b)),
    TWO("real * polar", n, polarvector3d, real, out.put(b* a)),
    TWO("polar / real", n, polarvector3d, real, out.put(a / b)),
    INTO("polar *= real", n, polarvector3d, real, a *= b; out.put(a)),
    INTO("polar /= real", n, polarvector3d, real, a /= b; out.put(a)),
    INTO("polar += -= *= polar", n, polarvector3d, polarvector3d, a += b; a -= b; a *= b; out.put(a)),
    TWO("polar +", n, polarvector3d, polarvector3d, out.put(a + b)),
    TWO("polar -", n, polarvector3d, polarvector3d, out.put(a - b)),
    TWO("polar * polar", n, polarvector3d, polarvector3d, out.put(a* b)),
    TWO("polar cross", n, polarvector3d, polarvector3d, out.put(a.cross(b))),
    TWO("polar arc", n, polarvector3d, polarvector3d, out.put(a.arc(b))),
    TWO("polar ==", n, polarvector3d, polarvector3d, out.put(a == b)),
    REPLAY("new_polarvector3d", 60, const int k = in.integer(0, 40);
           polarvector3d* p = new_polarvector3d(static_cast<tessarn::ulong>(k));
           for (int i = 0; i < (k ? k : 1); ++i) out.put(p[i]); if (k) delete[] p; else delete p),
};

}  // namespace

const family angle_functions = family_of(angle_table);
const family complex_numbers = family_of(complex_table);
const family plane_vectors = family_of(plane_table);
const family space_vectors = family_of(space_table);
const family polar_vectors = family_of(polar_table);

}  // namespace replay
