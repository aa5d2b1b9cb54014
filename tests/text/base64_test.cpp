// The process-wide and the explicit-alphabet Base64 codecs, with Qt's
// encoder (translated into the SM2 alphabet where needed) as the reference.
#include <climits>
#include <cstdlib>

#include "support/common.h"
#include "ztutil/base64.h"
#include "ztutil/ztbase64.h"

using ztutil_test::StdoutCapture;

namespace {

unsigned char* bytes(const char* text) {
    return reinterpret_cast<unsigned char*>(const_cast<char*>(text));
}

// ZTBase64Encode's text ("<null>" for a null result).
std::string encode(QByteArray data) {
    char* text = ZTBase64Encode(bytes(data.constData()), static_cast<unsigned long>(data.size()));
    const std::string result = text ? text : "<null>";
    std::free(text);
    return result;
}

// ZTBase64Decode's bytes ("<null>" for a null result) and what it printed.
QByteArray decode(const char* text, std::string* printed = nullptr) {
    StdoutCapture out;
    long length = -1;
    unsigned char* buffer = ZTBase64Decode(text, &length);
    if (printed != nullptr)
        *printed = out.text();
    if (!buffer)
        return QByteArray("<null>");
    EXPECT_EQ(buffer[length], 0) << "decoded bytes are zero-terminated";
    const QByteArray result(reinterpret_cast<char*>(buffer), static_cast<int>(length));
    std::free(buffer);
    return result;
}

// DeCodeBase64Ex of `text` with ValueLen its full length unless given.
QByteArray decodeExplicit(const char* text, char* table, int length = -1) {
    int outLength = -1;
    const int valueLength = length >= 0 ? length : int(std::strlen(text));
    unsigned char* buffer = DeCodeBase64Ex(bytes(text), valueLength, table, &outLength);
    EXPECT_NE(buffer, nullptr);
    const QByteArray result(reinterpret_cast<char*>(buffer), outLength);
    delete[] buffer;
    return result;
}

// Restores the standard process-wide alphabet after each test.
class ProcessCodec : public ::testing::Test {
protected:
    void TearDown() override { ZTBase64SetTableCode(nullptr); }
};

TEST_F(ProcessCodec, FailuresAndTheirMessages) {
    StdoutCapture out;
    EXPECT_EQ(ZTBase64Encode(nullptr, 3), nullptr);
    EXPECT_EQ(ZTBase64Encode(bytes("abc"), 0), nullptr);  // silently
    // The size check comes before any byte is read.
    EXPECT_EQ(ZTBase64Encode(bytes("x"), static_cast<unsigned long>(INT_MAX) + 1), nullptr);
    EXPECT_EQ(ZTBase64Decode(nullptr, nullptr), nullptr);
    EXPECT_EQ(out.text(), "argument error...... pbtdata is null.\nmemory not enough...........\n"
                          "[ZTBase64Decode] pszBase64Code == NULL.\n");
    const std::pair<const char*, const char*> bad[] = {
        {"TWE", "nBase64Len = [3]"}, {"TWFu\nTWFu", "nBase64Len = [9]"}, {"TW E", "btValue[0] == 0xFF."},
        {"TWF!", "btValue[0] == 0xFF."}, {"!WFu", "btValue[0] == 0xFF."}};
    for (const auto& c : bad) {
        std::string printed;
        EXPECT_EQ(decode(c.first, &printed), "<null>") << c.first;
        EXPECT_EQ(printed, "[ZTBase64Decode] " + std::string(c.second) + "\n") << c.first;
    }
}

TEST_F(ProcessCodec, DecodeEdgesAndInnerPadding) {
    EXPECT_EQ(decode(""), QByteArray());
    unsigned char* noLength = ZTBase64Decode("TWFu", nullptr);
    ASSERT_NE(noLength, nullptr);
    EXPECT_STREQ(reinterpret_cast<char*>(noLength), "Man");
    std::free(noLength);
    // Padding in an inner group decodes as zero bits; only the last group's shortens the result.
    EXPECT_EQ(decode("TQ==TWFu"), QByteArray("M\0\0Man", 6));
    EXPECT_EQ(decode("TWFuTQ=="), QByteArray("ManM"));
}

TEST_F(ProcessCodec, SM2AlphabetPutsPaddingFirst) {
    EXPECT_EQ(ZTBase64SetTableCode(strSM2Table), strSM2Table);
    EXPECT_EQ(encode(QByteArray(1, '\0')), "==//");  // "=" is an ordinary digit here, "/" the padding
    EXPECT_EQ(decode("==//"), QByteArray(1, '\0'));
    EXPECT_EQ(ZTBase64EncodeEx(QByteArray(1, '\0')), QStringLiteral("==//"));
    // Null restores the standard alphabet, which is not the exported pointer.
    char* restored = ZTBase64SetTableCode(nullptr);
    EXPECT_STREQ(restored, strNormalTable);
    EXPECT_NE(restored, strNormalTable);
    EXPECT_EQ(encode(QByteArray(1, '\0')), "AA==");
    EXPECT_EQ(ZTBase64EncodeEx(QByteArray("Man")), QStringLiteral("TWFu"));
    EXPECT_TRUE(ZTBase64EncodeEx(QByteArray()).isNull());
}

TEST(ExplicitCodec, EmptyNullAndLenientInput) {
    for (int length : {0, -2}) {
        char* text = EnCodeBase64Ex(bytes("abc"), length, strNormalTable);
        ASSERT_NE(text, nullptr);
        EXPECT_STREQ(text, "");
        std::free(text);
    }
    EXPECT_EQ(EnCodeBase64Ex(nullptr, 3, strNormalTable), nullptr);
    EXPECT_EQ(EnCodeBase64Ex(bytes("Man"), 3, nullptr), nullptr);
    int outLength = 99;
    EXPECT_EQ(DeCodeBase64Ex(nullptr, 4, strNormalTable, &outLength), nullptr);
    EXPECT_EQ(outLength, 99);
    unsigned char* negative = DeCodeBase64Ex(bytes("TWFu"), -5, strNormalTable, &outLength);
    EXPECT_EQ(outLength, 0);
    delete[] negative;

    // Characters outside the table (whitespace too) read as padding; a
    // length that is not a multiple of 4 reads the terminator as padding; the
    // byte at ValueLen is examined.
    const std::pair<const char*, const char*> lenient[] = {
        {"TW!u", "M"}, {"TW\nu", "M"}, {"TWFuTQ", "ManM"}, {"TWFuTWE", "ManMa"}, {"", ""}};
    for (const auto& c : lenient)
        EXPECT_EQ(decodeExplicit(c.first, strNormalTable), QByteArray(c.second)) << c.first;
    EXPECT_EQ(decodeExplicit("TWFu", strNormalTable, 3), QByteArray("Man"));
}

TEST(Base64Component, MethodsUseTheCodecs) {
    ZTBase64 component;
    QByteArray data("Man");
    char* text = component.encodeBase64Ex(bytes(data.constData()), 3, strNormalTable);
    EXPECT_STREQ(text, "TWFu");
    int length = 0;
    unsigned char* decoded = component.decodeBase64Ex(bytes(text), 4, strNormalTable, &length);
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(decoded), length), data);
    delete[] decoded;
    std::free(text);
    component.setTableCode(strSM2Table);
    EXPECT_EQ(component.encodeEx(QByteArray(1, '\0')), QStringLiteral("==//"));
    component.setTableCode(nullptr);
    EXPECT_EQ(component.encodeEx(QByteArray("M")), QStringLiteral("TQ=="));
}

}  // namespace
