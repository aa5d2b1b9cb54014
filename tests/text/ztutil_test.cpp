#include <gtest/gtest.h>

#include <QMetaObject>
#include <QTextCodec>
#include <iconv.h>
#include <openssl/evp.h>

#include "support/capture.h"
#include "ztutil/component.h"
#include "ztutil/sm2.h"
#include "ztutil/sm3.h"
#include "ztutil/ztutil.h"

using ztutil_test::DebugCapture;

namespace {

QByteArray bytes(std::initializer_list<int> values) {
    QByteArray out;
    for (int v : values)
        out += static_cast<char>(v);
    return out;
}

// glibc's view of a conversion, as an independent oracle.
QByteArray iconvConvert(const char* from, const char* to, const QByteArray& input) {
    iconv_t cd = iconv_open(to, from);
    QByteArray in = input;
    QByteArray out(input.size() * 4 + 16, '\0');
    char* inPtr = in.data();
    char* outPtr = out.data();
    size_t inLeft = in.size(), outLeft = out.size();
    const size_t rc = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    if (rc == static_cast<size_t>(-1))
        return QByteArray("<iconv failed>");
    out.truncate(out.size() - static_cast<int>(outLeft));
    return out;
}

TEST(ZTUtilText, GbkAndLatin1CarriedUtf8) {
    ZTUtil util;
    const QByteArray zhong = bytes({0xD6, 0xD0});
    const QString carried = util.Multi2Utf8(zhong);
    EXPECT_EQ(carried, QString::fromLatin1("\xE4\xB8\xAD"));
    EXPECT_EQ(util.Utf8toMulti(carried), zhong);

    const QByteArray mixed = QByteArray("Seal ") + bytes({0xB5, 0xE7, 0xD7, 0xD3, 0xD3, 0xA1, 0xD5, 0xC2}) + " ok";
    const QString asUtf8 = util.Multi2Utf8(mixed);
    EXPECT_EQ(asUtf8.toLatin1(), iconvConvert("GBK", "UTF-8", mixed));
    EXPECT_EQ(util.Utf8toMulti(asUtf8), mixed);

    EXPECT_TRUE(util.Multi2Utf8(QByteArray()).isEmpty());
    EXPECT_FALSE(util.Multi2Utf8(QByteArray()).isNull());
    // The Latin-1 transport stops at the first zero byte.
    EXPECT_EQ(util.Multi2Utf8(QByteArray("ab\0cd", 5)), QStringLiteral("ab"));
}

TEST(ZTUtilText, WideCharactersAreNativeThirtyTwoBitUnits) {
    ZTUtil util;
    EXPECT_EQ(util.Utf8toWide(QStringLiteral("A")), bytes({0x41, 0, 0, 0}));
    EXPECT_EQ(util.Wide2Utf8(bytes({0x41, 0, 0, 0})), QStringLiteral("A"));

    const QString carried = QString::fromLatin1(QStringLiteral("印章 \U0001F600").toUtf8());
    const QByteArray wide = util.Utf8toWide(carried);
    EXPECT_EQ(wide, iconvConvert("UTF-8", "UTF-32LE", carried.toLatin1()));
    EXPECT_EQ(util.Wide2Utf8(wide), carried);

    EXPECT_TRUE(util.Wide2Utf8(bytes({0, 0, 0, 0, 0x41, 0, 0, 0})).isEmpty());
    // A partial last unit is completed with zero bytes.
    EXPECT_EQ(util.Wide2Utf8(bytes({0x42, 0, 0})), QStringLiteral("B"));
    EXPECT_EQ(util.Wide2Utf8(bytes({0x43})), QStringLiteral("C"));
    EXPECT_TRUE(util.Utf8toWide(QString()).isEmpty());
}

TEST(ZTUtilText, AgreesWithQtsOwnCodecs) {
    ZTUtil util;
    QTextCodec* gbk = QTextCodec::codecForName("GBK");
    ASSERT_NE(gbk, nullptr);
    const QString text = QStringLiteral("电子签章 Electronic seal №1 – ½");
    const QByteArray gbkBytes = gbk->fromUnicode(text);
    EXPECT_EQ(util.Multi2Utf8(gbkBytes), QString::fromLatin1(gbk->toUnicode(gbkBytes).toUtf8()));
    EXPECT_EQ(util.Utf8toMulti(QString::fromLatin1(text.toUtf8())), gbkBytes);
}

TEST(DumpHex, SixteenBytesPerLine) {
    DebugCapture debug;
    QByteArray data;
    for (int i = 0; i < 17; ++i)
        data += static_cast<char>(0xF0 + i);
    DumpHex(data);
    ASSERT_EQ(debug.lines().size(), 2);
    EXPECT_EQ(debug.lines().at(0),
              "\"0x00000000 F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 FA FB FC FD FE FF\"");
    EXPECT_EQ(debug.lines().at(1), "\"0x00000010 00\"");

    DebugCapture empty;
    DumpHex(QByteArray());
    EXPECT_EQ(empty.lines(), QStringList{"\"\""});
}

TEST(ZTUtilInvocation, EveryMethodByNameWithTheHostsTypeNames) {
    std::unique_ptr<QObject> util(CreateComponent(QStringLiteral("ZTUTIL.ZTUtil.1"), QString()));
    ASSERT_NE(util, nullptr);
    EXPECT_STREQ(util->metaObject()->className(), "ZTUtil");

    QByteArray message("abc");
    unsigned char digest[32] = {};
    ASSERT_TRUE(QMetaObject::invokeMethod(
        util.get(), "sm3", Qt::DirectConnection,
        Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(message.data())), Q_ARG(int, 3),
        Q_ARG(unsigned char*, digest)));
    unsigned char expected[32];
    unsigned int length = 0;
    EVP_Digest("abc", 3, expected, &length, EVP_sm3(), nullptr);
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(digest), 32),
              QByteArray(reinterpret_cast<char*>(expected), 32));

    BYTE sha1[20] = {};
    uint sha1Length = 0;
    BOOL digested = 0;
    ASSERT_TRUE(QMetaObject::invokeMethod(
        util.get(), "rsaDigest", Qt::DirectConnection, Q_RETURN_ARG(BOOL, digested),
        Q_ARG(BYTE*, reinterpret_cast<BYTE*>(message.data())), Q_ARG(uint, 3), Q_ARG(BYTE*, sha1),
        Q_ARG(uint*, &sha1Length)));
    EXPECT_EQ(sha1Length, 20u);
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(sha1), 20).toHex(),
              QByteArray("a9993e364706816aba3e25717850c26c9cd0d89d"));
    // The host's spelling must match: unsigned char* is not BYTE*.
    EXPECT_FALSE(QMetaObject::invokeMethod(
        util.get(), "rsaDigest", Qt::DirectConnection, Q_RETURN_ARG(BOOL, digested),
        Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(message.data())), Q_ARG(uint, 3),
        Q_ARG(unsigned char*, sha1), Q_ARG(uint*, &sha1Length)));

    QByteArray p1;
    const QByteArray raw(64, '\x11');
    ASSERT_TRUE(QMetaObject::invokeMethod(util.get(), "convSignDataToP1", Qt::DirectConnection,
                                          Q_RETURN_ARG(QByteArray, p1), Q_ARG(QByteArray, raw)));
    EXPECT_EQ(p1.left(4), bytes({0x30, 0x44, 0x02, 0x20}));
    ASSERT_TRUE(QMetaObject::invokeMethod(util.get(), "convSignDataToP1", Qt::DirectConnection,
                                          Q_RETURN_ARG(QByteArray, p1),
                                          Q_ARG(QByteArray, QByteArray(63, '\x11'))));
    EXPECT_EQ(p1, QByteArray(63, '\x11'));

    QString carried;
    ASSERT_TRUE(QMetaObject::invokeMethod(util.get(), "Multi2Utf8", Qt::DirectConnection,
                                          Q_RETURN_ARG(QString, carried),
                                          Q_ARG(QByteArray, bytes({0xD6, 0xD0}))));
    QByteArray gbk;
    ASSERT_TRUE(QMetaObject::invokeMethod(util.get(), "Utf8toMulti", Qt::DirectConnection,
                                          Q_RETURN_ARG(QByteArray, gbk), Q_ARG(QString, carried)));
    EXPECT_EQ(gbk, bytes({0xD6, 0xD0}));
    QByteArray wide;
    ASSERT_TRUE(QMetaObject::invokeMethod(util.get(), "Utf8toWide", Qt::DirectConnection,
                                          Q_RETURN_ARG(QByteArray, wide), Q_ARG(QString, carried)));
    QString back;
    ASSERT_TRUE(QMetaObject::invokeMethod(util.get(), "Wide2Utf8", Qt::DirectConnection,
                                          Q_RETURN_ARG(QString, back), Q_ARG(QByteArray, wide)));
    EXPECT_EQ(back, carried);

    // sm3_with_sm2 with the generator as the key: the same digest as the plain function.
    QByteArray keyRecord(132, '\0');
    keyRecord[3] = 0x01;  // 256-bit length, little-endian
    const QByteArray gx = QByteArray::fromHex("32C4AE2C1F1981195F9904466A39C9948FE30BBFF2660BE1715A4589334C74C7");
    const QByteArray gy = QByteArray::fromHex("BC3736A2F4F6779C59BDCEE36B692153D0A9877CC62A474002DF32E52139F0A0");
    keyRecord.replace(4 + 32, 32, gx);
    keyRecord.replace(68 + 32, 32, gy);
    unsigned char viaComponent[32] = {}, direct[32] = {};
    BOOL hashed = -1;
    ASSERT_TRUE(QMetaObject::invokeMethod(
        util.get(), "sm3_with_sm2", Qt::DirectConnection, Q_RETURN_ARG(BOOL, hashed),
        Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(message.data())), Q_ARG(int, 3),
        Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(keyRecord.data())), Q_ARG(int, 132),
        Q_ARG(const char*, "1234567812345678"), Q_ARG(int, 16), Q_ARG(unsigned char*, viaComponent)));
    const int directResult = ztutil_sm3_with_sm2(reinterpret_cast<unsigned char*>(message.data()), 3,
                                                 reinterpret_cast<unsigned char*>(keyRecord.data()),
                                                 132, "1234567812345678", 16, direct);
    EXPECT_EQ(hashed, directResult);
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(viaComponent), 32),
              QByteArray(reinterpret_cast<char*>(direct), 32));

    // sm2Verify and rsaVerify refuse garbage through the same route.
    int verdict = -1;
    unsigned char junk[8] = {};
    {
        ztutil_test::StdoutCapture quiet;
        ASSERT_TRUE(QMetaObject::invokeMethod(
            util.get(), "sm2Verify", Qt::DirectConnection, Q_RETURN_ARG(int, verdict),
            Q_ARG(unsigned char*, junk), Q_ARG(uint, 8), Q_ARG(unsigned char*, junk), Q_ARG(uint, 8),
            Q_ARG(unsigned char*, junk), Q_ARG(uint, 8)));
    }
    EXPECT_EQ(verdict, 1);
    verdict = -1;
    {
        ztutil_test::StdoutCapture quiet;
        ASSERT_TRUE(QMetaObject::invokeMethod(
            util.get(), "rsaVerify", Qt::DirectConnection, Q_RETURN_ARG(int, verdict),
            Q_ARG(unsigned char*, junk), Q_ARG(uint, 8), Q_ARG(unsigned char*, junk), Q_ARG(uint, 8),
            Q_ARG(unsigned char*, junk), Q_ARG(uint, 8)));
    }
    EXPECT_NE(verdict, -1);
}

}  // namespace
