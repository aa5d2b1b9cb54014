// The SM2 signature structure of the seal builders: its INTEGER prefix quirk
// and DER pass-through. The whole seal structures against a DER writer of
// their own, with their null / empty failures and the host's log line, are
// the seal fuzz target's property.
#include "support/common.h"
#include "ztutil/ztcertificate.h"

using ztutil_test::hex;
using ztutil_test::tlv;

namespace {

QByteArray rawSignature(unsigned char rFirst, unsigned char sFirst) {
    QByteArray signature(64, '\x11');
    signature[0] = static_cast<char>(rFirst);
    signature[32] = static_cast<char>(sFirst);
    return signature;
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

}  // namespace
