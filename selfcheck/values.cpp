// The self-check of complex numbers and vectors: what no angle takes part in, and what one does.
#include "selfcheck/members.h"

namespace tessarn::detail {
namespace {

constexpr int n = 24;

#define ANY TESSARN_MEMBER_HOSTILE

constexpr selfcheck_member values[] = {
    ANY("cplx sum and difference", n, const cplx a = in.complex(); const cplx b = in.complex(); out.put(a + b);
        out.put(a - b)),
    ANY("cplx product", n, const cplx a = in.complex(); const cplx b = in.complex(); out.put(a * b); out.put(a * b.re)),
    ANY("cplx quotient", n, cplx a = in.complex(); cplx b = in.complex(); out.put(a / b); out.put(a);
        out.put(a / b.im)),
    ANY("cplx comparisons", n, const cplx a = in.complex(); const cplx b = in.complex(); out.put(a == b);
        out.put(a != b); out.put(a < b); out.put(a > b)),
    ANY("cplx::lenld, lenul", n, const cplx a = in.complex(); out.put(a.lenld()); out.put(a.lenul())),
    ANY("vector sum, difference, scaling", n, const ::vector a = in.plane_vector();
        const ::vector b = in.plane_vector(); out.put(a + b); out.put(a - b); out.put(a * b.x); out.put(a / b.y)),
    ANY("vector::resize, lenld, lenul", n, const ::vector a = in.plane_vector(); out.put(a.resize(in.number()));
        out.put(a.lenld()); out.put(a.lenul())),
    ANY("vector::rx, ry", n, const ::vector a = in.plane_vector(); out.put(a.rx()); out.put(a.ry())),
    ANY("vector3d sum, difference, scaling", n, const vector3d a = in.space_vector();
        const vector3d b = in.space_vector(); out.put(a + b); out.put(a - b); out.put(a * b.x); out.put(a / b.y)),
    ANY("vector3d products", n, const vector3d a = in.space_vector(); const vector3d b = in.space_vector();
        out.put(a * b); out.put(a.cross(b))),
    ANY("vector3d::projection", n, const vector3d a = in.space_vector(); const vector3d b = in.space_vector();
        out.put(a.projection(b))),
    ANY("vector3d::resize, lenld, lenul", n, const vector3d a = in.space_vector(); out.put(a.resize(in.number()));
        out.put(a.lenld()); out.put(a.lenul())),
    ANY("polarvector3d scaling", n, const polarvector3d a = in.polar_vector(); const real k = in.number();
        out.put(a * k); out.put(a / k); out.put(a.resize(k))),
};

constexpr selfcheck_member angle_members[] = {
    ANY("angles::sin", 4 * n, out.put(angles::sin(in.number()))),
    ANY("angles::cos", 4 * n, out.put(angles::cos(in.number()))),
    ANY("angles::sin_cos", 4 * n, const auto both = angles::sin_cos(in.number()); out.put(both.sine);
        out.put(both.cosine)),
    ANY("angles::asin", 4 * n, out.put(angles::asin(in.fraction() * 2 - 1)); out.put(angles::asin(in.number()))),
    ANY("angles::acos", 4 * n, out.put(angles::acos(in.fraction() * 2 - 1)); out.put(angles::acos(in.number()))),
    ANY("cplx(angle)", n, out.put(cplx(in.number()))),
    ANY("cplx::phi", n, const cplx a = in.complex(); out.put(a.phi())),
    ANY("cplx::sqrt", n, const cplx a = in.complex(); out.put(a.sqrt())),
    ANY("vector::arc", n, const ::vector a = in.plane_vector(); const ::vector b = in.plane_vector(); out.put(a.arc());
        out.put(a.arc(b))),
    ANY("vector::dirarc", n, const ::vector a = in.plane_vector(); const ::vector b = in.plane_vector();
        out.put(a.dirarc()); out.put(a.dirarc(b))),
    ANY("vector3d::arc", n, const vector3d a = in.space_vector(); const vector3d b = in.space_vector();
        out.put(a.arc(b))),
    ANY("vector3d::rotate(angles)", n, const vector3d a = in.space_vector(); const real alpha = in.number();
        const real beta = in.number(); out.put(a.rotate(alpha, beta))),
    ANY("vector3d::rotate(axis)", n, const vector3d a = in.space_vector(); const vector3d axis = in.space_vector();
        const real alpha = in.number(); out.put(a.rotate(axis, alpha))),
    ANY("vector3d(polarvector3d)", n, const polarvector3d a = in.polar_vector(); out.put(vector3d(a))),
    ANY("polarvector3d(vector3d)", n, const vector3d a = in.space_vector(); out.put(polarvector3d(a));
        out.put(polarvector3d(&a))),
    ANY("polarvector3d sum and difference", n, const polarvector3d a = in.polar_vector();
        const polarvector3d b = in.polar_vector(); out.put(a + b); out.put(a - b)),
    ANY("polarvector3d products", n, const polarvector3d a = in.polar_vector();
        const polarvector3d b = in.polar_vector(); out.put(a * b); out.put(a.cross(b))),
    ANY("polarvector3d::arc", n, const polarvector3d a = in.polar_vector(); const polarvector3d b = in.polar_vector();
        out.put(a.arc(b))),
    ANY("polarvector3d::rotate", n, const polarvector3d a = in.polar_vector(); const real alpha = in.number();
        out.put(a.rotate(alpha, in.number()))),
};

}  // namespace

constinit const selfcheck_family selfcheck_values = family_of(values);
constinit const selfcheck_family selfcheck_angles = family_of(angle_members);

}  // namespace tessarn::detail
