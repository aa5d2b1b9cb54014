// Point formulas for a = -3 in Jacobian coordinates (the doubling
// "dbl-2001-b" and the additions "madd-2004-hmv" / "add-1998-cmo-2" of the
// Explicit-Formulas Database, and co-Z additions for tables), with the
// special cases an addition chain can meet: a summand at infinity, equal
// summands, opposite summands.
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

// dbl-2001-b scaled by 1/2 (the same point, X / 4, Y / 8, Z / 2), which
// turns its multiplications by 2, 4 and 8 into one halving:
//   delta = Z^2, gamma = Y^2, beta = X gamma,
//   alpha = 3/2 (X - delta)(X + delta)   (half of 3X^2 + a Z^4, a = -3),
//   X3 = alpha^2 - 2 beta, Y3 = alpha (beta - X3) - gamma^2, Z3 = Y Z.
JacobianPoint pointDouble(const JacobianPoint& point) {
    const FieldElement delta = fieldSqr(point.z);
    const FieldElement gamma = fieldSqr(point.y);
    const FieldElement beta = fieldMul(point.x, gamma);
    const FieldElement product = fieldMul(fieldSub(point.x, delta), fieldAdd(point.x, delta));
    const FieldElement alpha = fieldAdd(product, fieldHalf(product));
    JacobianPoint out;
    out.x = fieldSub(fieldSqr(alpha), fieldDouble(beta));
    out.y = fieldSub(fieldMul(alpha, fieldSub(beta, out.x)), fieldSqr(gamma));
    out.z = fieldMul(point.y, point.z);
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

JacobianPoint pointAddCached(const JacobianPoint& p, const CachedPoint& q) {
    if (isInfinity(p))
        return JacobianPoint{q.x, q.y, q.z};
    const FieldElement z1z1 = fieldSqr(p.z);
    const FieldElement u1 = fieldMul(p.x, q.zz);
    const FieldElement u2 = fieldMul(q.x, z1z1);
    const FieldElement s1 = fieldMul(p.y, q.zzz);
    const FieldElement s2 = fieldMul(q.y, fieldMul(p.z, z1z1));
    const FieldElement h = fieldSub(u2, u1);
    const FieldElement r = fieldSub(s2, s1);
    if (fieldIsZero(h))
        return fieldIsZero(r) ? pointDouble(p) : infinity();
    return addTail(u1, s1, h, r, fieldMul(p.z, q.z));
}

CachedPoint negate(const CachedPoint& point) {
    return CachedPoint{point.x, fieldNeg(point.y), point.z, point.zz, point.zzz};
}

namespace {

CachedPoint withPowersOfZ(const JacobianPoint& point) {
    const FieldElement zz = fieldSqr(point.z);
    return CachedPoint{point.x, point.y, point.z, zz, fieldMul(zz, point.z)};
}

// Two points sharing one Z (co-Z, Meloni): returns P + Q and replaces P by
// the same point over the sum's Z. With C = (X1 - X2)^2, W1 = X1 C,
// W2 = X2 C, A1 = Y1 (W1 - W2):
//   X3 = (Y1 - Y2)^2 - W1 - W2, Y3 = (Y1 - Y2)(W1 - X3) - A1,
//   Z3 = Z (X1 - X2), and P over Z3 is (W1, A1, Z3).
// P != +-Q (else Z3 = 0).
JacobianPoint coZAddUpdate(JacobianPoint* p, const JacobianPoint& q) {
    const FieldElement xDifference = fieldSub(p->x, q.x);
    const FieldElement yDifference = fieldSub(p->y, q.y);
    const FieldElement c = fieldSqr(xDifference);
    const FieldElement w1 = fieldMul(p->x, c);
    const FieldElement w2 = fieldMul(q.x, c);
    const FieldElement a1 = fieldMul(p->y, fieldSub(w1, w2));
    JacobianPoint sum;
    sum.x = fieldSub(fieldSub(fieldSqr(yDifference), w1), w2);
    sum.y = fieldSub(fieldMul(yDifference, fieldSub(w1, sum.x)), a1);
    sum.z = fieldMul(p->z, xDifference);
    *p = JacobianPoint{w1, a1, sum.z};
    return sum;
}

// 2P and P over the same Z = 2y for an affine P (Z = 1): with
// S = 4 x y^2, M = 3x^2 - 3, 2P = (M^2 - 2S, M (S - X) - 8y^4, 2y) and P
// over 2y is (S, 8y^4, 2y).
JacobianPoint coZDouble(const AffinePoint& point, JacobianPoint* sameZ) {
    const FieldElement ySquared = fieldSqr(point.y);
    const FieldElement s = fieldDouble(fieldDouble(fieldMul(point.x, ySquared)));
    const FieldElement eightY4 = fieldDouble(fieldDouble(fieldDouble(fieldSqr(ySquared))));
    const FieldElement m = fieldTriple(fieldSub(fieldSqr(point.x), kFieldOne));
    JacobianPoint twice;
    twice.x = fieldSub(fieldSqr(m), fieldDouble(s));
    twice.y = fieldSub(fieldMul(m, fieldSub(s, twice.x)), eightY4);
    twice.z = fieldDouble(point.y);
    *sameZ = JacobianPoint{s, eightY4, twice.z};
    return twice;
}

}  // namespace

// (2k + 1) P = (2k - 1) P + 2P, 2P carried along over each new sum's Z.
void oddMultiples(CachedPoint* out, const AffinePoint& point, int count) {
    JacobianPoint multiple;
    JacobianPoint twice = coZDouble(point, &multiple);
    out[0] = withPowersOfZ(multiple);
    for (int i = 1; i < count; ++i) {
        multiple = coZAddUpdate(&twice, multiple);
        out[i] = withPowersOfZ(multiple);
    }
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
