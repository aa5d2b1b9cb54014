// Reading the DER form of an SM2 signature, SEQUENCE { INTEGER r, INTEGER s },
// with the rules of OpenSSL 1.1's ECDSA_SIG decoder, which signers of this
// system rely on: INTEGER contents are taken as unsigned big-endian numbers
// whatever their first octet (a kept leading 00, or a first octet of 0x80 or
// more without one, are both fine), lengths may use more octets than needed
// or the indefinite form on the SEQUENCE, and bytes after the SEQUENCE are
// ignored.
#ifndef ZTUTIL_SRC_CRYPTO_SM2_SIGNATURE_DER_H
#define ZTUTIL_SRC_CRYPTO_SM2_SIGNATURE_DER_H

#include <cstddef>

namespace ztutil {
namespace sm2 {

struct ByteSpan {
    const unsigned char* data;
    std::size_t size;
};

struct SignatureIntegers {
    ByteSpan r;  // content octets of each INTEGER, possibly empty
    ByteSpan s;
};

// Finds the two INTEGER contents in `der`; false when the structure is not
// accepted. Never reads outside der[0..size).
bool readSignatureIntegers(const unsigned char* der, std::size_t size, SignatureIntegers* out);

}  // namespace sm2
}  // namespace ztutil

#endif
