// Taking seal signature structures apart, and telling SM2 signature forms.
#include <gtest/gtest.h>

#include <QFile>

#include "cli/cli.h"
#include "readers/seal_structure.h"
#include "services/sm2_signature.h"
#include "support/qt_printers.h"

namespace {

QByteArray example(const char* name) {
    QFile file(QStringLiteral(ZTHOST_EXAMPLES_DIR "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

// The examples were laid out by openssl from separate files, which serve as
// the expected parts here.
SealSignature parse(const QByteArray& der) {
    return parseSealSignature(ByteView::of(der));
}

TEST(SealStructure, GmPartsAreTheBytesThatWentIn) {
    const QByteArray der = example("gm-seal.der");
    const SealSignature seal = parse(der);
    EXPECT_EQ(seal.format, SealFormat::Gm);
    EXPECT_EQ(seal.toBeSigned.toByteArray(), example("gm-tbs.der"));
    EXPECT_EQ(seal.signature.toByteArray(), example("gm-tbs.sig"));
    EXPECT_EQ(seal.certificate.toByteArray(), example("sm2-cert.der"));
    EXPECT_EQ(seal.seal.toByteArray(), example("seal.der"));
    EXPECT_EQ(seal.digest.toByteArray(), example("document.sm3"));
    EXPECT_EQ(seal.time.toByteArray(), QByteArray("20240101120000Z"));
    EXPECT_EQ(seal.property.toByteArray(), QByteArray("zthost demo seal"));
    EXPECT_EQ(seal.algorithm, QStringLiteral("1.2.156.10197.1.501"));
}

TEST(SealStructure, ZwCertificateAndAlgorithmSitOutside) {
    const QByteArray der = example("zw-seal.der");
    const SealSignature seal = parse(der);
    EXPECT_EQ(seal.format, SealFormat::Zw);
    EXPECT_EQ(seal.toBeSigned.toByteArray(), example("zw-tbs.der"));
    EXPECT_EQ(seal.signature.toByteArray(), example("zw-tbs.sig"));
    EXPECT_EQ(seal.certificate.toByteArray(), example("sm2-cert.der"));
    EXPECT_EQ(seal.time.toByteArray(), QByteArray("20240101120000Z"));
}

TEST(SealStructure, EveryTruncationIsRefused) {
    const QByteArray whole = example("gm-seal.der");
    for (int length = 0; length < whole.size(); ++length)
        EXPECT_THROW(parse(whole.left(length)), FormatError) << length;
}

TEST(SealStructure, RefusesOtherShapes) {
    const auto refuses = [](const char* hex) {
        EXPECT_THROW(parse(QByteArray::fromHex(hex)), FormatError) << hex;
    };
    refuses("3000");                                    // empty
    refuses("30053003020102");                          // GM version, too few elements
    refuses("3008300302010303010100");                  // version 3
    // A GM shape whose signature BIT STRING declares unused bits.
    QByteArray gm = example("gm-seal.der");
    gm[gm.size() - 72] = 0x01;  // the unused-bits octet of the final 72-byte BIT STRING
    EXPECT_THROW(parse(gm), FormatError);
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
