// zthost's byte view and DER reader against OpenSSL's own decoders.
#include <gtest/gtest.h>
#include <openssl/asn1.h>
#include <openssl/objects.h>

#include <vector>

#include "readers/der_tree.h"
#include "readers/der_values.h"
#include "support/qt_printers.h"
#include "tools/tool_support.h"

namespace {

// The elements in document order (that children lie inside their parent's
// content, one after the other, is the der_view fuzz target's property).
void walkTree(const DerNode& node, std::vector<DerSeen>* seen) {
    const der::Element& element = node.element;
    seen->push_back({element.offset(), element.tag, element.headerLength(), element.content.size(),
                     element.tag == der::tag::kOid ? der::oidText(element.content) : QString()});
    for (const DerNode& child : node.children)
        walkTree(child, seen);
}

std::pair<QByteArray, QString> openSslOid(const char* dotted) {
    ASN1_OBJECT* object = OBJ_txt2obj(dotted, 1);
    EXPECT_NE(object, nullptr) << dotted;
    const QByteArray content(reinterpret_cast<const char*>(OBJ_get0_data(object)), int(OBJ_length(object)));
    char text[256];
    OBJ_obj2txt(text, sizeof text, object, 1);
    ASN1_OBJECT_free(object);
    return {content, QString::fromLatin1(text)};
}

TEST(DerView, TreesMatchOpenSslWithFileOffsets) {
    // Long-form lengths where short ones would do: OpenSSL and the reader
    // must agree on every offset, not on a re-encoding.
    const QByteArray nonMinimal = QByteArray::fromHex("30810d" "0281020105" "3082000404820000");
    for (const QByteArray& der : {example("sm2-cert.der"), example("rsa-cert.der"), example("gm-seal.der"),
                                  example("zw-seal.der"), nonMinimal}) {
        std::vector<DerSeen> ours;
        walkTree(readDerTree(ByteView::of(der)), &ours);
        const std::vector<DerSeen> openssl = openSslWalk(der);
        EXPECT_TRUE(ours == openssl) << ours.size() << " elements against " << openssl.size();
    }
    const DerNode node = readDerTree(ByteView::of(QByteArray::fromHex("308103020105")));
    EXPECT_EQ(node.children.at(0).element.offset(), 3);
    EXPECT_FALSE(der::hasMinimalLength(node.element));
    EXPECT_TRUE(der::hasMinimalLength(node.children.at(0).element));
}

TEST(DerView, RefusesWhatItCannotBound) {
    der::Element element;
    for (const char* hex : {"", "04", "0404414243",           // short, runs past the end
                            "3080020100000000",               // indefinite length
                            "04850000000001" "41",            // five length octets
                            "0484ffffffff41",                 // a length far past the end
                            "1f0101",                         // high tag number form
                            "040141" "00"}) {                 // trailing byte
        EXPECT_FALSE(der::readSingle(ByteView::of(QByteArray::fromHex(hex)), &element)) << hex;
    }
    // A refused read leaves the view where it was.
    const QByteArray two = QByteArray::fromHex("0201010482");
    ByteView rest = ByteView::of(two);
    ASSERT_TRUE(der::readElement(&rest, &element));
    EXPECT_FALSE(der::readElement(&rest, &element));
    EXPECT_EQ(rest.offset(), 3);
    EXPECT_THROW(readDerTree(ByteView::of(QByteArray::fromHex("300502010102ff"))), FormatError);
    QByteArray deep;
    for (int i = 0; i < kMaxDerDepth + 1; ++i)
        deep = QByteArray::fromHex("30") + char(deep.size()) + deep;
    EXPECT_THROW(readDerTree(ByteView::of(deep)), FormatError);
}

TEST(DerView, FieldsNameWhatIsWrong) {
    const QByteArray bytes = QByteArray::fromHex("3006020101040100");
    der::Element sequence;
    ASSERT_TRUE(der::readSingle(ByteView::of(bytes), &sequence));
    der::Fields fields(sequence, der::tag::kSequence, QStringLiteral("the thing"));
    EXPECT_EQ(fields.next(der::tag::kInteger, "version").content.hex(), QStringLiteral("01"));
    try {
        fields.next(der::tag::kBitString, "digest");
        FAIL() << "no FormatError";
    } catch (const FormatError& error) {
        EXPECT_EQ(error.message, QStringLiteral("the digest of the thing at offset 5 has tag 0x04, expected 0x03"));
    }
}

TEST(DerValues, OidsMatchOpenSsl) {
    for (const char* dotted : {"1.2.156.10197.1.501", "1.2.840.113549.1.1.11", "2.5.4.3",
                               "0.9.2342.19200300.100.1.25", "2.999.1", "1.3.6.1.4.1.311.21.20"}) {
        const auto [content, text] = openSslOid(dotted);
        EXPECT_EQ(der::oidText(ByteView::of(content)), text) << dotted;
    }
    for (const char* hex : {"2a80", "2a8001", ""})  // unfinished, non-minimal, empty
        EXPECT_EQ(der::oidText(ByteView::of(QByteArray::fromHex(hex))), QString()) << hex;
    // An arc beyond 64 bits (a UUID arc) is not shown rather than shown wrong.
    const QByteArray uuid = openSslOid("2.25.340282366920938463463374607431768211455").first;
    EXPECT_EQ(der::oidText(ByteView::of(uuid)), QString());
}

TEST(DerValues, TextInTheCharacterSetOfItsTag) {
    const QString seal = QString::fromUtf8("电子印章 😀");
    const QByteArray utf16 = QByteArray(reinterpret_cast<const char*>(seal.utf16()), seal.size() * 2);
    QByteArray bmp;
    for (int i = 0; i < utf16.size(); i += 2)
        bmp += utf16.mid(i + 1, 1) + utf16.mid(i, 1);  // big-endian
    QByteArray ucs4;
    for (const uint code : seal.toUcs4())
        ucs4 += char(code >> 24) + QByteArray(1, char(code >> 16)) + char(code >> 8) + char(code);
    EXPECT_EQ(der::decodeText(der::tag::kUtf8String, ByteView::of(seal.toUtf8())), seal);
    EXPECT_EQ(der::decodeText(der::tag::kBmpString, ByteView::of(bmp)), seal);
    EXPECT_EQ(der::decodeText(der::tag::kUniversalString, ByteView::of(ucs4)), seal);
    EXPECT_EQ(der::decodeText(der::tag::kPrintableString, ByteView::of("CN")), QStringLiteral("CN"));
    EXPECT_TRUE(der::decodeText(der::tag::kOctetString, ByteView::of("x")).isNull());
    // What the library hands back byte for byte, and what it has decoded.
    EXPECT_EQ(textFromLibrary(QString::fromLatin1(seal.toUtf8())), seal);
    EXPECT_EQ(textFromLibrary(QStringLiteral("caf\u00e9")), QStringLiteral("caf\u00e9"));
}

TEST(DerValues, TimesAgreeWithOpenSsl) {
    for (const char* text : {"240101120000Z", "491231235959Z", "500101000000Z", "20240101120000Z",
                             "20901231235959Z", "2401011200Z", "20240101120000.5Z", "20240101200000+0800"}) {
        ASN1_TIME* time = ASN1_TIME_new();
        ASSERT_EQ(ASN1_TIME_set_string(time, text), 1) << text;
        struct tm parts {};
        ASSERT_EQ(ASN1_TIME_to_tm(time, &parts), 1) << text;
        ASN1_TIME_free(time);
        const QDateTime expected(QDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday),
                                 QTime(parts.tm_hour, parts.tm_min, parts.tm_sec), Qt::UTC);
        EXPECT_EQ(der::timeFromText(text), expected) << text;
    }
    for (const char* text : {"", "24010112", "20241301120000Z", "2024010112000Z", "20240101120000X"})
        EXPECT_FALSE(der::timeFromText(text).isValid()) << text;
    der::Element element;
    const QByteArray generalizedAsUtc = QByteArray::fromHex("170f") + "20240101120000Z";
    ASSERT_TRUE(der::readSingle(ByteView::of(generalizedAsUtc), &element));
    EXPECT_FALSE(der::timeValue(element).isValid());
}

}  // namespace
