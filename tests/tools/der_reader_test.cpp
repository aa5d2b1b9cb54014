// zthost's DER reader and OID text, against OpenSSL's own decoders.
#include <gtest/gtest.h>
#include <openssl/asn1.h>
#include <openssl/objects.h>

#include <QFile>
#include <vector>

#include "der_reader.h"
#include "support/qt_printers.h"

namespace {

QByteArray example(const char* name) {
    QFile file(QStringLiteral(ZTHOST_EXAMPLES_DIR "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

struct Seen {
    int offset, tag, header, length;
    bool operator==(const Seen& other) const {
        return offset == other.offset && tag == other.tag && header == other.header && length == other.length;
    }
};

void walkWithCursor(const DerElement& element, std::vector<Seen>* seen) {
    seen->push_back({element.offset, element.tag, element.whole.size() - element.content.size(),
                     element.content.size()});
    if ((element.tag & 0x20) == 0)
        return;
    std::vector<DerElement> children;
    ASSERT_TRUE(parseChildren(element, &children));
    for (const DerElement& child : children)
        walkWithCursor(child, seen);
}

// OpenSSL's ASN1_get_object over the same bytes, descending into constructed elements.
void walkWithOpenSsl(const unsigned char* start, const unsigned char* p, long available,
                     std::vector<Seen>* seen) {
    const unsigned char* end = p + available;
    while (p < end) {
        const unsigned char* header = p;
        long length = 0;
        int tag = 0, xclass = 0;
        const int flags = ASN1_get_object(&p, &length, &tag, &xclass, end - p);
        ASSERT_EQ(flags & 0x80, 0) << "OpenSSL rejects the element";
        seen->push_back({int(header - start), header[0], int(p - header), int(length)});
        if (flags & V_ASN1_CONSTRUCTED)
            walkWithOpenSsl(start, p, length, seen);
        p += length;
    }
}

// The content octets of `dotted` and OpenSSL's own text for them.
std::pair<QByteArray, QString> openSslOid(const char* dotted) {
    ASN1_OBJECT* object = OBJ_txt2obj(dotted, 1);
    EXPECT_NE(object, nullptr) << dotted;
    const QByteArray content(reinterpret_cast<const char*>(OBJ_get0_data(object)), int(OBJ_length(object)));
    char text[256];
    OBJ_obj2txt(text, sizeof text, object, 1);
    ASN1_OBJECT_free(object);
    return {content, QString::fromLatin1(text)};
}

TEST(DerReader, WalksCertificatesAndSealsLikeOpenSsl) {
    for (const char* name : {"sm2-cert.der", "rsa-cert.der", "gm-seal.der", "zw-seal.der"}) {
        const QByteArray der = example(name);
        DerElement root;
        ASSERT_TRUE(parseSingleElement(der, &root)) << name;
        std::vector<Seen> ours, openssl;
        walkWithCursor(root, &ours);
        const auto* bytes = reinterpret_cast<const unsigned char*>(der.constData());
        walkWithOpenSsl(bytes, bytes, der.size(), &openssl);
        EXPECT_TRUE(ours == openssl) << name << ": " << ours.size() << " elements against " << openssl.size();
    }
}

TEST(DerReader, LengthForms) {
    DerElement element;
    ASSERT_TRUE(parseSingleElement(QByteArray::fromHex("0403414243"), &element));
    EXPECT_EQ(element.content, QByteArray("ABC"));
    ASSERT_TRUE(parseSingleElement(QByteArray::fromHex("048103414243"), &element));
    EXPECT_EQ(element.whole.size(), 6);
    const QByteArray big = QByteArray::fromHex("04820100") + QByteArray(256, 'x');
    ASSERT_TRUE(parseSingleElement(big, &element));
    EXPECT_EQ(element.content.size(), 256);
}

TEST(DerReader, RefusesWhatItCannotBound) {
    DerElement element;
    for (const char* hex : {"", "04", "0404414243",           // short, runs past the end
                            "3080020100000000",               // indefinite length
                            "04850000000001" "41",            // five length octets
                            "0484ffffffff41",                 // a length far past the end
                            "1f0101",                         // high tag number form
                            "040141" "00"}) {                 // trailing byte
        EXPECT_FALSE(parseSingleElement(QByteArray::fromHex(hex), &element)) << hex;
    }
    DerCursor cursor(QByteArray::fromHex("0201010482"));
    ASSERT_TRUE(cursor.next(&element));
    EXPECT_FALSE(cursor.next(&element));
    EXPECT_TRUE(cursor.malformed());
}

TEST(DerReader, ChildrenMustFillTheirParent) {
    DerElement parent;
    std::vector<DerElement> children;
    ASSERT_TRUE(parseSingleElement(QByteArray::fromHex("3006020101020102"), &parent));
    ASSERT_TRUE(parseChildren(parent, &children));
    ASSERT_EQ(children.size(), 2u);
    EXPECT_EQ(children[1].offset, 5);
    ASSERT_TRUE(parseSingleElement(QByteArray::fromHex("300502010102ff"), &parent));
    EXPECT_FALSE(parseChildren(parent, &children));
}

TEST(OidText, MatchesOpenSsl) {
    for (const char* dotted : {"1.2.156.10197.1.501", "1.2.840.113549.1.1.11", "2.5.4.3",
                               "0.9.2342.19200300.100.1.25", "2.999.1", "1.3.6.1.4.1.311.21.20"}) {
        const auto [content, text] = openSslOid(dotted);
        EXPECT_EQ(oidText(content), text) << dotted;
    }
}

TEST(OidText, RefusesMalformedAndHugeArcs) {
    EXPECT_EQ(oidText(QByteArray::fromHex("2a80")), QString());    // unfinished arc
    EXPECT_EQ(oidText(QByteArray::fromHex("2a8001")), QString());  // non-minimal arc
    EXPECT_EQ(oidText(QByteArray()), QString());
    // An arc beyond 64 bits (a UUID arc) is not shown rather than shown wrong.
    EXPECT_EQ(oidText(openSslOid("2.25.340282366920938463463374607431768211455").first), QString());
}

}  // namespace
