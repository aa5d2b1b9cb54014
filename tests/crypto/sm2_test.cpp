// SM2: the Z value and digest, and verification of signatures made by OpenSSL 3 (SM2 with
// SM3 and the default user ID) in every DER form the library's signers produce.
#include <openssl/bn.h>
#include <openssl/ec.h>

#include <atomic>
#include <thread>

#include "crypto/sm2_signature_der.h"
#include "support/common.h"
#include "support/sm2_signer.h"
#include "ztutil/sm2.h"
#include "ztutil/sm3.h"

using namespace ztutil_test;

namespace {

const char kUserId[] = "1234567812345678";
const Bytes kCurve = fromHex(
    "FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000FFFFFFFFFFFFFFFC"
    "28E9FA9E9D9F5E344D5A9E4BCF6509A7F39789F515AB8F92DDBCBD414D940E93"
    "32C4AE2C1F1981195F9904466A39C9948FE30BBFF2660BE1715A4589334C74C7"
    "BC3736A2F4F6779C59BDCEE36B692153D0A9877CC62A474002DF32E52139F0A0");
const Bytes kOrder = fromHex("FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFF7203DF6B21C6052B53BBF40939D54123");

// ztutil_sm3_with_sm2's digest, or nothing when it refuses (leaving the output).
Bytes sm3WithSm2(Bytes message, Bytes record, const char* id, int idLength, int recordLength = 132) {
    Bytes e(32, 0xAB);
    const int ok = ztutil_sm3_with_sm2(message.data(), static_cast<int>(message.size()),
                                       record.empty() ? nullptr : record.data(), recordLength, id, idLength, e.data());
    EXPECT_TRUE(ok == 1 || e == Bytes(32, 0xAB)) << "a refusal leaves the output";
    return ok == 1 ? e : Bytes();
}

// OpenSSL's key and signatures, with the library's digest of a message.
struct Signer : Sm2Signer {
    Bytes digest(const Bytes& message) const { return sm3WithSm2(message, record(), kUserId, 16); }
};

// How the two INTEGERs are written: shortest; all 32 bytes with a 00 before
// 0x80 or more; all 32 bytes with a 00 only above 0x80; all 32 bytes as they are.
enum IntegerForm { kMinimal, kKept32, kPrefixAbove80, kRaw32 };

Bytes integer(Bytes value, IntegerForm form) {
    if (form == kMinimal)
        while (value.size() > 1 && value[0] == 0 && value[1] < 0x80)
            value.erase(value.begin());
    if ((form != kRaw32 && value[0] > 0x80) || ((form == kMinimal || form == kKept32) && value[0] == 0x80))
        value.insert(value.begin(), 0);
    return tlv(0x02, value);
}

Bytes encode(const Bytes& r, const Bytes& s, IntegerForm form = kMinimal) {
    return tlv(0x30, concat({integer(r, form), integer(s, form)}));
}

const std::string kCallIn = "[SM2Verify] call in ... \n";
const std::string kAccepted = "0 " + kCallIn;
const std::string kMismatch = "1 " + kCallIn + "SM2_verify failed";
const std::string kSilentlyRejected = "1 " + kCallIn;

// SM2Verify's result and everything it printed.
std::string verify(Bytes record, Bytes digest, Bytes der, unsigned recordLength = 132) {
    StdoutCapture capture;
    const int result = SM2Verify(record.data(), recordLength, digest.data(), unsigned(digest.size()),
                                 der.empty() ? nullptr : der.data(), unsigned(der.size()));
    return std::to_string(result) + " " + capture.text();
}

TEST(Sm2DigestTest, ZValueFollowsTheStandardFormula) {
    Signer signer;
    std::mt19937 rng(21);
    const Bytes id(kUserId, kUserId + 16);
    const Bytes z = digest(EVP_sm3(), concat({{0x00, 0x80}, id, kCurve, signer.x(), signer.y()}));
    for (size_t length : {0u, 1u, 100u, 5000u}) {
        const Bytes message = randomBytes(rng, length);
        EXPECT_EQ(signer.digest(message), digest(EVP_sm3(), concat({z, message}))) << length;
    }
    // An ID of 8192 bytes has ENTL 0 and still enters Z.
    const Bytes longId = randomBytes(rng, 8192), message = randomBytes(rng, 50);
    const Bytes longZ = digest(EVP_sm3(), concat({{0x00, 0x00}, longId, kCurve, signer.x(), signer.y()}));
    EXPECT_EQ(sm3WithSm2(message, signer.record(), reinterpret_cast<const char*>(longId.data()), 8192),
              digest(EVP_sm3(), concat({longZ, message})));

    // Without key or ID it is plain SM3; a record too short for the
    // coordinates is refused and the output left alone.
    const Bytes abc = {'a', 'b', 'c'}, plain = digest(EVP_sm3(), abc);
    EXPECT_EQ(sm3WithSm2(abc, signer.record(), kUserId, 0), plain);
    EXPECT_EQ(sm3WithSm2(abc, Bytes(), kUserId, 16), plain);
    EXPECT_EQ(sm3WithSm2(abc, signer.record(), kUserId, 16, 0), plain);
    EXPECT_EQ(sm3WithSm2(abc, signer.record(), nullptr, 16), plain);
    EXPECT_EQ(sm3WithSm2(abc, signer.record(), kUserId, 16, 131), Bytes());
}

TEST(Sm2VerifyTest, ConcurrentVerificationsShareTheCurve) {
    Signer signer;
    const Bytes message = {4, 5, 6}, der = signer.sign(message), e = signer.digest(message);
    std::atomic<int> accepted{0};
    StdoutCapture capture;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 10; ++i) {
                Bytes record = signer.record(), digest = e, signature = der;
                const unsigned size = unsigned(signature.size());
                accepted += SM2Verify(record.data(), 132, digest.data(), 32, signature.data(), size) == 0;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(accepted.load(), 40);
}

TEST(Sm2VerifyTest, SmallAndHighBitIntegersInEveryForm) {
    Signer signer;
    std::mt19937 rng(23);
    bool smallR = false, smallS = false, highR = false, exact80 = false;
    int tried = 0;
    while (!(smallR && smallS && highR && exact80) && ++tried < 20000) {
        const Bytes message = randomBytes(rng, 20), der = signer.sign(message);
        Bytes r, s;
        splitSignature(der, &r, &s);
        const bool isSmallR = r[0] == 0, isSmallS = s[0] == 0, isHighR = r[0] >= 0x80;
        const bool isExact80 = r[0] == 0x80 || s[0] == 0x80;
        if (!(isSmallR && !smallR) && !(isSmallS && !smallS) && !(isHighR && !highR) && !(isExact80 && !exact80))
            continue;
        smallR |= isSmallR, smallS |= isSmallS, highR |= isHighR, exact80 |= isExact80;
        for (IntegerForm form : {kMinimal, kKept32, kPrefixAbove80, kRaw32}) {
            EXPECT_EQ(verify(signer.record(), signer.digest(message), encode(r, s, form)), kAccepted)
                << "form " << form << " r0 " << int(r[0]) << " s0 " << int(s[0]);
            // OpenSSL 3's own decoder refuses the prefixed forms unless they are minimal.
            const Bytes other = encode(r, s, form);
            const unsigned char* p = other.data();
            ECDSA_SIG* sig = d2i_ECDSA_SIG(nullptr, &p, static_cast<long>(other.size()));
            if (form == kKept32 || form == kPrefixAbove80) {
                EXPECT_EQ(sig != nullptr, other == encode(r, s));
            }
            ECDSA_SIG_free(sig);
        }
    }
    EXPECT_TRUE(smallR && smallS && highR && exact80) << "after " << tried << " signatures";
}

TEST(Sm2VerifyTest, RejectionsAndTheirMessages) {
    Signer signer;
    const Bytes message = {1, 2, 3}, der = signer.sign(message), e = signer.digest(message);
    Bytes r, s;
    splitSignature(der, &r, &s);
    // Any record length but 132 gives the point (0, 0), which is refused; so is a point off the curve.
    Bytes longer = signer.record(), offCurve = signer.record();
    longer.push_back(0);
    offCurve[131] ^= 1;
    EXPECT_EQ(verify(signer.record(), e, der, 131), kSilentlyRejected);
    EXPECT_EQ(verify(longer, e, der, 133), kSilentlyRejected);
    EXPECT_EQ(verify(offCurve, e, der), kSilentlyRejected);
    // Signatures that do not decode.
    Bytes badTag = der;
    badTag[0] = 0x31;
    for (const Bytes& bad : {Bytes(), Bytes(der.begin(), der.end() - 1), badTag})
        EXPECT_EQ(verify(signer.record(), e, bad), kSilentlyRejected);

    // Values out of range, swapped, r + s = n (t is zero), or over another digest.
    BIGNUM* complement = BN_bin2bn(kOrder.data(), 32, nullptr);
    BIGNUM* bnR = BN_bin2bn(r.data(), 32, nullptr);
    BN_sub(complement, complement, bnR);
    Bytes t0(32);
    BN_bn2binpad(complement, t0.data(), 32);
    BN_free(complement);
    BN_free(bnR);
    const Bytes zero(32, 0);
    for (const Bytes& bad : {encode(zero, s), encode(r, zero), encode(kOrder, s), encode(r, kOrder), encode(s, r),
                             encode(r, t0)})
        EXPECT_EQ(verify(signer.record(), e, bad), kMismatch);
    for (int bit = 0; bit < 256; bit += 37) {
        Bytes other = e;
        other[bit / 8] ^= static_cast<unsigned char>(1 << (bit % 8));
        EXPECT_EQ(verify(signer.record(), other, der), kMismatch) << bit;
    }
    // Digests longer than 32 bytes are cut to their first 32 bytes.
    EXPECT_EQ(verify(signer.record(), concat({e, {9, 9}}), der), kAccepted);
    EXPECT_EQ(verify(signer.record(), Bytes(e.begin(), e.end() - 1), der), kMismatch);
}

TEST(Sm2SignatureDerTest, AcceptsWhatTheOlderDecoderAccepted) {
    auto read = [](const Bytes& der) {
        ztutil::sm2::SignatureIntegers integers;
        if (!ztutil::sm2::readSignatureIntegers(der.data(), der.size(), &integers))
            return std::string("refused");
        return std::string(integers.r.data, integers.r.data + integers.r.size) + "," +
               std::string(integers.s.data, integers.s.data + integers.s.size);
    };
    // Accepted: long and non-minimal lengths, trailing bytes, indefinite with its
    // end-of-contents, the high-tag-number form, empty contents. Refused: indefinite
    // without end-of-contents, an extra or a missing element, end-of-contents in a
    // definite SEQUENCE, a constructed or context-class INTEGER, a primitive
    // SEQUENCE, an indefinite primitive, content longer than the input, cut lengths.
    const std::pair<const char*, const char*> cases[] = {
        {"3006020105020107", "\x05,\x07"}, {"3082000702810105020107", "\x05,\x07"},
        {"3006020105020107ffff", "\x05,\x07"}, {"30800201050201070000", "\x05,\x07"}, {"3f100402000200", ","},
        {"3080020105020107", "refused"}, {"3009020105020107020101", "refused"}, {"3003020105", "refused"},
        {"30050201050000", "refused"}, {"3006220105020107", "refused"}, {"3006820105020107", "refused"},
        {"1006020105020107", "refused"}, {"300702800500000200", "refused"}, {"3007020105020107", "refused"},
        {"300402000281", "refused"}, {"30850100000000", "refused"}};
    for (const auto& c : cases)
        EXPECT_EQ(read(fromHex(c.first)), c.second) << c.first;

    // Every prefix of a valid signature is refused (arbitrary bytes are left to fuzz_verify).
    std::mt19937 rng(24);
    const Bytes valid = tlv(0x30, concat({tlv(0x02, randomBytes(rng, 33)), tlv(0x02, randomBytes(rng, 32))}));
    for (size_t length = 0; length < valid.size(); ++length)
        EXPECT_EQ(read(Bytes(valid.begin(), valid.begin() + length)), "refused") << length;
}

TEST(Sm2HexDigitTest, Int2CharGivesUpperCaseDigits) {
    for (int value = 0; value < 256; ++value) {
        char expected[3];
        std::snprintf(expected, sizeof expected, "%02X", value);
        EXPECT_EQ(int2char(value, 1), expected[0]);
        EXPECT_EQ(int2char(value, 0), expected[1]);
    }
}

}  // namespace
