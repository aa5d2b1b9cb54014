// Conversions between the 64-byte, 128-byte and DER forms of an SM2
// signature value; expected encodings are written out byte by byte.
#include <gtest/gtest.h>

#include <QByteArray>
#include <random>

#include "verify/sign_data_p1.h"
#include "ztutil/ztverifytools.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes value(unsigned char first, unsigned char fill) {
    Bytes v(32, fill);
    v[0] = first;
    return v;
}

Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts)
        out.insert(out.end(), part.begin(), part.end());
    return out;
}

Bytes toAsnData(Bytes shortForm) {
    unsigned int length = 0;
    unsigned char* der = ZTVerifyTools::ZTSM2SignData64ToASNData(
        shortForm.data(), static_cast<unsigned int>(shortForm.size()), &length);
    if (der == nullptr)
        return Bytes();
    Bytes out(der, der + length);
    delete[] der;
    return out;
}

Bytes to70Ex(Bytes shortForm) {
    unsigned int length = 0;
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(shortForm.data(), 0, nullptr, &length), 1);
    Bytes out(length + 4, 0xEE);  // room beyond the length stays untouched
    unsigned int written = 0;
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(shortForm.data(), 64, out.data(), &written), 1);
    EXPECT_EQ(written, length);
    EXPECT_EQ(Bytes(out.end() - 4, out.end()), Bytes(4, 0xEE));
    out.resize(length);
    return out;
}

Bytes to128(Bytes input) {
    Bytes out(128, 0xEE);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo128(
                  input.data(), static_cast<unsigned int>(input.size()), out.data(), 128),
              1);
    return out;
}

Bytes to64(Bytes wide) {
    Bytes out(64, 0xEE);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo64(wide.data(), 128, out.data(), 64), 1);
    return out;
}

Bytes p1(const Bytes& shortForm) {
    const QByteArray out = convSignDataToP1(
        QByteArray(reinterpret_cast<const char*>(shortForm.data()), static_cast<int>(shortForm.size())));
    return Bytes(out.begin(), out.end());
}

TEST(SignFormsTest, IntegerPrefixRulesOfTheTwoDerBuilders) {
    const Bytes r80 = value(0x80, 0x00);
    const Bytes s7f = value(0x7F, 0x11);
    // 0x80: a 00 in front from ZTSM2SignData64ToASNData, none from 70Ex and P1.
    EXPECT_EQ(toAsnData(concat({r80, s7f})),
              concat({{0x30, 0x45, 0x02, 0x21, 0x00}, r80, {0x02, 0x20}, s7f}));
    EXPECT_EQ(to70Ex(concat({r80, s7f})), concat({{0x30, 0x44, 0x02, 0x20}, r80, {0x02, 0x20}, s7f}));
    EXPECT_EQ(p1(concat({r80, s7f})), to70Ex(concat({r80, s7f})));

    // High bits clear: 70 bytes; first bytes above 0x80: 72 bytes, in both.
    const Bytes low = concat({value(0x12, 0x34), value(0x00, 0x56)});
    const Bytes lowDer = concat({{0x30, 0x44, 0x02, 0x20}, value(0x12, 0x34), {0x02, 0x20},
                                 value(0x00, 0x56)});
    EXPECT_EQ(toAsnData(low), lowDer);
    EXPECT_EQ(to70Ex(low), lowDer);
    EXPECT_EQ(p1(low), lowDer);
    const Bytes high = concat({value(0x81, 0x01), value(0xFF, 0x02)});
    const Bytes highDer = concat({{0x30, 0x46, 0x02, 0x21, 0x00}, value(0x81, 0x01),
                                  {0x02, 0x21, 0x00}, value(0xFF, 0x02)});
    EXPECT_EQ(toAsnData(high), highDer);
    EXPECT_EQ(to70Ex(high), highDer);
    EXPECT_EQ(p1(high), highDer);

    EXPECT_EQ(toAsnData(Bytes(63, 1)), Bytes());
    EXPECT_EQ(ZTVerifyTools::ZTSM2SignData64ToASNData(nullptr, 64, nullptr), nullptr);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(nullptr, 64, nullptr, nullptr), 0);
    for (int size : {63, 65, 0}) {
        Bytes odd(static_cast<size_t>(size), 0x42);
        EXPECT_EQ(p1(odd), odd) << size;
    }
}

TEST(SignFormsTest, WideAndShortForms) {
    std::mt19937 rng(51);
    Bytes shortForm(64);
    for (unsigned char& byte : shortForm)
        byte = static_cast<unsigned char>(rng());
    const Bytes wide = to128(shortForm);
    EXPECT_EQ(wide, concat({Bytes(32, 0), Bytes(shortForm.begin(), shortForm.begin() + 32),
                            Bytes(32, 0), Bytes(shortForm.begin() + 32, shortForm.end())}));
    // The zero halves are not checked on the way back.
    Bytes dirty = wide;
    dirty[0] = dirty[64] = 0x99;
    EXPECT_EQ(to64(dirty), shortForm);

    Bytes out(65, 0xEE);
    Bytes in127(127, 1);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo64(in127.data(), 127, out.data(), 64), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo64(dirty.data(), 128, out.data(), 65), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo64(nullptr, 128, out.data(), 64), 0);
    EXPECT_EQ(out, Bytes(65, 0xEE));
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo128(shortForm.data(), 64, out.data(), 65), 0);
    EXPECT_EQ(ZTVerifyTools::ZTSM2ConvertSignDataTo128(nullptr, 64, out.data(), 128), 0);
}

TEST(SignFormsTest, DerToWideForm) {
    std::mt19937 rng(52);
    for (int i = 0; i < 200; ++i) {
        Bytes shortForm(64);
        for (unsigned char& byte : shortForm)
            byte = static_cast<unsigned char>(rng());
        if (i % 3 == 0)
            shortForm[0] = 0x80;  // unprefixed in the 70Ex form
        // Both builders' outputs (contents of 32 or 33 bytes) come back.
        EXPECT_EQ(to64(to128(toAsnData(shortForm))), shortForm);
        EXPECT_EQ(to64(to128(to70Ex(shortForm))), shortForm);
    }
    // Not DER: all zero, still 1. Wrong tags: that half stays zero.
    EXPECT_EQ(to128(Bytes(70, 0x41)), Bytes(128, 0));
    const Bytes r = value(0x01, 0x02), s = value(0x03, 0x04);
    EXPECT_EQ(to128(concat({{0x30, 0x44, 0x04, 0x20}, r, {0x02, 0x20}, s})),
              concat({Bytes(64, 0), Bytes(32, 0), s}));
    EXPECT_EQ(to128(concat({{0x30, 0x22, 0x02, 0x20}, r})), concat({Bytes(32, 0), r, Bytes(64, 0)}));
    // A short (minimal) content is copied from its start, not right-aligned;
    // a 33-byte content loses its first byte whatever it is.
    const Bytes shortR(r.begin() + 1, r.end());
    EXPECT_EQ(to128(concat({{0x30, 0x43, 0x02, 0x1F}, shortR, {0x02, 0x20}, s})),
              concat({Bytes(32, 0), shortR, Bytes(1, 0), Bytes(32, 0), s}));
    EXPECT_EQ(to128(concat({{0x30, 0x45, 0x02, 0x21, 0x7E}, r, {0x02, 0x20}, s})),
              concat({Bytes(32, 0), r, Bytes(32, 0), s}));
}

}  // namespace
