// SM2: the Z value and digest, and verification of signatures made by
// OpenSSL 3 (SM2 with SM3 and the default user ID) in every DER form the
// library's signers produce.
#include <gtest/gtest.h>
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "crypto/sm2_signature_der.h"
#include "support/capture.h"
#include "support/sm2_signer.h"
#include "ztutil/sm2.h"
#include "ztutil/sm3.h"

namespace {

using ztutil_test::Bytes;
using ztutil_test::StdoutCapture;

const char kUserId[] = "1234567812345678";
const char kCallIn[] = "[SM2Verify] call in ... \n";
const char kVerifyFailed[] = "SM2_verify failed";

Bytes fromHex(const std::string& hex) {
    Bytes out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        out.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return out;
}

Bytes randomBytes(std::mt19937& rng, size_t length) {
    Bytes data(length);
    for (unsigned char& byte : data)
        byte = static_cast<unsigned char>(rng());
    return data;
}

Bytes opensslSm3(const Bytes& data) {
    Bytes digest(32);
    unsigned int length = 0;
    EVP_Digest(data.data(), data.size(), digest.data(), &length, EVP_sm3(), nullptr);
    return digest;
}

Bytes append(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// OpenSSL's key and signatures, with the library's digest of a message.
struct Signer : ztutil_test::Sm2Signer {
    Bytes record = Sm2Signer::record();
    Bytes x = Sm2Signer::x();
    Bytes y = Sm2Signer::y();

    Bytes digest(Bytes message) {
        Bytes e(32);
        EXPECT_EQ(ztutil_sm3_with_sm2(message.data(), static_cast<int>(message.size()),
                                      record.data(), 132, kUserId, 16, e.data()),
                  1);
        return e;
    }
};

struct RS {
    Bytes r, s;  // 32 bytes each
};

RS split(const Bytes& der) {
    RS rs;
    ztutil_test::splitSignature(der, &rs.r, &rs.s);
    return rs;
}

enum class IntegerForm {
    Minimal,         // shortest two's complement content
    Kept32,          // all 32 bytes, 00 prefixed when the first is 0x80 or more
    PrefixAbove80,   // all 32 bytes, 00 prefixed only when the first exceeds 0x80
    Raw32,           // all 32 bytes, never prefixed
};

Bytes integerContent(const Bytes& value, IntegerForm form) {
    Bytes content = value;
    switch (form) {
    case IntegerForm::Minimal:
        while (content.size() > 1 && content[0] == 0 && content[1] < 0x80)
            content.erase(content.begin());
        if (content[0] >= 0x80)
            content.insert(content.begin(), 0);
        break;
    case IntegerForm::Kept32:
        if (content[0] >= 0x80)
            content.insert(content.begin(), 0);
        break;
    case IntegerForm::PrefixAbove80:
        if (content[0] > 0x80)
            content.insert(content.begin(), 0);
        break;
    case IntegerForm::Raw32:
        break;
    }
    return content;
}

Bytes tlv(unsigned char tag, const Bytes& content) {
    Bytes out{tag};
    if (content.size() < 0x80) {
        out.push_back(static_cast<unsigned char>(content.size()));
    } else {
        out.push_back(0x81);
        out.push_back(static_cast<unsigned char>(content.size()));
    }
    return append(out, content);
}

Bytes encode(const RS& rs, IntegerForm form) {
    return tlv(0x30, append(tlv(0x02, integerContent(rs.r, form)),
                            tlv(0x02, integerContent(rs.s, form))));
}

// SM2Verify's result and everything it printed.
struct Outcome {
    int result;
    std::string printed;
};

Outcome verify(Bytes record, Bytes digest, Bytes der, unsigned int recordLength = 132) {
    StdoutCapture capture;
    const int result = SM2Verify(record.data(), recordLength, digest.data(),
                                 static_cast<unsigned int>(digest.size()),
                                 der.empty() ? nullptr : der.data(),
                                 static_cast<unsigned int>(der.size()));
    return {result, capture.text()};
}

const Outcome kAccepted = {0, kCallIn};
const Outcome kMismatch = {1, std::string(kCallIn) + kVerifyFailed};
const Outcome kSilentlyRejected = {1, kCallIn};

bool operator==(const Outcome& a, const Outcome& b) {
    return a.result == b.result && a.printed == b.printed;
}

void PrintTo(const Outcome& outcome, std::ostream* os) {
    *os << "{" << outcome.result << ", \"" << outcome.printed << "\"}";
}

TEST(Sm2DigestTest, ZValueFollowsTheStandardFormula) {
    Signer signer;
    std::mt19937 rng(21);
    const Bytes curve = fromHex(
        "FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF00000000FFFFFFFFFFFFFFFC"
        "28E9FA9E9D9F5E344D5A9E4BCF6509A7F39789F515AB8F92DDBCBD414D940E93"
        "32C4AE2C1F1981195F9904466A39C9948FE30BBFF2660BE1715A4589334C74C7"
        "BC3736A2F4F6779C59BDCEE36B692153D0A9877CC62A474002DF32E52139F0A0");
    const Bytes id(kUserId, kUserId + 16);
    const Bytes z = opensslSm3(append(append(append(append(Bytes{0x00, 0x80}, id), curve),
                                             signer.x), signer.y));
    for (size_t length : {0u, 1u, 100u, 5000u}) {
        const Bytes message = randomBytes(rng, length);
        EXPECT_EQ(signer.digest(message), opensslSm3(append(z, message))) << length;
    }

    // An ID of 8192 bytes has ENTL 0 and still enters Z.
    Bytes longId = randomBytes(rng, 8192);
    const Bytes longZ = opensslSm3(append(append(append(append(Bytes{0x00, 0x00}, longId), curve),
                                                 signer.x), signer.y));
    Bytes message = randomBytes(rng, 50);
    Bytes e(32);
    EXPECT_EQ(ztutil_sm3_with_sm2(message.data(), 50, signer.record.data(), 132,
                                  reinterpret_cast<const char*>(longId.data()), 8192, e.data()),
              1);
    EXPECT_EQ(e, opensslSm3(append(longZ, message)));
}

TEST(Sm2DigestTest, WithoutKeyOrIdItIsPlainSm3) {
    Signer signer;
    Bytes message = {'a', 'b', 'c'};
    const Bytes plain = opensslSm3(message);
    Bytes e(32);
    EXPECT_EQ(ztutil_sm3_with_sm2(message.data(), 3, signer.record.data(), 132, kUserId, 0, e.data()), 1);
    EXPECT_EQ(e, plain);
    std::fill(e.begin(), e.end(), 0);
    EXPECT_EQ(ztutil_sm3_with_sm2(message.data(), 3, nullptr, 132, kUserId, 16, e.data()), 1);
    EXPECT_EQ(e, plain);
    std::fill(e.begin(), e.end(), 0);
    EXPECT_EQ(ztutil_sm3_with_sm2(message.data(), 3, signer.record.data(), 0, kUserId, 16, e.data()), 1);
    EXPECT_EQ(e, plain);
    std::fill(e.begin(), e.end(), 0);
    EXPECT_EQ(ztutil_sm3_with_sm2(message.data(), 3, signer.record.data(), 132, nullptr, 16, e.data()), 1);
    EXPECT_EQ(e, plain);

    // A record too short to hold the coordinates is refused.
    Bytes untouched(32, 0xAB);
    EXPECT_EQ(ztutil_sm3_with_sm2(message.data(), 3, signer.record.data(), 131, kUserId, 16,
                                  untouched.data()),
              0);
    EXPECT_EQ(untouched, Bytes(32, 0xAB));
}

TEST(Sm2VerifyTest, OpenSslSignaturesVerifyAndOneBitChangesAreRejected) {
    std::mt19937 rng(22);
    for (int keyIndex = 0; keyIndex < 6; ++keyIndex) {
        Signer signer;
        for (int i = 0; i < 50; ++i) {
            const Bytes message = randomBytes(rng, rng() % 300);
            const Bytes der = signer.sign(message);
            const Bytes e = signer.digest(message);
            ASSERT_EQ(verify(signer.record, e, der), kAccepted) << keyIndex << "/" << i;

            Bytes changed = message.empty() ? Bytes{0} : message;
            changed[rng() % changed.size()] ^= static_cast<unsigned char>(1u << (rng() % 8));
            EXPECT_EQ(verify(signer.record, signer.digest(changed), der), kMismatch);

            const RS rs = split(der);
            RS flipped = rs;
            flipped.r[rng() % 32] ^= static_cast<unsigned char>(1u << (rng() % 8));
            EXPECT_EQ(verify(signer.record, e, encode(flipped, IntegerForm::Minimal)), kMismatch);
            flipped = rs;
            flipped.s[rng() % 32] ^= static_cast<unsigned char>(1u << (rng() % 8));
            EXPECT_EQ(verify(signer.record, e, encode(flipped, IntegerForm::Minimal)), kMismatch);
        }
    }
}

TEST(Sm2VerifyTest, ConcurrentVerificationsShareTheCurve) {
    Signer signer;
    const Bytes message = {4, 5, 6};
    const Bytes der = signer.sign(message);
    const Bytes e = signer.digest(message);
    std::atomic<int> accepted{0};
    StdoutCapture capture;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10; ++i) {
                Bytes record = signer.record, digest = e, signature = der;
                if (SM2Verify(record.data(), 132, digest.data(), 32, signature.data(),
                              static_cast<unsigned int>(signature.size())) == 0)
                    ++accepted;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    capture.text();
    EXPECT_EQ(accepted.load(), 40);
}

TEST(Sm2VerifyTest, SmallAndHighBitIntegersInEveryForm) {
    Signer signer;
    std::mt19937 rng(23);
    bool smallR = false, smallS = false, highR = false, exact80 = false;
    int tried = 0;
    while (!(smallR && smallS && highR && exact80) && tried < 20000) {
        ++tried;
        const Bytes message = randomBytes(rng, 20);
        const Bytes der = signer.sign(message);
        const RS rs = split(der);
        const bool isSmallR = rs.r[0] == 0, isSmallS = rs.s[0] == 0;
        const bool isHighR = rs.r[0] >= 0x80;
        const bool isExact80 = rs.r[0] == 0x80 || rs.s[0] == 0x80;
        if (!(isSmallR && !smallR) && !(isSmallS && !smallS) && !(isHighR && !highR) &&
            !(isExact80 && !exact80))
            continue;
        smallR |= isSmallR;
        smallS |= isSmallS;
        highR |= isHighR;
        exact80 |= isExact80;
        const Bytes e = signer.digest(message);
        for (IntegerForm form : {IntegerForm::Minimal, IntegerForm::Kept32,
                                 IntegerForm::PrefixAbove80, IntegerForm::Raw32}) {
            EXPECT_EQ(verify(signer.record, e, encode(rs, form)), kAccepted)
                << "form " << static_cast<int>(form) << " r0 " << int(rs.r[0]) << " s0 "
                << int(rs.s[0]);
        }
        // OpenSSL 3's own decoder refuses the forms that are not minimal.
        for (IntegerForm form : {IntegerForm::Kept32, IntegerForm::PrefixAbove80}) {
            const Bytes other = encode(rs, form);
            if (other == encode(rs, IntegerForm::Minimal))
                continue;
            const unsigned char* p = other.data();
            ECDSA_SIG* sig = d2i_ECDSA_SIG(nullptr, &p, static_cast<long>(other.size()));
            EXPECT_EQ(sig, nullptr);
            ECDSA_SIG_free(sig);
        }
    }
    EXPECT_TRUE(smallR && smallS && highR && exact80) << "after " << tried << " signatures";
}

TEST(Sm2VerifyTest, RejectionsAndTheirMessages) {
    Signer signer;
    const Bytes message = {1, 2, 3};
    const Bytes der = signer.sign(message);
    const Bytes e = signer.digest(message);
    const RS rs = split(der);
    const Bytes n = fromHex("FFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFF7203DF6B21C6052B53BBF40939D54123");

    // Any record length but 132 gives the point (0, 0), which is refused.
    Bytes longer = signer.record;
    longer.push_back(0);
    EXPECT_EQ(verify(signer.record, e, der, 131), kSilentlyRejected);
    EXPECT_EQ(verify(longer, e, der, 133), kSilentlyRejected);
    // A point off the curve likewise.
    Bytes offCurve = signer.record;
    offCurve[131] ^= 1;
    EXPECT_EQ(verify(offCurve, e, der), kSilentlyRejected);

    // Signatures that do not decode.
    EXPECT_EQ(verify(signer.record, e, Bytes()), kSilentlyRejected);
    EXPECT_EQ(verify(signer.record, e, Bytes(der.begin(), der.end() - 1)), kSilentlyRejected);
    Bytes badTag = der;
    badTag[0] = 0x31;
    EXPECT_EQ(verify(signer.record, e, badTag), kSilentlyRejected);

    // Values out of range, swapped, or over another digest.
    const Bytes zero(32, 0);
    EXPECT_EQ(verify(signer.record, e, encode({zero, rs.s}, IntegerForm::Minimal)), kMismatch);
    EXPECT_EQ(verify(signer.record, e, encode({rs.r, zero}, IntegerForm::Minimal)), kMismatch);
    EXPECT_EQ(verify(signer.record, e, encode({n, rs.s}, IntegerForm::Minimal)), kMismatch);
    EXPECT_EQ(verify(signer.record, e, encode({rs.r, n}, IntegerForm::Minimal)), kMismatch);
    EXPECT_EQ(verify(signer.record, e, encode({rs.s, rs.r}, IntegerForm::Minimal)), kMismatch);
    // r + s = n makes t zero.
    BIGNUM* bnN = BN_bin2bn(n.data(), 32, nullptr);
    BIGNUM* bnR = BN_bin2bn(rs.r.data(), 32, nullptr);
    BN_sub(bnN, bnN, bnR);
    Bytes complement(32);
    BN_bn2binpad(bnN, complement.data(), 32);
    BN_free(bnN);
    BN_free(bnR);
    EXPECT_EQ(verify(signer.record, e, encode({rs.r, complement}, IntegerForm::Minimal)),
              kMismatch);
    for (int bit = 0; bit < 256; bit += 37) {
        Bytes other = e;
        other[bit / 8] ^= static_cast<unsigned char>(1 << (bit % 8));
        EXPECT_EQ(verify(signer.record, other, der), kMismatch) << bit;
    }
    // Digests longer than 32 bytes are cut to their first 32 bytes.
    EXPECT_EQ(verify(signer.record, append(e, Bytes{9, 9}), der), kAccepted);
    EXPECT_EQ(verify(signer.record, Bytes(e.begin(), e.end() - 1), der), kMismatch);
}

TEST(Sm2SignatureDerTest, AcceptsWhatTheOlderDecoderAccepted) {
    using ztutil::sm2::SignatureIntegers;
    auto read = [](const Bytes& der, std::string* r, std::string* s) {
        SignatureIntegers integers;
        if (!ztutil::sm2::readSignatureIntegers(der.data(), der.size(), &integers))
            return false;
        *r = std::string(integers.r.data, integers.r.data + integers.r.size);
        *s = std::string(integers.s.data, integers.s.data + integers.s.size);
        return true;
    };
    std::string r, s;
    // Definite, long-form and non-minimal lengths; trailing bytes after the
    // SEQUENCE are ignored.
    EXPECT_TRUE(read({0x30, 0x06, 0x02, 0x01, 0x05, 0x02, 0x01, 0x07}, &r, &s));
    EXPECT_EQ(r, "\x05");
    EXPECT_EQ(s, "\x07");
    EXPECT_TRUE(read({0x30, 0x82, 0x00, 0x07, 0x02, 0x81, 0x01, 0x05, 0x02, 0x01, 0x07}, &r, &s));
    EXPECT_TRUE(read({0x30, 0x06, 0x02, 0x01, 0x05, 0x02, 0x01, 0x07, 0xFF, 0xFF}, &r, &s));
    // Indefinite length with its end-of-contents marker.
    EXPECT_TRUE(read({0x30, 0x80, 0x02, 0x01, 0x05, 0x02, 0x01, 0x07, 0x00, 0x00}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x80, 0x02, 0x01, 0x05, 0x02, 0x01, 0x07}, &r, &s));
    // High-tag-number form of the SEQUENCE tag; empty INTEGER contents.
    EXPECT_TRUE(read({0x3F, 0x10, 0x04, 0x02, 0x00, 0x02, 0x00}, &r, &s));
    EXPECT_EQ(r, "");

    // Refused: extra element, missing element, end-of-contents inside a
    // definite SEQUENCE, constructed or context-class INTEGER, primitive
    // SEQUENCE, indefinite primitive, content longer than the input, a long
    // length with nothing after it.
    EXPECT_FALSE(read({0x30, 0x09, 0x02, 0x01, 0x05, 0x02, 0x01, 0x07, 0x02, 0x01, 0x01}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x03, 0x02, 0x01, 0x05}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x05, 0x02, 0x01, 0x05, 0x00, 0x00}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x06, 0x22, 0x01, 0x05, 0x02, 0x01, 0x07}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x06, 0x82, 0x01, 0x05, 0x02, 0x01, 0x07}, &r, &s));
    EXPECT_FALSE(read({0x10, 0x06, 0x02, 0x01, 0x05, 0x02, 0x01, 0x07}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x07, 0x02, 0x80, 0x05, 0x00, 0x00, 0x02, 0x00}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x07, 0x02, 0x01, 0x05, 0x02, 0x01, 0x07}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x04, 0x02, 0x00, 0x02, 0x81}, &r, &s));
    EXPECT_FALSE(read({0x30, 0x85, 0x01, 0x00, 0x00, 0x00, 0x00}, &r, &s));

    // Every prefix of a valid signature and random bytes stay in bounds.
    std::mt19937 rng(24);
    const Bytes valid = tlv(0x30, append(tlv(0x02, randomBytes(rng, 33)), tlv(0x02, randomBytes(rng, 32))));
    for (size_t length = 0; length < valid.size(); ++length)
        EXPECT_FALSE(read(Bytes(valid.begin(), valid.begin() + length), &r, &s)) << length;
    for (int i = 0; i < 20000; ++i) {
        Bytes noise = randomBytes(rng, rng() % 12);
        if (!noise.empty())
            noise[0] = (rng() % 2) ? 0x30 : noise[0];
        SignatureIntegers integers;
        if (ztutil::sm2::readSignatureIntegers(noise.data(), noise.size(), &integers)) {
            EXPECT_LE(integers.r.data + integers.r.size, noise.data() + noise.size());
            EXPECT_LE(integers.s.data + integers.s.size, noise.data() + noise.size());
        }
    }
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
