// Arbitrary bytes as the untrusted inputs of the verification code: an SM2
// signature in DER or any form, a certificate for the validity, key and
// verification calls, a certificate time text, and algorithm and digest
// choices of any int value. Nothing may crash, read out of bounds, or stop
// the process; results are checked for consistency, digests against OpenSSL.
#include <openssl/evp.h>

#include <QByteArray>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "crypto/sm2_signature_der.h"
#include "date/ZTDate.h"
#include "fuzz_support.h"
#include "ztutil/rsa.h"
#include "ztutil/sm2.h"
#include "ztutil/ztverifytools.h"

namespace {

// A key record of a point on the curve (the generator), so that the
// signature is what gets exercised.
std::vector<unsigned char> generatorRecord() {
    static const unsigned char kGx[32] = {
        0x32, 0xC4, 0xAE, 0x2C, 0x1F, 0x19, 0x81, 0x19, 0x5F, 0x99, 0x04, 0x46, 0x6A, 0x39, 0xC9, 0x94,
        0x8F, 0xE3, 0x0B, 0xBF, 0xF2, 0x66, 0x0B, 0xE1, 0x71, 0x5A, 0x45, 0x89, 0x33, 0x4C, 0x74, 0xC7};
    static const unsigned char kGy[32] = {
        0xBC, 0x37, 0x36, 0xA2, 0xF4, 0xF6, 0x77, 0x9C, 0x59, 0xBD, 0xCE, 0xE3, 0x6B, 0x69, 0x21, 0x53,
        0xD0, 0xA9, 0x87, 0x7C, 0xC6, 0x2A, 0x47, 0x40, 0x02, 0xDF, 0x32, 0xE5, 0x21, 0x39, 0xF0, 0xA0};
    std::vector<unsigned char> record(132, 0);
    std::memcpy(record.data() + 36, kGx, 32);
    std::memcpy(record.data() + 100, kGy, 32);
    return record;
}

void signatureForms(const uint8_t* data, size_t size) {
    ztutil::sm2::SignatureIntegers integers;
    if (ztutil::sm2::readSignatureIntegers(data, size, &integers)) {
        FUZZ_CHECK(integers.r.data >= data && integers.r.data + integers.r.size <= data + size);
        FUZZ_CHECK(integers.s.data >= data && integers.s.data + integers.s.size <= data + size);
    }
    // One spare byte keeps the buffer non-null when the input is empty.
    std::vector<unsigned char> input(data, data + size);
    input.push_back(0);
    unsigned char wide[128];
    FUZZ_CHECK(ZTVerifyTools::ZTSM2ConvertSignDataTo128(input.data(), static_cast<unsigned>(size), wide,
                                                   128) == 1);
    unsigned char narrow[64];
    FUZZ_CHECK(ZTVerifyTools::ZTSM2ConvertSignDataTo64(wide, 128, narrow, 64) == 1);
    unsigned int length = 0;
    FUZZ_CHECK(ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(narrow, 64, nullptr, &length) == 1);
    FUZZ_CHECK(length >= 8 && length <= 72);

    std::vector<unsigned char> record = generatorRecord();
    unsigned char digest[32] = {0};
    const int result = SM2Verify(record.data(), 132, digest, 32, input.data(),
                                 static_cast<unsigned>(size));
    FUZZ_CHECK(result == 0 || result == 1);
}

void certificate(const uint8_t* data, size_t size) {
    if (size == 0)
        return;  // refused up front, like a null pointer
    std::vector<unsigned char> der(data, data + size);
    der.push_back(0);
    const unsigned int length = static_cast<unsigned>(size);
    const int valid = ZTVerifyTools::ZTVerifyCertValidity(der.data(), length);
    FUZZ_CHECK(valid == 0 || valid == 1);
    unsigned int keyLength = 0;
    FUZZ_CHECK(ZTVerifyTools::ZTGetPubKeyByCert(der.data(), length, nullptr, &keyLength) == 1);
    std::vector<unsigned char> key(keyLength + 1);
    unsigned int again = 0;
    FUZZ_CHECK(ZTVerifyTools::ZTGetPubKeyByCert(der.data(), length, key.data(), &again) == 1);
    FUZZ_CHECK(again == keyLength);

    unsigned char message[3] = {'a', 'b', 'c'};
    unsigned char wide[128] = {0};
    wide[63] = 1;
    wide[127] = 1;
    const int soft = ZTVerifyTools::ZTSoftVerifyByCert(der.data(), length, message, 3, wide, 128);
    FUZZ_CHECK(soft == 0 || soft == 1);
    const int rsa = RsaVerify(der.data(), length, message, 3, der.data(), length);
    FUZZ_CHECK(rsa == 0 || rsa == 1);
}

void timeText(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size < 32 ? size : 32);
    if (CZTDate::IsValidText(text)) {
        CZTDate date(text);
        FUZZ_CHECK(date.GetGTDateString().size() <= 15);
    }
}

// Any int as the algorithm of VerifySignatureValue and as the digest type of
// ZTDigest: values outside the enumerations are the "other" case, never
// undefined behaviour (UndefinedBehaviorSanitizer checks every load).
void algorithmChoices(const uint8_t* data, size_t size) {
    if (size < 8)
        return;
    int algorithm = 0, digestType = 0;
    std::memcpy(&algorithm, data, sizeof algorithm);
    std::memcpy(&digestType, data + 4, sizeof digestType);
    const QByteArray rest(reinterpret_cast<const char*>(data) + 8, static_cast<int>(size) - 8);
    const int verified = ZTVerifyTools::VerifySignatureValue(rest, rest, rest,
                                                             static_cast<enAlgoIDType>(algorithm));
    FUZZ_CHECK(verified == 0 || (verified == 1 && (algorithm == ALGO_SM2 || algorithm == ALGO_RSA)));

    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    const int result = ZTDigest(const_cast<unsigned char*>(fuzz::octets(rest)), static_cast<unsigned>(rest.size()),
                                digest, &length, static_cast<enDigestType>(digestType));
    if (rest.isEmpty()) {
        FUZZ_CHECK(result == 0);
        return;
    }
    unsigned char expected[EVP_MAX_MD_SIZE];
    unsigned int expectedLength = 0;
    EVP_Digest(rest.constData(), static_cast<size_t>(rest.size()), expected, &expectedLength,
               digestType == DIGEST_SM3 ? EVP_sm3() : EVP_sha1(), nullptr);
    FUZZ_CHECK(result == 1 && length == expectedLength && std::memcmp(digest, expected, length) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::silenceLibraryOutput();
    if (size == 0 || size > fuzz::kMaxInput)
        return 0;
    // The first byte picks the target, the rest is the input.
    const uint8_t* input = data + 1;
    const size_t length = size - 1;
    switch (data[0] % 4) {
    case 0:
        signatureForms(input, length);
        break;
    case 1:
        certificate(input, length);
        break;
    case 2:
        timeText(input, length);
        break;
    default:
        algorithmChoices(input, length);
        break;
    }
    return 0;
}
