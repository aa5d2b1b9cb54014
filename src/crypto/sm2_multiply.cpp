// Interleaved width-w NAF multiplication with OpenSSL's point doubling and
// addition. OpenSSL's own EC_POINT_mul uses narrow windows for 256-bit
// scalars and rebuilds its table of the point's multiples in affine form on
// every call; here the generator's table is wide and permanent, the point's
// table stays Jacobian, and no inversion is done at all.
#include "crypto/sm2_multiply.h"

#include <cstdint>

namespace ztutil {
namespace sm2 {
namespace {

const int kMaxScalarBytes = 32;
const int kMaxDigits = 8 * kMaxScalarBytes + 1;

// Width-w NAF digits of a scalar below 2^256, least significant first: each
// digit is 0 or odd with |digit| < 2^(w-1), and non-zero digits are at least
// w positions apart. Returns the number of digits, or -1 for a larger scalar.
int wnafDigits(const BIGNUM* scalar, int width, int digits[kMaxDigits]) {
    if (BN_is_negative(scalar) || BN_num_bytes(scalar) > kMaxScalarBytes)
        return -1;
    unsigned char bytes[kMaxScalarBytes];
    if (BN_bn2binpad(scalar, bytes, kMaxScalarBytes) != kMaxScalarBytes)
        return -1;
    // Five little-endian 64-bit limbs: the fifth takes the carry of a
    // negative digit's addition.
    std::uint64_t limbs[5] = {0, 0, 0, 0, 0};
    for (int i = 0; i < kMaxScalarBytes; ++i)
        limbs[i / 8] |= static_cast<std::uint64_t>(bytes[kMaxScalarBytes - 1 - i]) << (8 * (i % 8));

    const std::int64_t window = std::int64_t(1) << width;
    int count = 0;
    auto isZero = [&limbs] { return (limbs[0] | limbs[1] | limbs[2] | limbs[3] | limbs[4]) == 0; };
    while (!isZero()) {
        int digit = 0;
        if (limbs[0] & 1) {
            std::int64_t low = static_cast<std::int64_t>(limbs[0] & (window - 1));
            if (low >= window / 2)
                low -= window;
            digit = static_cast<int>(low);
            // limbs -= digit
            if (digit > 0) {
                limbs[0] -= static_cast<std::uint64_t>(digit);  // no borrow: low bits were digit
            } else {
                std::uint64_t add = static_cast<std::uint64_t>(-digit);
                for (int i = 0; i < 5 && add != 0; ++i) {
                    const std::uint64_t before = limbs[i];
                    limbs[i] += add;
                    add = limbs[i] < before ? 1 : 0;
                }
            }
        }
        digits[count++] = digit;
        for (int i = 0; i < 4; ++i)
            limbs[i] = (limbs[i] >> 1) | (limbs[i + 1] << 63);
        limbs[4] >>= 1;
    }
    return count;
}

const EC_POINT* entry(const OddMultiples& table, int digit) {
    return digit > 0 ? table.positive[digit / 2] : table.negative[-digit / 2];
}

}  // namespace

OddMultiples::~OddMultiples() {
    for (EC_POINT* point : positive)
        EC_POINT_free(point);
    for (EC_POINT* point : negative)
        EC_POINT_free(point);
}

bool OddMultiples::build(const EC_GROUP* group, const EC_POINT* point, int tableWidth, bool affine,
                         BN_CTX* ctx) {
    width = tableWidth;
    const int size = 1 << (tableWidth - 2);
    EC_POINT* twice = EC_POINT_new(group);
    bool ok = twice != nullptr && EC_POINT_dbl(group, twice, point, ctx) == 1;
    BIGNUM* x = BN_new();
    BIGNUM* y = BN_new();
    ok = ok && x != nullptr && y != nullptr;
    for (int i = 0; ok && i < size; ++i) {
        EC_POINT* multiple = i == 0 ? EC_POINT_dup(point, group) : EC_POINT_new(group);
        EC_POINT* negated = EC_POINT_new(group);
        positive.push_back(multiple);
        negative.push_back(negated);
        ok = multiple != nullptr && negated != nullptr &&
             (i == 0 || EC_POINT_add(group, multiple, positive[i - 1], twice, ctx) == 1);
        if (ok && affine)
            ok = EC_POINT_get_affine_coordinates(group, multiple, x, y, ctx) == 1 &&
                 EC_POINT_set_affine_coordinates(group, multiple, x, y, ctx) == 1;
        ok = ok && EC_POINT_copy(negated, multiple) == 1 && EC_POINT_invert(group, negated, ctx) == 1;
    }
    EC_POINT_free(twice);
    BN_free(x);
    BN_free(y);
    return ok;
}

bool multiplyAdd(const EC_GROUP* group, const OddMultiples& generatorTable, EC_POINT* result,
                 const BIGNUM* gScalar, const EC_POINT* point, const BIGNUM* pScalar,
                 BN_CTX* ctx) {
    int gDigits[kMaxDigits];
    int pDigits[kMaxDigits];
    const int gCount = wnafDigits(gScalar, generatorTable.width, gDigits);
    const int pCount = wnafDigits(pScalar, kPointWidth, pDigits);
    if (gCount < 0 || pCount < 0)
        return false;
    OddMultiples pointTable;
    if (!pointTable.build(group, point, kPointWidth, false, ctx))
        return false;

    if (EC_POINT_set_to_infinity(group, result) != 1)
        return false;
    bool started = false;  // doubling the point at infinity is skipped
    for (int i = (gCount > pCount ? gCount : pCount) - 1; i >= 0; --i) {
        if (started && EC_POINT_dbl(group, result, result, ctx) != 1)
            return false;
        if (i < gCount && gDigits[i] != 0) {
            if (EC_POINT_add(group, result, result, entry(generatorTable, gDigits[i]), ctx) != 1)
                return false;
            started = true;
        }
        if (i < pCount && pDigits[i] != 0) {
            if (EC_POINT_add(group, result, result, entry(pointTable, pDigits[i]), ctx) != 1)
                return false;
            started = true;
        }
    }
    return true;
}

}  // namespace sm2
}  // namespace ztutil
