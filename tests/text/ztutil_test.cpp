// ZTUtil: text conversions against Qt's codecs and glibc iconv, DumpHex, and
// the methods that pass through to the digest and verification functions.
#include <QTextCodec>

#include "support/common.h"
#include "support/sm2_signer.h"
#include "text/iconv_oracle.h"
#include "ztutil/sm2.h"
#include "ztutil/ztutil.h"

using namespace ztutil_test;

namespace {

QByteArray iconvConvert(const char* from, const char* to, const QByteArray& input) {
    return QByteArray::fromStdString(IconvOracle(from, to).convert(input.toStdString()).value_or("<failed>"));
}

TEST(ZTUtilText, GbkAndLatin1CarriedUtf8) {
    ZTUtil util;
    const QByteArray zhong = hex("d6d0");
    EXPECT_EQ(util.Multi2Utf8(zhong), QString::fromLatin1("\xE4\xB8\xAD"));
    EXPECT_EQ(util.Utf8toMulti(QString::fromLatin1("\xE4\xB8\xAD")), zhong);
    const QByteArray mixed = "Seal " + hex("b5e7d7d3d3a1d5c2") + " ok";
    EXPECT_EQ(util.Multi2Utf8(mixed).toLatin1(), iconvConvert("GBK", "UTF-8", mixed));
    EXPECT_EQ(util.Utf8toMulti(util.Multi2Utf8(mixed)), mixed);
    EXPECT_TRUE(util.Multi2Utf8(QByteArray()).isEmpty());
    EXPECT_FALSE(util.Multi2Utf8(QByteArray()).isNull());
    EXPECT_EQ(util.Multi2Utf8(QByteArray("ab\0cd", 5)), QStringLiteral("ab")) << "the transport stops at a zero";

    QTextCodec* gbk = QTextCodec::codecForName("GBK");
    ASSERT_NE(gbk, nullptr);
    const QString text = QStringLiteral("电子签章 Electronic seal №1 – ½");
    const QByteArray gbkBytes = gbk->fromUnicode(text);
    EXPECT_EQ(util.Multi2Utf8(gbkBytes), QString::fromLatin1(gbk->toUnicode(gbkBytes).toUtf8()));
    EXPECT_EQ(util.Utf8toMulti(QString::fromLatin1(text.toUtf8())), gbkBytes);
}

TEST(ZTUtilText, WideCharactersAreNativeThirtyTwoBitUnits) {
    ZTUtil util;
    const QString carried = QString::fromLatin1(QStringLiteral("A印章 \U0001F600").toUtf8());
    const QByteArray wide = util.Utf8toWide(carried);
    EXPECT_EQ(wide, iconvConvert("UTF-8", "UTF-32LE", carried.toLatin1()));
    EXPECT_EQ(util.Wide2Utf8(wide), carried);
    EXPECT_TRUE(util.Wide2Utf8(hex("0000000041000000")).isEmpty());
    // A partial last unit is completed with zero bytes.
    EXPECT_EQ(util.Wide2Utf8(hex("420000")), QStringLiteral("B"));
    EXPECT_EQ(util.Wide2Utf8(hex("43")), QStringLiteral("C"));
    EXPECT_TRUE(util.Utf8toWide(QString()).isEmpty());
}

TEST(DumpHex, SixteenBytesPerLine) {
    DebugCapture debug;
    DumpHex(hex("f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff00"));
    DumpHex(QByteArray());
    EXPECT_EQ(debug.lines(), QStringList({"\"0x00000000 F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 FA FB FC FD FE FF\"",
                                          "\"0x00000010 00\"", "\"\""}));
}

TEST(ZTUtilMethods, PassThroughToTheLibraryFunctions) {
    ZTUtil util;
    Bytes message = {'a', 'b', 'c'}, out(32, 0);
    util.sm3(message.data(), 3, out.data());
    EXPECT_EQ(out, digest(EVP_sm3(), message));
    uint length = 0;
    EXPECT_EQ(util.rsaDigest(message.data(), 3, out.data(), &length), 1);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + length), digest(EVP_sha1(), message));
    EXPECT_EQ(util.convSignDataToP1(QByteArray(64, '\x11')).left(4), hex("30440220"));
    EXPECT_EQ(util.convSignDataToP1(QByteArray(63, '\x11')), QByteArray(63, '\x11'));

    Sm2Signer signer;
    Bytes record = signer.record(), e(32), direct(32), der = signer.sign(message);
    EXPECT_EQ(util.sm3_with_sm2(message.data(), 3, record.data(), 132, "1234567812345678", 16, e.data()), 1);
    ztutil_sm3_with_sm2(message.data(), 3, record.data(), 132, "1234567812345678", 16, direct.data());
    EXPECT_EQ(e, direct);
    StdoutCapture quiet;
    EXPECT_EQ(util.sm2Verify(record.data(), 132, e.data(), 32, der.data(), uint(der.size())), 0);
    EXPECT_EQ(util.sm2Verify(record.data(), 132, message.data(), 3, der.data(), uint(der.size())), 1);
    EXPECT_EQ(util.rsaVerify(der.data(), uint(der.size()), message.data(), 3, der.data(), uint(der.size())), 0);
}

}  // namespace
