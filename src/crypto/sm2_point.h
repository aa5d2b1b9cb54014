// Points of the SM2 curve y^2 = x^3 - 3x + b over the prime field, in
// affine form (x, y) and in Jacobian form (X, Y, Z) for x = X / Z^2,
// y = Y / Z^3, with Z = 0 for the point at infinity.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_POINT_H
#define ZTUTIL_SRC_CRYPTO_SM2_POINT_H

#include "crypto/sm2_field.h"

namespace ztutil {
namespace sm2 {

struct AffinePoint {
    FieldElement x, y;
};

struct JacobianPoint {
    FieldElement x, y, z;
};

// A finite Jacobian point with Z^2 and Z^3 kept beside it: an entry of a
// table built for one multiplication and added many times.
struct CachedPoint {
    FieldElement x, y, z, zz, zzz;
};

AffinePoint generator();
bool onCurve(const AffinePoint& point);

inline bool isInfinity(const JacobianPoint& point) { return fieldIsZero(point.z); }
JacobianPoint infinity();
JacobianPoint toJacobian(const AffinePoint& point);
AffinePoint negate(const AffinePoint& point);
JacobianPoint negate(const JacobianPoint& point);

// 2P, with a = -3 (4M + 4S); the point at infinity stays there.
JacobianPoint pointDouble(const JacobianPoint& point);
// P + Q for a finite affine Q (8M + 3S); P = Q doubles, P = -Q gives the
// point at infinity, P at infinity gives Q.
JacobianPoint pointAddMixed(const JacobianPoint& p, const AffinePoint& q);
// P + Q, both Jacobian (12M + 4S), with the same special cases.
JacobianPoint pointAdd(const JacobianPoint& p, const JacobianPoint& q);
// P + Q for a table entry Q (11M + 3S), with the same special cases.
JacobianPoint pointAddCached(const JacobianPoint& p, const CachedPoint& q);
CachedPoint negate(const CachedPoint& point);

// P, 3P, ..., (2 count - 1) P for a finite affine P of odd order (every
// point of the curve but infinity), by co-Z additions (5M + 2S each).
void oddMultiples(CachedPoint* out, const AffinePoint& point, int count);

// Affine forms of `count` finite points with one field inversion
// (Montgomery's simultaneous inversion).
void toAffineBatch(AffinePoint* out, const JacobianPoint* points, int count);

// x / Z^2 == value for a finite point, without the inversion: X == value * Z^2.
bool affineXEquals(const JacobianPoint& point, const FieldElement& value);

}  // namespace sm2
}  // namespace ztutil

#endif
