// The seal signature structures, written out octet by octet here and read
// back by OpenSSL's generic DER parser.
#include <openssl/asn1.h>

#include "cert/x509_oracle.h"
#include "support/common.h"
#include "ztutil/component.h"
#include "ztutil/ztcertificate.h"

using ztutil_test::hex;
using ztutil_test::tlv;

namespace {

// OpenSSL reads the whole buffer as one SEQUENCE of `count` elements.
void expectOpenSslParses(const QByteArray& der, int count) {
    const unsigned char* cursor = ztutil_test::octets(der);
    ASN1_SEQUENCE_ANY* sequence = d2i_ASN1_SEQUENCE_ANY(nullptr, &cursor, der.size());
    ASSERT_NE(sequence, nullptr);
    EXPECT_EQ(cursor, ztutil_test::octets(der) + der.size());
    EXPECT_EQ(sk_ASN1_TYPE_num(sequence), count);
    sk_ASN1_TYPE_pop_free(sequence, ASN1_TYPE_free);
}

const QByteArray kSm2Oid = hex("06082a811ccf55018375");
const QByteArray kZero(1, '\0');

struct SealInputs {
    QByteArray version = "junk";
    QByteArray seal = tlv(0x30, tlv(0x16, "seal-id") + tlv(0x04, QByteArray(40, '\x5A')));
    QByteArray property = "property";
    QByteArray digest = QByteArray(32, '\xD1');
    QByteArray certificate = cert_test::fixture("sm2_v3.der");
    QByteArray time = "20240101120000Z";
    QByteArray method = "ignored";
};

unsigned char* raw(QByteArray& array) {
    return reinterpret_cast<unsigned char*>(array.data());
}

QByteArray gmSignInfo(ZTCertificate& builder, SealInputs in) {
    return builder.GetGMSignInfo(raw(in.version), in.version.size(), raw(in.seal), in.seal.size(),
                                 raw(in.property), in.property.size(), raw(in.digest), in.digest.size(),
                                 raw(in.certificate), in.certificate.size(), raw(in.time), in.time.size(),
                                 raw(in.method), in.method.size());
}

QByteArray zwSignInfo(ZTCertificate& builder, SealInputs in) {
    return builder.GetZWSignInfo(raw(in.version), in.version.size(), raw(in.seal), in.seal.size(),
                                 raw(in.property), in.property.size(), raw(in.digest), in.digest.size(),
                                 raw(in.method), in.method.size(), raw(in.time), in.time.size());
}

QByteArray rawSignature(unsigned char rFirst, unsigned char sFirst) {
    QByteArray signature(64, '\x11');
    signature[0] = static_cast<char>(rFirst);
    signature[32] = static_cast<char>(sFirst);
    return signature;
}

TEST(GmSealStructure, ToBeSignedInformationAndSignature) {
    ZTCertificate builder;
    SealInputs in;
    const QByteArray toBeSigned = gmSignInfo(builder, in);
    EXPECT_EQ(toBeSigned, tlv(0x30, hex("020102") + in.seal + tlv(0x03, kZero + in.time) +
                                        tlv(0x03, kZero + in.digest) + tlv(0x16, in.property) +
                                        tlv(0x04, in.certificate) + kSm2Oid));
    expectOpenSslParses(toBeSigned, 7);

    // Property and certificate may be empty; seal, digest and time may not.
    in.property.clear();
    in.certificate.clear();
    const QByteArray optional = gmSignInfo(builder, in);
    EXPECT_TRUE(optional.contains(hex("160004000608")));
    expectOpenSslParses(optional, 7);
    for (QByteArray SealInputs::*required : {&SealInputs::seal, &SealInputs::digest, &SealInputs::time}) {
        SealInputs missing;
        (missing.*required).clear();
        EXPECT_TRUE(gmSignInfo(builder, missing).isNull());
    }

    const QByteArray signature = rawSignature(0x81, 0x22);
    const QByteArray sm2Value = tlv(0x30, tlv(0x02, kZero + signature.left(32)) + tlv(0x02, signature.mid(32)));
    const QByteArray sealed = builder.GetGMV2ASNData(toBeSigned, signature);
    EXPECT_EQ(sealed, tlv(0x30, toBeSigned + tlv(0x03, kZero + sm2Value)));
    expectOpenSslParses(sealed, 2);
    const QByteArray noSignature = builder.GetGMV2ASNData(toBeSigned, QByteArray());
    EXPECT_TRUE(noSignature.isEmpty());
    EXPECT_FALSE(noSignature.isNull());
}

TEST(ZwSealStructure, ToBeSignedInformationAndSignature) {
    ZTCertificate builder;
    SealInputs in;
    const QByteArray toBeSigned = zwSignInfo(builder, in);
    EXPECT_EQ(toBeSigned, tlv(0x30, hex("020104") + in.seal + tlv(0x18, in.time) +
                                        tlv(0x03, kZero + in.digest) + tlv(0x16, in.property)));
    expectOpenSslParses(toBeSigned, 5);
    SealInputs noTime;
    noTime.time.clear();
    EXPECT_TRUE(zwSignInfo(builder, noTime).isEmpty());

    const QByteArray signature = rawSignature(0x10, 0x80);
    const QByteArray sm2Value = tlv(0x30, tlv(0x02, signature.left(32)) + tlv(0x02, signature.mid(32)));
    const QByteArray expected =
        tlv(0x30, toBeSigned + tlv(0x04, in.certificate) + kSm2Oid + tlv(0x03, kZero + sm2Value));
    EXPECT_EQ(builder.GetZWASNData(toBeSigned, in.certificate, QByteArray(), signature), expected);
    EXPECT_EQ(builder.GetZWASNData(toBeSigned, in.certificate, "1.2.156.10197.1.501", signature), expected);
    expectOpenSslParses(expected, 4);
    EXPECT_TRUE(builder.GetZWASNData(toBeSigned, in.certificate, "1.2.840.10045.4.3.2", signature)
                    .contains(hex("06082a8648ce3d040302")));
    EXPECT_TRUE(builder.GetZWASNData(toBeSigned, QByteArray(), QByteArray(), signature).isNull());
    EXPECT_TRUE(builder.GetZWASNData(toBeSigned, in.certificate, QByteArray(), QByteArray()).isNull());
}

TEST(Sm2SignatureStructure, IntegerPrefixRuleAndPassThrough) {
    ZTCertificate builder;
    const QByteArray plain = rawSignature(0x12, 0x34);
    EXPECT_EQ(builder.CreateSM2DigalStruct(plain),
              hex("30440220") + plain.left(32) + hex("0220") + plain.mid(32));
    EXPECT_TRUE(builder.CreateSM2DigalStruct(rawSignature(0x81, 0x01)).startsWith(hex("304502210081")));
    // A first octet of exactly 0x80 is left without the zero octet.
    EXPECT_TRUE(builder.CreateSM2DigalStruct(rawSignature(0x80, 0x01)).startsWith(hex("3044022080")));
    // DER longer than 65 octets passes; 64 octets starting with 0x30 are still raw.
    const QByteArray der = tlv(0x30, tlv(0x02, QByteArray(33, '\x01')) + tlv(0x02, QByteArray(33, '\x02')));
    EXPECT_EQ(builder.CreateSM2DigalStruct(der), der);
    EXPECT_EQ(builder.CreateSM2DigalStruct(rawSignature(0x30, 0x01)).left(5), hex("3044022030"));
    EXPECT_EQ(builder.CreateSM2DigalStruct(QByteArray(40, '\x07')),
              tlv(0x30, tlv(0x02, QByteArray(32, '\x07')) + tlv(0x02, QByteArray(8, '\x07'))));
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
    EXPECT_FALSE(builder.GetGMV2ASNData(gmSignInfo(builder, SealInputs()), rawSignature(1, 2)).isEmpty());
    EXPECT_EQ(host.lines, QStringList{"[ztcertificate:CreateSM2DigalStruct:813] start"});
    ComponentDestroy();
    builder.CreateSM2DigalStruct(rawSignature(1, 2));
    EXPECT_EQ(host.lines.size(), 1) << "nothing is logged without an agent";
}

}  // namespace

#include "seal_structure_test.moc"
