#include "crypto/sm2_multiply.h"

namespace ztutil {
namespace sm2 {
namespace {

// Width of the table built per call for a point seen once: 8 entries cost
// 7 additions and leave about 256 / 6 additions for the scalar.
const int kFreshPointWidth = 5;
const int kMaxSpacedWidth = 8;

// Odd multiples base, 3 base, ..., (2 count - 1) base.
void oddMultiples(JacobianPoint* out, const JacobianPoint& base, int count) {
    out[0] = base;
    const JacobianPoint twice = pointDouble(base);
    for (int i = 1; i < count; ++i)
        out[i] = pointAdd(out[i - 1], twice);
}

JacobianPoint addDigit(const JacobianPoint& sum, const AffinePoint* table, int digit) {
    return digit > 0 ? pointAddMixed(sum, table[digit >> 1])
                     : pointAddMixed(sum, negate(table[(-digit) >> 1]));
}

JacobianPoint addDigit(const JacobianPoint& sum, const CachedPoint* table, int digit) {
    return digit > 0 ? pointAddCached(sum, table[digit >> 1])
                     : pointAddCached(sum, negate(table[(-digit) >> 1]));
}

// One scalar's digits and the affine table they index.
struct Term {
    const AffinePoint* table;
    const Wnaf* digits;
};

// sum over the terms of digits * table, plus the same for one optional
// table of cached points, most significant digit first with one doubling
// per digit.
JacobianPoint accumulate(const Term* terms, int termCount, const CachedPoint* cachedTable,
                         const Wnaf* cachedDigits) {
    int top = cachedDigits != nullptr ? cachedDigits->count : 0;
    for (int k = 0; k < termCount; ++k)
        top = terms[k].digits->count > top ? terms[k].digits->count : top;
    JacobianPoint sum = infinity();
    for (int i = top - 1; i >= 0; --i) {
        if (!isInfinity(sum))
            sum = pointDouble(sum);
        for (int k = 0; k < termCount; ++k)
            if (terms[k].digits->digit[i] != 0)
                sum = addDigit(sum, terms[k].table, terms[k].digits->digit[i]);
        if (cachedDigits != nullptr && cachedDigits->digit[i] != 0)
            sum = addDigit(sum, cachedTable, cachedDigits->digit[i]);
    }
    return sum;
}

void recodeParts(const U256& scalar, int width, Wnaf parts[kSpacedParts]) {
    for (int j = 0; j < kSpacedParts; ++j)
        wnafRecode(U256{{scalar.limb[j], 0, 0, 0}}, width, &parts[j]);
}

}  // namespace

void buildSpacedTables(AffinePoint* rows, const AffinePoint& point, int width) {
    const int size = tableSize(width);
    JacobianPoint multiples[kSpacedParts * tableSize(kMaxSpacedWidth)];
    JacobianPoint base = toJacobian(point);
    for (int j = 0; j < kSpacedParts; ++j) {
        if (j > 0)
            for (int i = 0; i < kSpacedPartBits; ++i)
                base = pointDouble(base);
        oddMultiples(multiples + j * size, base, size);
    }
    toAffineBatch(rows, multiples, kSpacedParts * size);
}

JacobianPoint mulAddFresh(const SpacedTables& base, const U256& s, const AffinePoint& point,
                          const U256& t) {
    Wnaf sDigits, tDigits;
    wnafRecode(s, base.width, &sDigits);
    wnafRecode(t, kFreshPointWidth, &tDigits);
    CachedPoint pointTable[tableSize(kFreshPointWidth)];
    oddMultiples(pointTable, point, tableSize(kFreshPointWidth));
    const Term term = {base.rows, &sDigits};
    return accumulate(&term, 1, pointTable, &tDigits);
}

JacobianPoint mulAddSpaced(const SpacedTables& base, const U256& s, const SpacedTables& point,
                           const U256& t) {
    Wnaf sParts[kSpacedParts], tParts[kSpacedParts];
    recodeParts(s, base.width, sParts);
    recodeParts(t, point.width, tParts);
    Term terms[2 * kSpacedParts];
    for (int j = 0; j < kSpacedParts; ++j) {
        terms[j] = Term{base.rows + j * tableSize(base.width), &sParts[j]};
        terms[kSpacedParts + j] = Term{point.rows + j * tableSize(point.width), &tParts[j]};
    }
    return accumulate(terms, 2 * kSpacedParts, nullptr, nullptr);
}

}  // namespace sm2
}  // namespace ztutil
