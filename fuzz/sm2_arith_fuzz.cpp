// The SM2 field and scalar operations against OpenSSL's BIGNUM on fuzzed
// numbers: the input is two 32-byte big-endian numbers a and b (missing
// bytes are zero) and one more byte choosing the wNAF width. Any difference
// stops the fuzzer.
#include <openssl/bn.h>

#include <cstdint>
#include <cstring>

#include "crypto/sm2_field.h"
#include "crypto/sm2_scalar.h"

namespace {

using namespace ztutil::sm2;

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

struct Numbers {
    BN_CTX* ctx = BN_CTX_new();
    BIGNUM* p = nullptr;
    BIGNUM* n = nullptr;
    BIGNUM* expected = BN_new();
    BIGNUM* a = BN_new();
    BIGNUM* b = BN_new();
    BIGNUM* term = BN_new();
    Numbers() {
        BN_hex2bn(&p, "FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000FFFFFFFFFFFFFFFF");
        BN_hex2bn(&n, "FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFF7203DF6B21C6052B53BBF40939D54123");
    }
};

// The 32 bytes of `value` equal the BIGNUM.
bool same(const U256& value, const BIGNUM* bn) {
    unsigned char ours[32], theirs[32];
    toBigEndian32(ours, value);
    return BN_bn2binpad(bn, theirs, 32) == 32 && std::memcmp(ours, theirs, 32) == 0;
}

void checkField(Numbers& k, const unsigned char* aBytes, const unsigned char* bBytes) {
    const FieldElement a = fieldFromBytes(aBytes), b = fieldFromBytes(bBytes);
    BIGNUM* e = k.expected;
    // a and b reduced mod p, then every operation on the reduced values.
    BN_nnmod(k.a, k.a, k.p, k.ctx);
    BN_nnmod(k.b, k.b, k.p, k.ctx);
    check(same(fieldToInteger(a), k.a) && same(fieldToInteger(b), k.b));
    check(BN_mod_add(e, k.a, k.b, k.p, k.ctx) && same(fieldToInteger(fieldAdd(a, b)), e));
    check(BN_mod_sub(e, k.a, k.b, k.p, k.ctx) && same(fieldToInteger(fieldSub(a, b)), e));
    check(BN_mod_mul(e, k.a, k.b, k.p, k.ctx) && same(fieldToInteger(fieldMul(a, b)), e));
    check(BN_mod_sqr(e, k.a, k.p, k.ctx) && same(fieldToInteger(fieldSqr(a)), e));
    check(BN_mod_sub(e, k.p, k.a, k.p, k.ctx) && same(fieldToInteger(fieldNeg(a)), e));
    if (!BN_is_zero(k.a))
        check(BN_mod_inverse(e, k.a, k.p, k.ctx) && same(fieldToInteger(fieldInv(a)), e));
}

void checkScalar(Numbers& k, const U256& a, const U256& b, int width) {
    const bool aInRange = !BN_is_zero(k.a) && BN_cmp(k.a, k.n) < 0;
    check(scalarInRange(a) == aInRange);
    if (BN_cmp(k.a, k.n) < 0 && BN_cmp(k.b, k.n) < 0)
        check(BN_mod_add(k.expected, k.a, k.b, k.n, k.ctx) && same(scalarAdd(a, b), k.expected));

    // The wNAF digits of a sum back to a, with the digit rules.
    Wnaf wnaf;
    wnafRecode(a, width, &wnaf);
    BN_zero(k.expected);
    int gap = width;
    for (int i = wnaf.count - 1; i >= 0; --i) {
        const int digit = wnaf.digit[i];
        ++gap;
        if (digit == 0)
            continue;
        check(digit % 2 != 0 && digit < (1 << (width - 1)) && -digit < (1 << (width - 1)) && gap >= width);
        gap = 0;
        BN_set_word(k.term, static_cast<BN_ULONG>(digit < 0 ? -digit : digit));
        BN_lshift(k.term, k.term, i);
        check(digit < 0 ? BN_sub(k.expected, k.expected, k.term) : BN_add(k.expected, k.expected, k.term));
    }
    check(BN_cmp(k.expected, k.a) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Numbers numbers;
    unsigned char input[65] = {0};
    std::memcpy(input, data, size < sizeof input ? size : sizeof input);
    const int width = 2 + input[64] % 7;  // 2 to 8

    const U256 a = fromBigEndian32(input), b = fromBigEndian32(input + 32);
    BN_bin2bn(input, 32, numbers.a);
    BN_bin2bn(input + 32, 32, numbers.b);
    checkScalar(numbers, a, b, width);
    checkField(numbers, input, input + 32);
    return 0;
}
