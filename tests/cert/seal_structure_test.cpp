#include <gtest/gtest.h>

#include <QMetaObject>
#include <QStringList>
#include <openssl/asn1.h>
#include <openssl/bio.h>

#include "cert/x509_oracle.h"
#include "ztutil/component.h"
#include "ztutil/ztcertificate.h"

namespace {

// DER TLV with a definite length, written out independently of the library.
QByteArray tlv(unsigned char tag, const QByteArray& content) {
    QByteArray out(1, static_cast<char>(tag));
    const int n = content.size();
    if (n < 0x80) {
        out += char(n);
    } else if (n < 0x100) {
        out += char(0x81);
        out += char(n);
    } else {
        out += char(0x82);
        out += char(n >> 8);
        out += char(n & 0xFF);
    }
    return out + content;
}

QByteArray bytes(std::initializer_list<int> values) {
    QByteArray out;
    for (int v : values)
        out += static_cast<char>(v);
    return out;
}

unsigned char* raw(QByteArray& array) {
    return reinterpret_cast<unsigned char*>(array.data());
}

// OpenSSL's generic parser accepts the whole buffer as one SEQUENCE of `count` elements.
void expectOpenSslParses(const QByteArray& der, int count) {
    const unsigned char* cursor = reinterpret_cast<const unsigned char*>(der.constData());
    ASN1_SEQUENCE_ANY* sequence = d2i_ASN1_SEQUENCE_ANY(nullptr, &cursor, der.size());
    ASSERT_NE(sequence, nullptr);
    EXPECT_EQ(cursor, reinterpret_cast<const unsigned char*>(der.constData()) + der.size());
    EXPECT_EQ(sk_ASN1_TYPE_num(sequence), count);
    sk_ASN1_TYPE_pop_free(sequence, ASN1_TYPE_free);
    BIO* sink = BIO_new(BIO_s_mem());
    EXPECT_EQ(ASN1_parse(sink, reinterpret_cast<const unsigned char*>(der.constData()), der.size(), 0), 1);
    BIO_free(sink);
}

const QByteArray kSm2Oid = bytes({0x06, 0x08, 0x2A, 0x81, 0x1C, 0xCF, 0x55, 0x01, 0x83, 0x75});

struct SealInputs {
    QByteArray version = "junk";
    QByteArray seal = tlv(0x30, tlv(0x16, "seal-id") + tlv(0x04, QByteArray(40, '\x5A')));
    QByteArray property = "property";
    QByteArray digest = QByteArray(32, '\xD1');
    QByteArray certificate = cert_test::fixture("sm2_v3.der");
    QByteArray time = "20240101120000Z";
    QByteArray method = "ignored";
};

QByteArray gmSignInfo(ZTCertificate& builder, SealInputs in) {
    return builder.GetGMSignInfo(raw(in.version), in.version.size(), raw(in.seal), in.seal.size(),
                                 raw(in.property), in.property.size(), raw(in.digest),
                                 in.digest.size(), raw(in.certificate), in.certificate.size(),
                                 raw(in.time), in.time.size(), raw(in.method), in.method.size());
}

QByteArray zwSignInfo(ZTCertificate& builder, SealInputs in) {
    return builder.GetZWSignInfo(raw(in.version), in.version.size(), raw(in.seal), in.seal.size(),
                                 raw(in.property), in.property.size(), raw(in.digest),
                                 in.digest.size(), raw(in.method), in.method.size(), raw(in.time),
                                 in.time.size());
}

QByteArray rawSignature(unsigned char rFirst, unsigned char sFirst) {
    QByteArray signature(64, '\x11');
    signature[0] = static_cast<char>(rFirst);
    signature[32] = static_cast<char>(sFirst);
    return signature;
}

TEST(GmSealStructure, ToBeSignedInformationIsExact) {
    ZTCertificate builder;
    SealInputs in;
    const QByteArray result = gmSignInfo(builder, in);
    const QByteArray expected =
        tlv(0x30, bytes({0x02, 0x01, 0x02}) + in.seal + tlv(0x03, QByteArray(1, 0) + in.time) +
                      tlv(0x03, QByteArray(1, 0) + in.digest) + tlv(0x16, in.property) +
                      tlv(0x04, in.certificate) + kSm2Oid);
    EXPECT_EQ(result, expected);
    expectOpenSslParses(result, 7);
}

TEST(GmSealStructure, OptionalPartsMayBeEmptyButTheRequiredOnesMayNot) {
    ZTCertificate builder;
    SealInputs in;
    in.property.clear();
    in.certificate.clear();
    const QByteArray result = gmSignInfo(builder, in);
    EXPECT_TRUE(result.contains(bytes({0x16, 0x00, 0x04, 0x00, 0x06, 0x08})));
    expectOpenSslParses(result, 7);

    for (QByteArray SealInputs::*required : {&SealInputs::seal, &SealInputs::digest, &SealInputs::time}) {
        SealInputs missing;
        (missing.*required).clear();
        const QByteArray empty = gmSignInfo(builder, missing);
        EXPECT_TRUE(empty.isEmpty());
        EXPECT_TRUE(empty.isNull());
    }
}

TEST(GmSealStructure, SignatureStructureWrapsTheSm2Value) {
    ZTCertificate builder;
    const QByteArray toBeSigned = gmSignInfo(builder, SealInputs());
    const QByteArray signature = rawSignature(0x81, 0x22);
    const QByteArray result = builder.GetGMV2ASNData(toBeSigned, signature);
    const QByteArray sm2Value =
        tlv(0x30, tlv(0x02, QByteArray(1, 0) + signature.left(32)) + tlv(0x02, signature.mid(32)));
    EXPECT_EQ(result, tlv(0x30, toBeSigned + tlv(0x03, QByteArray(1, 0) + sm2Value)));
    expectOpenSslParses(result, 2);

    const QByteArray noSignature = builder.GetGMV2ASNData(toBeSigned, QByteArray());
    EXPECT_TRUE(noSignature.isEmpty());
    EXPECT_FALSE(noSignature.isNull());
}

TEST(ZwSealStructure, ToBeSignedInformationIsExact) {
    ZTCertificate builder;
    SealInputs in;
    const QByteArray result = zwSignInfo(builder, in);
    EXPECT_EQ(result, tlv(0x30, bytes({0x02, 0x01, 0x04}) + in.seal + tlv(0x18, in.time) +
                                    tlv(0x03, QByteArray(1, 0) + in.digest) +
                                    tlv(0x16, in.property)));
    expectOpenSslParses(result, 5);
    SealInputs noTime;
    noTime.time.clear();
    EXPECT_TRUE(zwSignInfo(builder, noTime).isEmpty());
}

TEST(ZwSealStructure, SignatureStructureCarriesCertificateAndAlgorithm) {
    ZTCertificate builder;
    const QByteArray toBeSigned = zwSignInfo(builder, SealInputs());
    const QByteArray certificate = cert_test::fixture("sm2_v3.der");
    const QByteArray signature = rawSignature(0x10, 0x80);
    const QByteArray sm2Value =
        tlv(0x30, tlv(0x02, signature.left(32)) + tlv(0x02, signature.mid(32)));
    const QByteArray expected = tlv(0x30, toBeSigned + tlv(0x04, certificate) + kSm2Oid +
                                              tlv(0x03, QByteArray(1, 0) + sm2Value));
    EXPECT_EQ(builder.GetZWASNData(toBeSigned, certificate, QByteArray(), signature), expected);
    EXPECT_EQ(builder.GetZWASNData(toBeSigned, certificate, "1.2.156.10197.1.501", signature),
              expected);
    expectOpenSslParses(expected, 4);

    const QByteArray otherMethod =
        builder.GetZWASNData(toBeSigned, certificate, "1.2.840.10045.4.3.2", signature);
    EXPECT_TRUE(otherMethod.contains(bytes({0x06, 0x08, 0x2A, 0x86, 0x48, 0xCE, 0x3D, 0x04, 0x03, 0x02})));

    EXPECT_TRUE(builder.GetZWASNData(toBeSigned, QByteArray(), QByteArray(), signature).isNull());
    EXPECT_TRUE(builder.GetZWASNData(toBeSigned, certificate, QByteArray(), QByteArray()).isNull());
}

TEST(Sm2SignatureStructure, IntegerPrefixRuleAndPassThrough) {
    ZTCertificate builder;
    const QByteArray plain = rawSignature(0x12, 0x34);
    EXPECT_EQ(builder.CreateSM2DigalStruct(plain),
              bytes({0x30, 0x44, 0x02, 0x20}) + plain.left(32) + bytes({0x02, 0x20}) + plain.mid(32));
    const QByteArray highR = builder.CreateSM2DigalStruct(rawSignature(0x81, 0x01));
    EXPECT_TRUE(highR.startsWith(bytes({0x30, 0x45, 0x02, 0x21, 0x00, 0x81})));
    // A first octet of exactly 0x80 is left without the zero octet.
    const QByteArray edgeR = builder.CreateSM2DigalStruct(rawSignature(0x80, 0x01));
    EXPECT_TRUE(edgeR.startsWith(bytes({0x30, 0x44, 0x02, 0x20, 0x80})));

    const QByteArray der = tlv(0x30, tlv(0x02, QByteArray(33, '\x01')) + tlv(0x02, QByteArray(33, '\x02')));
    ASSERT_GT(der.size(), 65);
    EXPECT_EQ(builder.CreateSM2DigalStruct(der), der);
    // 64 bytes that happen to start with 0x30 are still a raw value.
    const QByteArray lookalike = rawSignature(0x30, 0x01);
    EXPECT_EQ(builder.CreateSM2DigalStruct(lookalike).left(5), bytes({0x30, 0x44, 0x02, 0x20, 0x30}));

    const QByteArray shortInput = builder.CreateSM2DigalStruct(QByteArray(40, '\x07'));
    EXPECT_EQ(shortInput, tlv(0x30, tlv(0x02, QByteArray(32, '\x07')) + tlv(0x02, QByteArray(8, '\x07'))));
    EXPECT_TRUE(builder.CreateSM2DigalStruct(QByteArray()).isEmpty());
}

class LoggingHost : public QObject {
    Q_OBJECT
public:
    QStringList lines;
    Q_INVOKABLE void logDebug(QString text) { lines << text; }
};

TEST(Sm2SignatureStructure, StartIsLoggedToTheHost) {
    LoggingHost host;
    ComponentInit(&host);
    ZTCertificate builder;
    const QByteArray result = builder.GetGMV2ASNData(gmSignInfo(builder, SealInputs()),
                                                     rawSignature(1, 2));
    EXPECT_FALSE(result.isEmpty());
    EXPECT_EQ(host.lines, QStringList{"[ztcertificate:CreateSM2DigalStruct:813] start"});
    ComponentDestroy();
    builder.CreateSM2DigalStruct(rawSignature(1, 2));
    EXPECT_EQ(host.lines.size(), 1) << "nothing is logged without an agent";
}

TEST(SealInvocation, BuildersAreReachableByNameWithTheHostsTypes) {
    ZTCertificate builder;
    SealInputs in;
    // QMetaObject::invokeMethod stops at ten arguments, so a host calls the
    // twelve- and fourteen-argument builders through the meta-call itself.
    QByteArray gm;
    const QMetaObject* meta = builder.metaObject();
    const int index = meta->indexOfMethod(
        "GetGMSignInfo(unsigned char*,int,unsigned char*,int,unsigned char*,int,unsigned char*,int,"
        "unsigned char*,int,unsigned char*,int,unsigned char*,int)");
    ASSERT_GE(index, 0);
    int versionLength = in.version.size(), sealLength = in.seal.size(),
        propertyLength = in.property.size(), digestLength = in.digest.size(),
        certificateLength = in.certificate.size(), timeLength = in.time.size(),
        methodLength = in.method.size();
    unsigned char *version = raw(in.version), *seal = raw(in.seal), *property = raw(in.property),
                  *digest = raw(in.digest), *certificate = raw(in.certificate),
                  *time = raw(in.time), *method = raw(in.method);
    void* argv[] = {&gm,          &version,          &versionLength, &seal,   &sealLength,
                    &property,    &propertyLength,   &digest,        &digestLength,
                    &certificate, &certificateLength, &time,         &timeLength,
                    &method,      &methodLength};
    builder.qt_metacall(QMetaObject::InvokeMetaMethod, index, argv);
    EXPECT_EQ(gm, gmSignInfo(builder, SealInputs()));

    QByteArray gmV2;
    ASSERT_TRUE(QMetaObject::invokeMethod(&builder, "GetGMV2ASNData", Qt::DirectConnection,
                                          Q_RETURN_ARG(QByteArray, gmV2), Q_ARG(QByteArray, gm),
                                          Q_ARG(QByteArray, rawSignature(1, 2))));
    EXPECT_TRUE(gmV2.startsWith(char(0x30)));
    QByteArray zw;
    ASSERT_TRUE(QMetaObject::invokeMethod(
        &builder, "GetZWASNData", Qt::DirectConnection, Q_RETURN_ARG(QByteArray, zw),
        Q_ARG(QByteArray, gm), Q_ARG(QByteArray, in.certificate), Q_ARG(QByteArray, QByteArray()),
        Q_ARG(QByteArray, rawSignature(1, 2))));
    EXPECT_TRUE(zw.contains(kSm2Oid));
}

}  // namespace

#include "seal_structure_test.moc"
