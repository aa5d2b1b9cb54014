// Point formulas for a = -3 in Jacobian coordinates (the doubling
// "dbl-2001-b" and the additions "madd-2004-hmv" / "add-1998-cmo-2" of the
// Explicit-Formulas Database), with the special cases an addition chain can
// meet: a summand at infinity, equal summands, opposite summands.
#include "crypto/sm2_point.h"

#include "crypto/sm2_params.h"

namespace ztutil {
namespace sm2 {

AffinePoint generator() {
    return AffinePoint{fieldFromBytes(kGeneratorX), fieldFromBytes(kGeneratorY)};
}

bool onCurve(const AffinePoint& point) {
    static const FieldElement b = fieldFromBytes(kCurveB);
    // x^3 - 3x + b = (x^2 - 3) x + b
    const FieldElement x2 = fieldSqr(point.x);
    const FieldElement rhs =
        fieldAdd(fieldMul(fieldSub(x2, fieldTriple(kFieldOne)), point.x), b);
    return fieldEqual(fieldSqr(point.y), rhs);
}

JacobianPoint infinity() {
    return JacobianPoint{kFieldOne, kFieldOne, FieldElement{{{0, 0, 0, 0}}}};
}

JacobianPoint toJacobian(const AffinePoint& point) {
    return JacobianPoint{point.x, point.y, kFieldOne};
}

AffinePoint negate(const AffinePoint& point) {
    return AffinePoint{point.x, fieldNeg(point.y)};
}

JacobianPoint negate(const JacobianPoint& point) {
    return JacobianPoint{point.x, fieldNeg(point.y), point.z};
}

JacobianPoint pointDouble(const JacobianPoint& point) {
    const FieldElement delta = fieldSqr(point.z);
    const FieldElement gamma = fieldSqr(point.y);
    const FieldElement beta = fieldMul(point.x, gamma);
    // alpha = 3 (X - delta)(X + delta), which is 3X^2 + a Z^4 for a = -3.
    const FieldElement alpha =
        fieldTriple(fieldMul(fieldSub(point.x, delta), fieldAdd(point.x, delta)));
    const FieldElement fourBeta = fieldDouble(fieldDouble(beta));
    JacobianPoint out;
    out.x = fieldSub(fieldSqr(alpha), fieldDouble(fourBeta));
    out.z = fieldDouble(fieldMul(point.y, point.z));
    const FieldElement gamma2 = fieldSqr(gamma);
    const FieldElement eightGamma2 = fieldDouble(fieldDouble(fieldDouble(gamma2)));
    out.y = fieldSub(fieldMul(alpha, fieldSub(fourBeta, out.x)), eightGamma2);
    return out;
}

namespace {

// The common tail of both additions: with U1, S1 of the first summand, the
// differences H = U2 - U1 and r = S2 - S1 (H != 0) and the product of the
// Z coordinates, the sum is (r^2 - H^3 - 2 U1 H^2, r (U1 H^2 - X3) - S1 H^3,
// Z1 Z2 H).
JacobianPoint addTail(const FieldElement& u1, const FieldElement& s1, const FieldElement& h,
                      const FieldElement& r, const FieldElement& zProduct) {
    const FieldElement hh = fieldSqr(h);
    const FieldElement hhh = fieldMul(h, hh);
    const FieldElement v = fieldMul(u1, hh);
    JacobianPoint out;
    out.x = fieldSub(fieldSub(fieldSqr(r), hhh), fieldDouble(v));
    out.y = fieldSub(fieldMul(r, fieldSub(v, out.x)), fieldMul(s1, hhh));
    out.z = fieldMul(zProduct, h);
    return out;
}

}  // namespace

JacobianPoint pointAddMixed(const JacobianPoint& p, const AffinePoint& q) {
    if (isInfinity(p))
        return toJacobian(q);
    const FieldElement z1z1 = fieldSqr(p.z);
    const FieldElement u2 = fieldMul(q.x, z1z1);
    const FieldElement s2 = fieldMul(q.y, fieldMul(p.z, z1z1));
    const FieldElement h = fieldSub(u2, p.x);
    const FieldElement r = fieldSub(s2, p.y);
    if (fieldIsZero(h))
        return fieldIsZero(r) ? pointDouble(p) : infinity();
    return addTail(p.x, p.y, h, r, p.z);
}

JacobianPoint pointAdd(const JacobianPoint& p, const JacobianPoint& q) {
    if (isInfinity(p))
        return q;
    if (isInfinity(q))
        return p;
    const FieldElement z1z1 = fieldSqr(p.z);
    const FieldElement z2z2 = fieldSqr(q.z);
    const FieldElement u1 = fieldMul(p.x, z2z2);
    const FieldElement u2 = fieldMul(q.x, z1z1);
    const FieldElement s1 = fieldMul(p.y, fieldMul(q.z, z2z2));
    const FieldElement s2 = fieldMul(q.y, fieldMul(p.z, z1z1));
    const FieldElement h = fieldSub(u2, u1);
    const FieldElement r = fieldSub(s2, s1);
    if (fieldIsZero(h))
        return fieldIsZero(r) ? pointDouble(p) : infinity();
    return addTail(u1, s1, h, r, fieldMul(p.z, q.z));
}

void toAffineBatch(AffinePoint* out, const JacobianPoint* points, int count) {
    const int kBatch = 64;
    for (; count > kBatch; count -= kBatch, out += kBatch, points += kBatch)
        toAffineBatch(out, points, kBatch);
    if (count <= 0)
        return;
    // prefix[i] = Z_0 ... Z_i; one inversion of the full product, then each
    // Z_i^-1 peeled off from the back.
    FieldElement prefix[kBatch];
    prefix[0] = points[0].z;
    for (int i = 1; i < count; ++i)
        prefix[i] = fieldMul(prefix[i - 1], points[i].z);
    FieldElement inverse = fieldInv(prefix[count - 1]);
    for (int i = count - 1; i >= 0; --i) {
        const FieldElement zInverse = i > 0 ? fieldMul(inverse, prefix[i - 1]) : inverse;
        if (i > 0)
            inverse = fieldMul(inverse, points[i].z);
        const FieldElement zInverse2 = fieldSqr(zInverse);
        out[i].x = fieldMul(points[i].x, zInverse2);
        out[i].y = fieldMul(points[i].y, fieldMul(zInverse2, zInverse));
    }
}

bool affineXEquals(const JacobianPoint& point, const FieldElement& value) {
    return !isInfinity(point) && fieldEqual(point.x, fieldMul(value, fieldSqr(point.z)));
}

}  // namespace sm2
}  // namespace ztutil
