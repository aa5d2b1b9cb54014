#include <gtest/gtest.h>

#include <QByteArray>
#include <QMetaObject>
#include <climits>
#include <cstring>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "support/capture.h"
#include "ztutil/base64.h"
#include "ztutil/ztbase64.h"

using ztutil_test::StdoutCapture;

namespace {

unsigned char* bytes(const char* text) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(text));
}

// Runs ZTBase64Encode and returns the text ("<null>" for a null result).
std::string encode(const QByteArray& data) {
    QByteArray copy = data;
    char* text = ZTBase64Encode(reinterpret_cast<unsigned char*>(copy.data()),
                                static_cast<unsigned long>(copy.size()));
    std::string result = text ? text : "<null>";
    std::free(text);
    return result;
}

// Runs ZTBase64Decode; `ok` tells whether it returned a buffer.
QByteArray decode(const char* text, bool* ok) {
    long length = -1;
    unsigned char* buffer = ZTBase64Decode(text, &length);
    *ok = buffer != nullptr;
    if (!buffer)
        return QByteArray();
    EXPECT_EQ(buffer[length], 0) << "decoded bytes are zero-terminated";
    QByteArray result(reinterpret_cast<char*>(buffer), static_cast<int>(length));
    std::free(buffer);
    return result;
}

// The standard encoding rewritten into another 65-character alphabet.
QByteArray translate(const QByteArray& standard, const char* table) {
    QByteArray out = standard;
    for (char& c : out)
        c = table[std::strchr(strNormalTable, c) - strNormalTable];
    return out;
}

QByteArray randomBytes(std::mt19937& rng, int maxLength) {
    QByteArray data(static_cast<int>(rng() % (maxLength + 1)), '\0');
    for (char& c : data)
        c = static_cast<char>(rng());
    return data;
}

// Restores the standard process-wide alphabet after each test.
class ProcessCodec : public ::testing::Test {
protected:
    void TearDown() override { ZTBase64SetTableCode(nullptr); }
};

TEST_F(ProcessCodec, EncodesTheTextbookVectors) {
    EXPECT_EQ(encode("Man"), "TWFu");
    EXPECT_EQ(encode("Ma"), "TWE=");
    EXPECT_EQ(encode("M"), "TQ==");
    EXPECT_EQ(encode(QByteArray("\x00\xff\xfe", 3)), "AP/+");
}

TEST_F(ProcessCodec, EncodeRejectsNullDataLoudlyAndEmptyDataSilently) {
    StdoutCapture nullOut;
    EXPECT_EQ(ZTBase64Encode(nullptr, 3), nullptr);
    EXPECT_EQ(nullOut.text(), "argument error...... pbtdata is null.\n");

    StdoutCapture emptyOut;
    EXPECT_EQ(ZTBase64Encode(bytes("abc"), 0), nullptr);
    EXPECT_EQ(emptyOut.text(), "");
}

TEST_F(ProcessCodec, EncodeRefusesLengthsBeyondThe32BitCount) {
    StdoutCapture out;
    // The size check comes before any byte is read.
    EXPECT_EQ(ZTBase64Encode(bytes("x"), static_cast<unsigned long>(INT_MAX) + 1), nullptr);
    EXPECT_EQ(out.text(), "memory not enough...........\n");
}

TEST_F(ProcessCodec, DecodeReportsEachFailure) {
    bool ok = true;
    {
        StdoutCapture out;
        EXPECT_EQ(ZTBase64Decode(nullptr, nullptr), nullptr);
        EXPECT_EQ(out.text(), "[ZTBase64Decode] pszBase64Code == NULL.\n");
    }
    {
        StdoutCapture out;
        decode("TWE", &ok);
        EXPECT_FALSE(ok);
        EXPECT_EQ(out.text(), "[ZTBase64Decode] nBase64Len = [3]\n");
    }
    for (const char* bad : {"TW E", "TWFu\nTWFu", "TWF!", "!WFu"}) {
        StdoutCapture out;
        decode(bad, &ok);
        EXPECT_FALSE(ok) << bad;
        if (std::strlen(bad) % 4 == 0) {
            EXPECT_EQ(out.text(), "[ZTBase64Decode] btValue[0] == 0xFF.\n") << bad;
        }
    }
}

TEST_F(ProcessCodec, DecodeLengthsAndPadding) {
    bool ok = false;
    EXPECT_EQ(decode("TQ==", &ok), QByteArray("M"));
    EXPECT_EQ(decode("TWE=", &ok), QByteArray("Ma"));
    EXPECT_EQ(decode("TWFu", &ok), QByteArray("Man"));

    long length = -1;
    unsigned char* empty = ZTBase64Decode("", &length);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(empty[0], 0);
    std::free(empty);

    unsigned char* noLength = ZTBase64Decode("TWFu", nullptr);
    ASSERT_NE(noLength, nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(noLength)), "Man");
    std::free(noLength);
}

TEST_F(ProcessCodec, PaddingInAnInnerGroupDecodesAsZeroBits) {
    bool ok = false;
    EXPECT_EQ(decode("TQ==TWFu", &ok), QByteArray("M\0\0Man", 6));
    EXPECT_TRUE(ok);
    // Only the last group's padding shortens the result.
    EXPECT_EQ(decode("TWFuTQ==", &ok), QByteArray("ManM"));
}

TEST_F(ProcessCodec, SM2AlphabetPutsPaddingFirst) {
    EXPECT_EQ(ZTBase64SetTableCode(strSM2Table), strSM2Table);
    EXPECT_EQ(encode(QByteArray(1, '\0')), "==//");
    bool ok = false;
    EXPECT_EQ(decode("==//", &ok), QByteArray(1, '\0'));
    EXPECT_TRUE(ok);
    // "=" is an ordinary digit here, "/" the padding.
    EXPECT_EQ(encode("Man"), "SVEt");

    // Null restores the standard alphabet, which is not the exported pointer.
    char* restored = ZTBase64SetTableCode(nullptr);
    EXPECT_STREQ(restored, strNormalTable);
    EXPECT_NE(restored, strNormalTable);
    EXPECT_EQ(encode(QByteArray(1, '\0')), "AA==");
}

TEST_F(ProcessCodec, RandomRoundTripsAgreeWithQt) {
    std::mt19937 rng(20261121);
    for (int round = 0; round < 400; ++round) {
        const QByteArray data = randomBytes(rng, 200);
        const bool sm2 = round % 2 == 1;
        ZTBase64SetTableCode(sm2 ? strSM2Table : nullptr);
        const QByteArray expected =
            sm2 ? translate(data.toBase64(), strSM2Table) : data.toBase64();
        if (data.isEmpty()) {
            EXPECT_EQ(encode(data), "<null>");
            continue;
        }
        ASSERT_EQ(encode(data), expected.toStdString()) << round;
        bool ok = false;
        ASSERT_EQ(decode(expected.constData(), &ok), data) << round;
    }
}

TEST_F(ProcessCodec, EncodeExFollowsTheCurrentAlphabet) {
    EXPECT_EQ(ZTBase64EncodeEx(QByteArray("Man")), QStringLiteral("TWFu"));
    ZTBase64SetTableCode(strSM2Table);
    EXPECT_EQ(ZTBase64EncodeEx(QByteArray(1, '\0')), QStringLiteral("==//"));
    EXPECT_TRUE(ZTBase64EncodeEx(QByteArray()).isNull());
}

TEST(ExplicitCodec, EncodesWithTheGivenAlphabet) {
    char* text = EnCodeBase64Ex(bytes("Man"), 3, strNormalTable);
    EXPECT_STREQ(text, "TWFu");
    std::free(text);
    text = EnCodeBase64Ex(bytes("M"), 1, strSM2Table);
    EXPECT_STREQ(text, "SP//");
    std::free(text);

    text = EnCodeBase64Ex(bytes("abc"), 0, strNormalTable);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "");
    std::free(text);
    text = EnCodeBase64Ex(bytes("abc"), -2, strNormalTable);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "");
    std::free(text);

    EXPECT_EQ(EnCodeBase64Ex(nullptr, 3, strNormalTable), nullptr);
    EXPECT_EQ(EnCodeBase64Ex(bytes("Man"), 3, nullptr), nullptr);
}

// Decodes NUL-terminated `text` with its full length as ValueLen.
QByteArray decodeExplicit(const char* text, char* table, int length = -1) {
    int outLength = -1;
    const int valueLength = length >= 0 ? length : static_cast<int>(std::strlen(text));
    unsigned char* buffer = DeCodeBase64Ex(bytes(text), valueLength, table, &outLength);
    EXPECT_NE(buffer, nullptr);
    QByteArray result(reinterpret_cast<char*>(buffer), outLength);
    delete[] buffer;
    return result;
}

TEST(ExplicitCodec, DecodeIsLenient) {
    // "!" is not in the table and reads as padding.
    EXPECT_EQ(decodeExplicit("TW!u", strNormalTable), QByteArray("M"));
    // A length that is not a multiple of 4 reads the terminator as padding.
    EXPECT_EQ(decodeExplicit("TWFuTQ", strNormalTable), QByteArray("ManM"));
    EXPECT_EQ(decodeExplicit("TWFuTWE", strNormalTable), QByteArray("ManMa"));
    // The byte at ValueLen is examined: here it is a real digit.
    EXPECT_EQ(decodeExplicit("TWFu", strNormalTable, 3), QByteArray("Man"));
    EXPECT_EQ(decodeExplicit("", strNormalTable), QByteArray());
    EXPECT_EQ(decodeExplicit("==//", strSM2Table), QByteArray(1, '\0'));
    // Whitespace decodes as padding rather than failing.
    EXPECT_EQ(decodeExplicit("TW\nu", strNormalTable), QByteArray("M"));
}

TEST(ExplicitCodec, DecodeNullInputsGiveNullAndLeaveTheLength) {
    int outLength = 99;
    EXPECT_EQ(DeCodeBase64Ex(nullptr, 4, strNormalTable, &outLength), nullptr);
    EXPECT_EQ(outLength, 99);
    unsigned char* buffer = DeCodeBase64Ex(bytes("TWFu"), -5, strNormalTable, &outLength);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(outLength, 0);
    delete[] buffer;
}

TEST(ExplicitCodec, RandomRoundTripsInBothAlphabets) {
    std::mt19937 rng(7);
    for (int round = 0; round < 400; ++round) {
        const QByteArray data = randomBytes(rng, 300);
        char* table = round % 2 ? strSM2Table : strNormalTable;
        QByteArray copy = data;
        char* text = EnCodeBase64Ex(reinterpret_cast<unsigned char*>(copy.data()), copy.size(), table);
        ASSERT_NE(text, nullptr);
        const QByteArray expected = translate(data.toBase64(), table);
        ASSERT_EQ(QByteArray(text), expected) << round;
        ASSERT_EQ(decodeExplicit(text, table), data) << round;
        std::free(text);
    }
}

TEST(Base64Component, MethodsAreReachableByNameWithTheHostsTypeNames) {
    ZTBase64 component;
    QByteArray data("Man");
    char* text = nullptr;
    ASSERT_TRUE(QMetaObject::invokeMethod(
        &component, "encodeBase64Ex", Qt::DirectConnection, Q_RETURN_ARG(char*, text),
        Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(data.data())), Q_ARG(int, 3),
        Q_ARG(char*, strNormalTable)));
    EXPECT_STREQ(text, "TWFu");

    unsigned char* decoded = nullptr;
    int length = 0;
    ASSERT_TRUE(QMetaObject::invokeMethod(
        &component, "decodeBase64Ex", Qt::DirectConnection, Q_RETURN_ARG(unsigned char*, decoded),
        Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(text)), Q_ARG(int, 4),
        Q_ARG(char*, strNormalTable), Q_ARG(int*, &length)));
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(decoded), length), data);
    delete[] decoded;
    std::free(text);

    ASSERT_TRUE(QMetaObject::invokeMethod(&component, "setTableCode", Qt::DirectConnection,
                                          Q_ARG(char*, strSM2Table)));
    QString encoded;
    ASSERT_TRUE(QMetaObject::invokeMethod(&component, "encodeEx", Qt::DirectConnection,
                                          Q_RETURN_ARG(QString, encoded),
                                          Q_ARG(QByteArray, QByteArray(1, '\0'))));
    EXPECT_EQ(encoded, QStringLiteral("==//"));
    ASSERT_TRUE(QMetaObject::invokeMethod(&component, "setTableCode", Qt::DirectConnection,
                                          Q_ARG(char*, nullptr)));
    EXPECT_EQ(component.encodeEx(QByteArray("M")), QStringLiteral("TQ=="));
}

TEST(Base64Component, WronglySpelledTypesFindNoMethod) {
    ZTBase64 component;
    const QMetaObject* meta = component.metaObject();
    EXPECT_GE(meta->indexOfMethod("encodeBase64Ex(unsigned char*,int,char*)"), 0);
    EXPECT_LT(meta->indexOfMethod("encodeBase64Ex(BYTE*,int,char*)"), 0);
    EXPECT_LT(meta->indexOfMethod("encodeBase64Ex(unsigned char*,int,const char*)"), 0);
    EXPECT_LT(meta->indexOfMethod("setTableCode(const char*)"), 0);
}

}  // namespace
