// Arbitrary bytes as the untrusted inputs of the verification code: an SM2
// signature in DER or any form, a certificate for the validity, key and
// verification calls, and a certificate time text. Nothing may crash, read
// out of bounds, or stop the process; results are checked for consistency.
#include <fcntl.h>
#include <unistd.h>

#include <QByteArray>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "crypto/sm2_signature_der.h"
#include "date/ZTDate.h"
#include "ztutil/rsa.h"
#include "ztutil/sm2.h"
#include "ztutil/ztverifytools.h"

namespace {

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

// SM2Verify and RsaVerify report on standard output.
void silenceStdout() {
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    close(null);
}

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
        check(integers.r.data >= data && integers.r.data + integers.r.size <= data + size);
        check(integers.s.data >= data && integers.s.data + integers.s.size <= data + size);
    }
    // One spare byte keeps the buffer non-null when the input is empty.
    std::vector<unsigned char> input(data, data + size);
    input.push_back(0);
    unsigned char wide[128];
    check(ZTVerifyTools::ZTSM2ConvertSignDataTo128(input.data(), static_cast<unsigned>(size), wide,
                                                   128) == 1);
    unsigned char narrow[64];
    check(ZTVerifyTools::ZTSM2ConvertSignDataTo64(wide, 128, narrow, 64) == 1);
    unsigned int length = 0;
    check(ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(narrow, 64, nullptr, &length) == 1);
    check(length >= 8 && length <= 72);

    std::vector<unsigned char> record = generatorRecord();
    unsigned char digest[32] = {0};
    const int result = SM2Verify(record.data(), 132, digest, 32, input.data(),
                                 static_cast<unsigned>(size));
    check(result == 0 || result == 1);
}

void certificate(const uint8_t* data, size_t size) {
    if (size == 0)
        return;  // refused up front, like a null pointer
    std::vector<unsigned char> der(data, data + size);
    der.push_back(0);
    const unsigned int length = static_cast<unsigned>(size);
    const int valid = ZTVerifyTools::ZTVerifyCertValidity(der.data(), length);
    check(valid == 0 || valid == 1);
    unsigned int keyLength = 0;
    check(ZTVerifyTools::ZTGetPubKeyByCert(der.data(), length, nullptr, &keyLength) == 1);
    std::vector<unsigned char> key(keyLength + 1);
    unsigned int again = 0;
    check(ZTVerifyTools::ZTGetPubKeyByCert(der.data(), length, key.data(), &again) == 1);
    check(again == keyLength);

    unsigned char message[3] = {'a', 'b', 'c'};
    unsigned char wide[128] = {0};
    wide[63] = 1;
    wide[127] = 1;
    const int soft = ZTVerifyTools::ZTSoftVerifyByCert(der.data(), length, message, 3, wide, 128);
    check(soft == 0 || soft == 1);
    const int rsa = RsaVerify(der.data(), length, message, 3, der.data(), length);
    check(rsa == 0 || rsa == 1);
}

void timeText(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size < 32 ? size : 32);
    if (CZTDate::IsValidText(text)) {
        CZTDate date(text);
        check(date.GetGTDateString().size() <= 15);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = (silenceStdout(), true);
    (void)quiet;
    if (size == 0)
        return 0;
    // The first byte picks the target, the rest is the input.
    const uint8_t* input = data + 1;
    const size_t length = size - 1;
    switch (data[0] % 3) {
    case 0:
        signatureForms(input, length);
        break;
    case 1:
        certificate(input, length);
        break;
    default:
        timeText(input, length);
        break;
    }
    return 0;
}
