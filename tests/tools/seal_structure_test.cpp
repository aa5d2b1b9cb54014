// Taking seal signature structures apart, and telling SM2 signature forms.
#include <gtest/gtest.h>

#include <QFile>

#include "cli.h"
#include "seal_structure.h"
#include "sm2_signature.h"
#include "support/qt_printers.h"

namespace {

QByteArray example(const char* name) {
    QFile file(QStringLiteral(ZTHOST_EXAMPLES_DIR "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

// The examples were laid out by openssl from separate files, which serve as
// the expected parts here.
TEST(SealStructure, GmPartsAreTheBytesThatWentIn) {
    const SealSignature seal = parseSealSignature(example("gm-seal.der"), QStringLiteral("gm"));
    EXPECT_EQ(seal.format, SealFormat::Gm);
    EXPECT_EQ(seal.toBeSigned, example("gm-tbs.der"));
    EXPECT_EQ(seal.signature, example("gm-tbs.sig"));
    EXPECT_EQ(seal.certificate, example("sm2-cert.der"));
    EXPECT_EQ(seal.seal, example("seal.der"));
    EXPECT_EQ(seal.digest, example("document.sm3"));
    EXPECT_EQ(seal.time, QByteArray("20240101120000Z"));
    EXPECT_EQ(seal.property, QByteArray("zthost demo seal"));
    EXPECT_EQ(seal.algorithm, QStringLiteral("1.2.156.10197.1.501"));
}

TEST(SealStructure, ZwCertificateAndAlgorithmSitOutside) {
    const SealSignature seal = parseSealSignature(example("zw-seal.der"), QStringLiteral("zw"));
    EXPECT_EQ(seal.format, SealFormat::Zw);
    EXPECT_EQ(seal.toBeSigned, example("zw-tbs.der"));
    EXPECT_EQ(seal.signature, example("zw-tbs.sig"));
    EXPECT_EQ(seal.certificate, example("sm2-cert.der"));
    EXPECT_EQ(seal.time, QByteArray("20240101120000Z"));
}

TEST(SealStructure, EveryTruncationIsRefused) {
    const QByteArray whole = example("gm-seal.der");
    for (int length = 0; length < whole.size(); ++length)
        EXPECT_THROW(parseSealSignature(whole.left(length), QStringLiteral("cut")), CommandFailure) << length;
}

TEST(SealStructure, RefusesOtherShapes) {
    const auto refuses = [](const char* hex) {
        EXPECT_THROW(parseSealSignature(QByteArray::fromHex(hex), QStringLiteral("x")), CommandFailure) << hex;
    };
    refuses("3000");                                    // empty
    refuses("30053003020102");                          // GM version, too few elements
    refuses("3008300302010303010100");                  // version 3
    // A GM shape whose signature BIT STRING declares unused bits.
    QByteArray gm = example("gm-seal.der");
    gm[gm.size() - 72] = 0x01;  // the unused-bits octet of the final 72-byte BIT STRING
    EXPECT_THROW(parseSealSignature(gm, QStringLiteral("gm")), CommandFailure);
}

TEST(SignatureForm, ByLengthAndStructure) {
    EXPECT_EQ(detectSignatureForm(QByteArray(64, 'x'), QStringLiteral("s")), SignatureForm::Bytes64);
    EXPECT_EQ(detectSignatureForm(QByteArray(128, 'x'), QStringLiteral("s")), SignatureForm::Bytes128);
    EXPECT_EQ(detectSignatureForm(example("document.sm2.sig"), QStringLiteral("s")), SignatureForm::Der);
    for (const char* hex : {"3003020101", "300902010102010102010a", "3006020101020101ff", "300602010104010a"})
        EXPECT_THROW(detectSignatureForm(QByteArray::fromHex(hex), QStringLiteral("s")), CommandFailure) << hex;
}

TEST(SignatureForm, WarnsAboutIntegersTheLibraryMisreads) {
    EXPECT_EQ(shortIntegerWarning(example("document.sm2.sig")), QString());
    const QByteArray shortR = QByteArray::fromHex("3043021f") + QByteArray(31, '\x11') + QByteArray::fromHex("0220") +
                              QByteArray(32, '\x22');
    EXPECT_TRUE(shortIntegerWarning(shortR).startsWith(QStringLiteral("r is a 31-byte INTEGER")));
}

}  // namespace
