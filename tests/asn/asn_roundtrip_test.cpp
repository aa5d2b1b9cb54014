// Real DER through the engine, checked against OpenSSL's own reading.
#include <openssl/asn1.h>
#include <openssl/bn.h>

#include "asn_test_support.h"

using namespace asn_test;

namespace {

// The engine's tree has the same nodes, tags, contents and order as
// OpenSSL's ASN1_get_object reading of the DER.
void expectSameTree(const stASN_BLOCK_HEADER* node, const unsigned char** p, long available, int* nodes) {
    const int tagOctet = **p;
    long length = 0;
    int tag = 0, objectClass = 0;
    const int result = ASN1_get_object(p, &length, &tag, &objectClass, available);
    ASSERT_TRUE((result & 0x80) == 0 && tag < 31);
    ++*nodes;
    ASSERT_EQ(node->tag, tagOctet);
    const unsigned char* end = *p + length;
    if ((result & V_ASN1_CONSTRUCTED) == 0) {
        ASSERT_EQ(content(node), QByteArray(reinterpret_cast<const char*>(*p), int(length)));
        *p = end;
        return;
    }
    for (const stASN_CHILD_LINK* link = node->firstChild; link != nullptr && !testing::Test::HasFatalFailure();
         link = link->next)
        expectSameTree(link->node, p, end - *p, nodes);
    EXPECT_EQ(*p, end) << "children missing";
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
