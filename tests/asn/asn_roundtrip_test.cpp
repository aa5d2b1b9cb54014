// Real DER through the engine, checked against OpenSSL's own reading.
#include <openssl/asn1.h>
#include <openssl/bn.h>

#include "asn_test_support.h"

using namespace asn_test;

namespace {

struct OpenSslObject {
    int tagOctet = 0;
    bool constructed = false;
    const unsigned char* content = nullptr;
    long length = 0;
};

// One TLV as OpenSSL's ASN1_get_object reads it; advances *p past the header.
bool readObject(const unsigned char** p, long available, OpenSslObject* object) {
    const unsigned char* start = *p;
    int tag = 0, cls = 0;
    const int result = ASN1_get_object(p, &object->length, &tag, &cls, available);
    if ((result & 0x80) != 0 || tag >= 31)
        return false;
    object->constructed = (result & V_ASN1_CONSTRUCTED) != 0;
    object->tagOctet = *start;
    object->content = *p;
    return true;
}

// The engine's tree has the same nodes, tags, contents and order as the DER.
void expectSameTree(const stASN_BLOCK_HEADER* node, const unsigned char** p, long available, int* nodes) {
    OpenSslObject object;
    ASSERT_TRUE(readObject(p, available, &object));
    ++*nodes;
    ASSERT_EQ(node->tag, object.tagOctet);
    if (!object.constructed) {
        ASSERT_EQ(content(node), QByteArray(reinterpret_cast<const char*>(object.content), int(object.length)));
        *p += object.length;
        return;
    }
    const unsigned char* end = object.content + object.length;
    for (const stASN_CHILD_LINK* link = node->firstChild; link != nullptr && !testing::Test::HasFatalFailure();
         link = link->next)
        expectSameTree(link->node, p, end - *p, nodes);
    EXPECT_EQ(*p, end) << "children missing";
}

// The same DER with every length written in the four-octet long form.
QByteArray withLongFormLengths(const unsigned char** p, long available) {
    OpenSslObject object;
    if (!readObject(p, available, &object))
        return QByteArray();
    QByteArray inner;
    const unsigned char* end = object.content + object.length;
    if (object.constructed) {
        while (*p < end)
            inner += withLongFormLengths(p, end - *p);
    } else {
        inner = QByteArray(reinterpret_cast<const char*>(object.content), static_cast<int>(object.length));
        *p = end;
    }
    QByteArray out(1, static_cast<char>(object.tagOctet));
    out += '\x84';
    for (int shift = 24; shift >= 0; shift -= 8)
        out += static_cast<char>((inner.size() >> shift) & 0xFF);
    return out + inner;
}

TEST(AsnRoundTrip, CertificatesParseAsOpenSslReadsThemAndReencodeExactly) {
    const QList<QByteArray> all = QList<QByteArray>{fixture("asn_sm2_cert.der")} + caBundle();
    ASSERT_FALSE(all.first().isEmpty()) << "fixture missing";
    for (const QByteArray& der : all) {
        Tree root = parse(der);
        ASSERT_NE(root, nullptr);
        const unsigned char* p = octets(der);
        int nodes = 0;
        expectSameTree(root.get(), &p, der.size(), &nodes);
        ASSERT_FALSE(HasFatalFailure());
        EXPECT_GT(nodes, 20);
        EXPECT_EQ(encode(root.get()), der);
        p = octets(der);
        const QByteArray longForm = withLongFormLengths(&p, der.size());
        ASSERT_GT(longForm.size(), der.size());
        EXPECT_EQ(encode(parse(longForm).get()), der) << "re-encoding uses minimal lengths";
    }
    RecordProperty("certificates", all.size());
}

// Serial number replaced and subject name grown past the short length form:
// after ASNUpdate the build is a certificate OpenSSL reads to its last octet.
TEST(AsnRoundTrip, EditedCertificateStaysValidDer) {
    Tree root = parse(fixture("asn_sm2_cert.der"));
    ASSERT_NE(root, nullptr);
    stASN_BLOCK_HEADER* tbs = ASNGetChild(root.get(), 0);
    const QByteArray serial = hex("00c0ffee0000000000000000000000000001"), name(300, 'N');
    ASNSetBlockData(ASNGetChild(tbs, 1), octets(serial), static_cast<size_t>(serial.size()));
    stASN_BLOCK_HEADER* commonName = ASNGetChild(ASNGetChild(ASNGetChild(ASNGetChild(tbs, 5), 2), 0), 1);
    ASSERT_EQ(commonName->tag, 0x13);
    ASNSetBlockData(commonName, octets(name), static_cast<size_t>(name.size()));

    const QByteArray edited = encode(root.get());
    const unsigned char* p = octets(edited);
    X509* certificate = d2i_X509(nullptr, &p, edited.size());
    ASSERT_NE(certificate, nullptr);
    EXPECT_EQ(p, octets(edited) + edited.size());
    BIGNUM* number = ASN1_INTEGER_to_BN(X509_get0_serialNumber(certificate), nullptr);
    char* text = BN_bn2hex(number);
    EXPECT_STREQ(text, "C0FFEE0000000000000000000000000001");
    char read[512] = {};
    X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, read, sizeof read);
    EXPECT_EQ(QByteArray(read), name);
    OPENSSL_free(text);
    BN_free(number);
    X509_free(certificate);
}

}  // namespace
