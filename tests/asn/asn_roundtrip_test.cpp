// Real DER through the engine, checked against OpenSSL's own reading.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <openssl/asn1.h>
#include <openssl/bn.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include "asn_test_support.h"
#include "support/qt_printers.h"

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
    int tag = 0;
    int cls = 0;
    const int result = ASN1_get_object(p, &object->length, &tag, &cls, available);
    if ((result & 0x80) != 0 || tag >= 31)
        return false;
    object->constructed = (result & V_ASN1_CONSTRUCTED) != 0;
    object->tagOctet = *start;
    EXPECT_EQ(object->tagOctet, cls | (object->constructed ? 0x20 : 0) | tag);
    object->content = *p;
    return true;
}

// The engine's tree has the same nodes, tags, contents and order as the DER.
void expectSameTree(const stASN_BLOCK_HEADER* node, const unsigned char** p, long available,
                    int* nodes) {
    OpenSslObject object;
    ASSERT_TRUE(readObject(p, available, &object));
    ++*nodes;
    ASSERT_EQ(node->tag, object.tagOctet);
    if (!object.constructed) {
        ASSERT_EQ(QByteArray(reinterpret_cast<char*>(node->data), static_cast<int>(node->dataLength)),
                  QByteArray(reinterpret_cast<const char*>(object.content), static_cast<int>(object.length)));
        *p += object.length;
        return;
    }
    const unsigned char* end = object.content + object.length;
    for (const stASN_CHILD_LINK* link = node->firstChild; link != nullptr; link = link->next) {
        expectSameTree(link->node, p, end - *p, nodes);
        if (testing::Test::HasFatalFailure())
            return;
    }
    EXPECT_EQ(*p, end) << "children missing";
}

// The same DER with every length written in the four-octet long form.
QByteArray withLongFormLengths(const unsigned char** p, long available) {
    OpenSslObject object;
    if (!readObject(p, available, &object))
        return QByteArray();
    QByteArray content;
    if (object.constructed) {
        const unsigned char* end = object.content + object.length;
        while (*p < end)
            content += withLongFormLengths(p, end - *p);
    } else {
        content = QByteArray(reinterpret_cast<const char*>(object.content), static_cast<int>(object.length));
        *p += object.length;
    }
    QByteArray out(1, static_cast<char>(object.tagOctet));
    out += '\x84';
    for (int shift = 24; shift >= 0; shift -= 8)
        out += static_cast<char>((content.size() >> shift) & 0xFF);
    return out + content;
}

QList<QByteArray> certificates() {
    QList<QByteArray> list{fixture("asn_sm2_cert.der")};
    const QDir dir(QStringLiteral("/etc/ssl/certs"));
    for (const QString& name : dir.entryList({QStringLiteral("*.pem")}, QDir::Files)) {
        FILE* file = std::fopen(QFile::encodeName(dir.filePath(name)).constData(), "r");
        if (file == nullptr)
            continue;
        X509* certificate = PEM_read_X509(file, nullptr, nullptr, nullptr);
        std::fclose(file);
        unsigned char* der = nullptr;
        const int length = certificate != nullptr ? i2d_X509(certificate, &der) : -1;
        if (length > 0)
            list << QByteArray(reinterpret_cast<char*>(der), length);
        OPENSSL_free(der);
        X509_free(certificate);
    }
    return list;
}

TEST(AsnRoundTrip, CertificatesParseAsOpenSslReadsThemAndReencodeExactly) {
    const QList<QByteArray> all = certificates();
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

        const unsigned char* q = octets(der);
        const QByteArray longForm = withLongFormLengths(&q, der.size());
        ASSERT_GT(longForm.size(), der.size());
        EXPECT_EQ(encode(parse(longForm).get()), der) << "re-encoding uses minimal lengths";
    }
    RecordProperty("certificates", all.size());
}

// Serial number replaced and subject name grown past the short length form:
// after ASNUpdate the build is a certificate OpenSSL reads to its last octet.
TEST(AsnRoundTrip, EditedCertificateStaysValidDer) {
    const QByteArray der = fixture("asn_sm2_cert.der");
    Tree root = parse(der);
    ASSERT_NE(root, nullptr);
    stASN_BLOCK_HEADER* tbs = ASNGetChild(root.get(), 0);
    stASN_BLOCK_HEADER* serial = ASNGetChild(tbs, 1);
    ASSERT_EQ(serial->tag, 0x02);
    const QByteArray newSerial = hex("00c0ffee0000000000000000000000000001");
    ASNSetBlockData(serial, octets(newSerial), static_cast<size_t>(newSerial.size()));
    stASN_BLOCK_HEADER* subject = ASNGetChild(tbs, 5);
    stASN_BLOCK_HEADER* commonName = ASNGetChild(ASNGetChild(ASNGetChild(subject, 2), 0), 1);
    ASSERT_EQ(commonName->tag, 0x13);
    const QByteArray longName(300, 'N');
    ASNSetBlockData(commonName, octets(longName), static_cast<size_t>(longName.size()));

    const QByteArray edited = encode(root.get());
    const unsigned char* p = octets(edited);
    X509* certificate = d2i_X509(nullptr, &p, edited.size());
    ASSERT_NE(certificate, nullptr);
    EXPECT_EQ(p, octets(edited) + edited.size());
    BIGNUM* number = ASN1_INTEGER_to_BN(X509_get0_serialNumber(certificate), nullptr);
    char* text = BN_bn2hex(number);
    EXPECT_STREQ(text, "C0FFEE0000000000000000000000000001");
    char name[512] = {};
    X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, name, sizeof name);
    EXPECT_EQ(QByteArray(name), longName);
    OPENSSL_free(text);
    BN_free(number);
    X509_free(certificate);
}

}  // namespace
