// SM2 signature verification over a digest e:
//   1 <= r, s < n;  t = (r + s) mod n != 0;  (x1, y1) = s*G + t*PA;
//   valid when e + x1, less n once if not below n, equals r.
//
// The arithmetic is the library's own (sm2_field, sm2_point, sm2_multiply);
// what is accepted and what is printed are those of the verification built
// on OpenSSL 1.1's curve group, EC_KEY and signature decoder:
// - the key coordinates are reduced mod p and a point off the curve is
//   refused silently, as setting the point refused it;
// - OpenSSL's key check (a finite point on the curve whose n-fold is at
//   infinity) passes for every point accepted that way, since the curve's
//   order n is prime (cofactor 1), so "EC_KEY_check_key failed\n" is never
//   printed; nor is "EC_KEY_set_group failed\n", which only an allocation
//   failure caused and nothing is allocated here;
// - the signature is decoded by readSignatureIntegers, which follows the
//   older DER decoder.
#include <cstdio>

#include "crypto/sm2_base_table.h"
#include "crypto/sm2_key_cache.h"
#include "crypto/sm2_signature_der.h"
#include "ztutil/sm2.h"

namespace {

using namespace ztutil::sm2;

const unsigned int kPublicKeyRecordSize = 132;
const unsigned int kCoordinateSize = 32;
const unsigned int kXOffset = 36;
const unsigned int kYOffset = 100;

// The key point from the record; a record that is not exactly 132 bytes
// gives the point (0, 0), which is not on the curve.
bool publicKeyPoint(const unsigned char* record, unsigned int recordLength, AffinePoint* key) {
    static const unsigned char kZero[kCoordinateSize] = {0};
    const bool complete = record != nullptr && recordLength == kPublicKeyRecordSize;
    key->x = fieldFromBytes(complete ? record + kXOffset : kZero);
    key->y = fieldFromBytes(complete ? record + kYOffset : kZero);
    return onCurve(*key);
}

struct Signature {
    U256 r, s;
    bool fits;  // both below 2^256; larger values are out of range
};

// r and s from the DER signature, as unsigned numbers.
bool decodeSignature(const unsigned char* der, unsigned int length, Signature* signature) {
    SignatureIntegers integers;
    if (!readSignatureIntegers(der, length, &integers))
        return false;
    signature->fits = fromBigEndian(integers.r.data, integers.r.size, &signature->r) &&
                      fromBigEndian(integers.s.data, integers.s.size, &signature->s);
    return true;
}

// The digest as the integer e. The ECDSA rule keeps the leading bits(n)
// bits of a longer digest; n has exactly 256 bits, so that is its first 32
// bytes, and a shorter digest is taken whole.
bool digestToInteger(const unsigned char* digest, unsigned int length, U256* e) {
    if (digest == nullptr && length != 0)
        return false;
    return fromBigEndian(digest, length < kCoordinateSize ? length : kCoordinateSize, e);
}

// R = e + x1, less n once when it is not below n, must equal r. With
// r < n that holds exactly when x1 = r - e (then e + x1 < n) or
// x1 = r - e + n (then e + x1 >= n); each candidate that is a field element
// (0 <= candidate < p) is compared with X / Z^2 of the sum directly.
bool xMatches(const JacobianPoint& sum, const U256& r, const U256& e) {
    U256 candidate;
    const u64 borrow = sub256(&candidate, r, e);
    if (borrow == 0 && affineXEquals(sum, fieldFromInteger(candidate)))
        return true;
    // r + n - e, in range only when the carry of r + n pays for the borrow
    // of the subtraction.
    U256 withOrder;
    const u64 carry = add256(&withOrder, r, kGroupOrder);
    const u64 secondBorrow = sub256(&candidate, withOrder, e);
    return carry == secondBorrow && less256(candidate, kFieldPrime) &&
           affineXEquals(sum, fieldFromInteger(candidate));
}

bool signatureMatches(const SpacedTables& base, const AffinePoint& key,
                      const unsigned char* digest, unsigned int digestLength,
                      const Signature& signature) {
    if (!signature.fits || !scalarInRange(signature.r) || !scalarInRange(signature.s))
        return false;
    const U256 t = scalarAdd(signature.r, signature.s);
    if (isZero256(t))
        return false;
    U256 e;
    if (!digestToInteger(digest, digestLength, &e))
        return false;
    return xMatches(mulAddWithKey(base, signature.s, key, t), signature.r, e);
}

}  // namespace

int SM2Verify(unsigned char* pbtPubKey, unsigned int uiPubKeyLen, unsigned char* pbtDigestData,
              unsigned int uiDigestDataLen, unsigned char* pbtSignData, unsigned int uiSignDataLen) {
    std::printf("[SM2Verify] call in ... \n");
    std::fflush(stdout);

    const SpacedTables* base = baseTables();
    if (base == nullptr)
        return 1;
    AffinePoint key;
    if (!publicKeyPoint(pbtPubKey, uiPubKeyLen, &key))
        return 1;
    Signature signature;
    if (!decodeSignature(pbtSignData, uiSignDataLen, &signature))
        return 1;
    if (!signatureMatches(*base, key, pbtDigestData, uiDigestDataLen, signature)) {
        std::printf("SM2_verify failed");
        return 1;
    }
    return 0;
}
