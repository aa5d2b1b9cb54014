// Every invokable method of every component, called by name with the type
// names a host writes, reaches the method it names: each result is compared
// with a direct call of the same method.
#include <gtest/gtest.h>

#include <QMetaObject>
#include <cstdlib>
#include <memory>

#include "support/capture.h"
#include "support/common.h"
#include "ztutil/base64.h"
#include "ztutil/component.h"
#include "ztutil/ztasn.h"
#include "ztutil/ztbase64.h"
#include "ztutil/ztcertificate.h"
#include "ztutil/rsa.h"
#include "ztutil/ztutil.h"

using ztutil_test::fixture;
using ztutil_test::hex;

namespace {

#define BY_NAME(object, method, ...) \
    ASSERT_TRUE(QMetaObject::invokeMethod(object, method, Qt::DirectConnection, __VA_ARGS__)) << method
#define BY_NAME_NO_ARGS(object, method) \
    ASSERT_TRUE(QMetaObject::invokeMethod(object, method, Qt::DirectConnection)) << method

unsigned char* raw(QByteArray& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

std::unique_ptr<QObject> create(const char* progId) {
    return std::unique_ptr<QObject>(CreateComponent(QString::fromLatin1(progId), QString()));
}

TEST(ByName, AsnDocumentAndBlocks) {
    std::unique_ptr<QObject> object = create("ZTUTIL.ZTAsn.1");
    auto* asn = qobject_cast<ZTAsn*>(object.get());
    ASSERT_NE(asn, nullptr);
    ztutil_test::StdoutCapture quiet;
    ztutil_test::DebugCapture debug;
    bool ok = false;
    BY_NAME(asn, "open", Q_RETURN_ARG(bool, ok), Q_ARG(QByteArray, fixture("asn_sm2_cert.der")));
    EXPECT_TRUE(ok);
    int count = -1, type = -1;
    BY_NAME(asn, "getChildCount", Q_RETURN_ARG(int, count));
    BY_NAME(asn, "type", Q_RETURN_ARG(int, type));
    EXPECT_EQ(count, asn->getChildCount());
    EXPECT_EQ(type, 0x30);
    BY_NAME(asn, "checkTag", Q_RETURN_ARG(bool, ok), Q_ARG(int, 0x30));
    EXPECT_TRUE(ok);
    ZTAsnBlock* tbs = nullptr;
    BY_NAME(asn, "getChild", Q_RETURN_ARG(ZTAsnBlock*, tbs), Q_ARG(int, 0), Q_ARG(int, 0x30));
    ASSERT_EQ(tbs, asn->getChild(0, 0x30));
    ZTAsnBlock* sameByDefault = nullptr;
    BY_NAME(asn, "getChild", Q_RETURN_ARG(ZTAsnBlock*, sameByDefault), Q_ARG(int, 0));
    EXPECT_EQ(sameByDefault, tbs);
    ZTAsnBlock* serial = tbs->getChild(1, 2);
    ASSERT_NE(serial, nullptr);
    int number = 0;
    QString text;
    QByteArray content, built;
    BY_NAME(serial, "toInt", Q_RETURN_ARG(int, number));
    BY_NAME(serial, "toString", Q_RETURN_ARG(QString, text));
    BY_NAME(serial, "toByteArray", Q_RETURN_ARG(QByteArray, content));
    BY_NAME(asn, "build", Q_RETURN_ARG(QByteArray, built));
    EXPECT_EQ(number, serial->toInt());
    EXPECT_EQ(text, serial->toString());
    EXPECT_EQ(content, serial->toByteArray());
    EXPECT_EQ(built, fixture("asn_sm2_cert.der"));
    ZTAsnBlock* validity = tbs->getChild(4, 0x30);
    ASSERT_NE(validity, nullptr);
    QDateTime when, converted;
    BY_NAME(validity->getChild(0, 0), "toDateTime", Q_RETURN_ARG(QDateTime, when));
    EXPECT_EQ(when, validity->getChild(0, 0)->toDateTime());
    BY_NAME(asn, "convertDateTime", Q_RETURN_ARG(QDateTime, converted),
            Q_ARG(QByteArray, QByteArray("121231120000Z")));
    EXPECT_EQ(converted, QDateTime(QDate(2012, 12, 31), QTime(20, 0), Qt::UTC));
    BY_NAME(asn, "dump", Q_ARG(int, 1));
    BY_NAME_NO_ARGS(asn, "dump");
    BY_NAME_NO_ARGS(asn, "close");
    EXPECT_EQ(asn->getChildCount(), 0);

    // Building: create() with its default tag, children, data, update, remove.
    BY_NAME(asn, "create", Q_RETURN_ARG(bool, ok));
    EXPECT_TRUE(ok);
    ZTAsnBlock* integer = nullptr;
    ZTAsnBlock* set = nullptr;
    BY_NAME(asn, "addSample", Q_RETURN_ARG(ZTAsnBlock*, integer), Q_ARG(int, 2));
    BY_NAME(asn, "addStruct", Q_RETURN_ARG(ZTAsnBlock*, set), Q_ARG(int, 0x31));
    ASSERT_NE(integer, nullptr);
    ASSERT_NE(set, nullptr);
    BY_NAME(integer, "setData", Q_RETURN_ARG(bool, ok), Q_ARG(QByteArray, QByteArray("\x81", 1)));
    EXPECT_TRUE(ok);
    BY_NAME(set, "addBlock", Q_RETURN_ARG(bool, ok), Q_ARG(QByteArray, hex("0500")));
    EXPECT_TRUE(ok);
    BY_NAME_NO_ARGS(asn, "update");
    BY_NAME(asn, "build", Q_RETURN_ARG(QByteArray, built));
    EXPECT_EQ(built, hex("30080202008131020500"));
    BY_NAME(asn, "remove", Q_RETURN_ARG(bool, ok), Q_ARG(int, 1));
    EXPECT_TRUE(ok);
    asn->update();
    EXPECT_EQ(asn->build(), hex("300402020081"));
    BY_NAME(asn, "create", Q_RETURN_ARG(bool, ok), Q_ARG(int, 2));
    EXPECT_FALSE(ok);
}

TEST(ByName, CertificateReadersAndConverters) {
    std::unique_ptr<QObject> object = create("ZTUTIL.ZTCerificate.1");
    auto* certificate = qobject_cast<ZTCertificate*>(object.get());
    ASSERT_NE(certificate, nullptr);
    ztutil_test::StdoutCapture quiet;
    ztutil_test::DebugCapture debug;
    QByteArray der = fixture("cert/sm2_v3.der");
    bool ok = false;
    BY_NAME(certificate, "open", Q_RETURN_ARG(bool, ok), Q_ARG(QByteArray, der));
    ASSERT_TRUE(ok);
    const char* textReaders[] = {"version", "serialNumber", "algName", "getIssuerC", "getIssuerO",
                                 "getIssuerOU", "getIssuerCN", "getIssuerDN", "getSubjectDN",
                                 "getSubjectCN", "getSubjectE", "getSubjectO", "getSubjectOU",
                                 "pubkey", "pubKeyAlgOID"};
    QStringList byName, direct;
    for (const char* reader : textReaders) {
        QString value;
        BY_NAME(certificate, reader, Q_RETURN_ARG(QString, value));
        byName << value;
    }
    direct << certificate->version() << certificate->serialNumber() << certificate->algName()
           << certificate->getIssuerC() << certificate->getIssuerO() << certificate->getIssuerOU()
           << certificate->getIssuerCN() << certificate->getIssuerDN() << certificate->getSubjectDN()
           << certificate->getSubjectCN() << certificate->getSubjectE() << certificate->getSubjectO()
           << certificate->getSubjectOU() << certificate->pubkey() << certificate->pubKeyAlgOID();
    EXPECT_EQ(byName, direct);
    QDateTime notAfter, notBefore, utc, generalized;
    QByteArray key;
    BY_NAME(certificate, "notAfter", Q_RETURN_ARG(QDateTime, notAfter));
    BY_NAME(certificate, "notBefore", Q_RETURN_ARG(QDateTime, notBefore));
    BY_NAME(certificate, "getPublicKeyData", Q_RETURN_ARG(QByteArray, key));
    BY_NAME(certificate, "fromUTCTime", Q_RETURN_ARG(QDateTime, utc), Q_ARG(QString, "230101000000Z"));
    BY_NAME(certificate, "fromGeneralizedTime", Q_RETURN_ARG(QDateTime, generalized),
            Q_ARG(QString, "20230101000000Z"));
    EXPECT_EQ(notAfter, certificate->notAfter());
    EXPECT_EQ(notBefore, certificate->notBefore());
    EXPECT_EQ(key.size(), 64);
    EXPECT_EQ(utc, QDateTime(QDate(2023, 1, 1), QTime(8, 0), Qt::UTC));
    EXPECT_EQ(generalized, utc);
    BY_NAME_NO_ARGS(certificate, "dump");
    BY_NAME_NO_ARGS(certificate, "close");

    uint keyLength = 0;
    BY_NAME(certificate, "ZTGetPubKeyByCert", Q_RETURN_ARG(bool, ok), Q_ARG(unsigned char*, raw(der)),
            Q_ARG(uint, der.size()), Q_ARG(unsigned char*, nullptr), Q_ARG(uint*, &keyLength));
    EXPECT_TRUE(ok);
    EXPECT_EQ(keyLength, 65u);

    QString pem, param;
    QByteArray back;
    BY_NAME(certificate, "GetCertString", Q_RETURN_ARG(QString, pem), Q_ARG(QByteArray, der));
    BY_NAME(certificate, "GetCertByteArray", Q_RETURN_ARG(QByteArray, back), Q_ARG(QString, pem));
    BY_NAME(certificate, "GetCertParam", Q_RETURN_ARG(QString, param), Q_ARG(QByteArray, der),
            Q_ARG(int, 4), Q_ARG(int, 0x30));
    EXPECT_EQ(back, der);
    EXPECT_EQ(param, certificate->GetCertParam(der, 4, 0x30));
    EXPECT_FALSE(param.isEmpty());
}

TEST(ByName, SealBuildersIncludingTheLongOnes) {
    ZTCertificate certificate;
    QByteArray version("x");
    QByteArray seal = hex("3003020105");
    QByteArray property("p");
    QByteArray digest(32, '\x01');
    QByteArray cert = fixture("cert/sm2_v3.der");
    QByteArray time("20240101120000Z");
    QByteArray method("m");
    int versionLength = 1, sealLength = seal.size(), propertyLength = 1, digestLength = 32,
        certLength = cert.size(), timeLength = time.size(), methodLength = 1;
    unsigned char *versionData = raw(version), *sealData = raw(seal), *propertyData = raw(property),
                  *digestData = raw(digest), *certData = raw(cert), *timeData = raw(time),
                  *methodData = raw(method);
    // Beyond ten arguments a host calls through the meta-call with the exact signature.
    QByteArray gm, zw;
    void* gmArgs[] = {&gm,           &versionData, &versionLength, &sealData,   &sealLength,
                      &propertyData, &propertyLength, &digestData, &digestLength, &certData,
                      &certLength,   &timeData,    &timeLength,    &methodData, &methodLength};
    const int gmIndex = certificate.metaObject()->indexOfMethod(
        "GetGMSignInfo(unsigned char*,int,unsigned char*,int,unsigned char*,int,unsigned char*,int,"
        "unsigned char*,int,unsigned char*,int,unsigned char*,int)");
    ASSERT_GE(gmIndex, 0);
    certificate.qt_metacall(QMetaObject::InvokeMetaMethod, gmIndex, gmArgs);
    EXPECT_EQ(gm, certificate.GetGMSignInfo(versionData, 1, sealData, sealLength, propertyData, 1,
                                            digestData, 32, certData, certLength, timeData,
                                            timeLength, methodData, 1));
    void* zwArgs[] = {&zw,           &versionData,    &versionLength, &sealData,   &sealLength,
                      &propertyData, &propertyLength, &digestData,    &digestLength, &methodData,
                      &methodLength, &timeData,       &timeLength};
    const int zwIndex = certificate.metaObject()->indexOfMethod(
        "GetZWSignInfo(unsigned char*,int,unsigned char*,int,unsigned char*,int,unsigned char*,int,"
        "unsigned char*,int,unsigned char*,int)");
    ASSERT_GE(zwIndex, 0);
    certificate.qt_metacall(QMetaObject::InvokeMetaMethod, zwIndex, zwArgs);
    EXPECT_EQ(zw, certificate.GetZWSignInfo(versionData, 1, sealData, sealLength, propertyData, 1,
                                            digestData, 32, methodData, 1, timeData, timeLength));
    ASSERT_FALSE(gm.isEmpty());
    ASSERT_FALSE(zw.isEmpty());

    const QByteArray signature(64, '\x21');
    QByteArray gmSeal, zwSeal;
    BY_NAME(&certificate, "GetGMV2ASNData", Q_RETURN_ARG(QByteArray, gmSeal), Q_ARG(QByteArray, gm),
            Q_ARG(QByteArray, signature));
    BY_NAME(&certificate, "GetZWASNData", Q_RETURN_ARG(QByteArray, zwSeal), Q_ARG(QByteArray, zw),
            Q_ARG(QByteArray, cert), Q_ARG(QByteArray, QByteArray()), Q_ARG(QByteArray, signature));
    EXPECT_EQ(gmSeal, certificate.GetGMV2ASNData(gm, signature));
    EXPECT_EQ(zwSeal, certificate.GetZWASNData(zw, cert, QByteArray(), signature));
}

TEST(ByName, Base64Component) {
    std::unique_ptr<QObject> base64 = create("ZTUTIL.ZTBase64.1");
    QByteArray data("Man");
    char* text = nullptr;
    BY_NAME(base64.get(), "encodeBase64Ex", Q_RETURN_ARG(char*, text), Q_ARG(unsigned char*, raw(data)),
            Q_ARG(int, 3), Q_ARG(char*, strNormalTable));
    EXPECT_STREQ(text, "TWFu");
    unsigned char* decoded = nullptr;
    int length = 0;
    BY_NAME(base64.get(), "decodeBase64Ex", Q_RETURN_ARG(unsigned char*, decoded),
            Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(text)), Q_ARG(int, 4),
            Q_ARG(char*, strNormalTable), Q_ARG(int*, &length));
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(decoded), length), data);
    delete[] decoded;
    std::free(text);
    QString encoded;
    BY_NAME(base64.get(), "setTableCode", Q_ARG(char*, strSM2Table));
    BY_NAME(base64.get(), "encodeEx", Q_RETURN_ARG(QString, encoded), Q_ARG(QByteArray, QByteArray(1, '\0')));
    EXPECT_EQ(encoded, "==//");
    BY_NAME(base64.get(), "setTableCode", Q_ARG(char*, nullptr));
}

TEST(ByName, UtilComponent) {
    std::unique_ptr<QObject> util = create("ZTUTIL.ZTUtil.1");
    ASSERT_NE(util, nullptr);
    QByteArray message("abc");
    unsigned char digest[32] = {}, plain[32] = {};
    BY_NAME(util.get(), "sm3", Q_ARG(unsigned char*, raw(message)), Q_ARG(int, 3),
            Q_ARG(unsigned char*, digest));
    BOOL done = -1;
    // No key record: the digest falls back to plain SM3.
    BY_NAME(util.get(), "sm3_with_sm2", Q_RETURN_ARG(BOOL, done), Q_ARG(unsigned char*, raw(message)),
            Q_ARG(int, 3), Q_ARG(unsigned char*, nullptr), Q_ARG(int, 0),
            Q_ARG(const char*, "1234567812345678"), Q_ARG(int, 16), Q_ARG(unsigned char*, plain));
    EXPECT_EQ(done, 1);
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(digest), 32), QByteArray(reinterpret_cast<char*>(plain), 32));
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(digest), 32).toHex(),
              "66c7f0f462eeedd9d1f2d46bdc10e4e24167c4875cf2f7a2297da02b8f4ba8e0");

    BYTE sha1[20] = {};
    uint sha1Length = 0;
    BY_NAME(util.get(), "rsaDigest", Q_RETURN_ARG(BOOL, done), Q_ARG(BYTE*, raw(message)), Q_ARG(uint, 3),
            Q_ARG(BYTE*, sha1), Q_ARG(uint*, &sha1Length));
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(sha1), 20).toHex(), "a9993e364706816aba3e25717850c26c9cd0d89d");
    // The host's spelling must match the declaration: unsigned char* is not BYTE*.
    EXPECT_FALSE(QMetaObject::invokeMethod(util.get(), "rsaDigest", Qt::DirectConnection,
                                           Q_RETURN_ARG(BOOL, done), Q_ARG(unsigned char*, raw(message)),
                                           Q_ARG(uint, 3), Q_ARG(unsigned char*, sha1),
                                           Q_ARG(uint*, &sha1Length)));

    int verdict = -1;
    unsigned char junk[8] = {};
    {
        ztutil_test::StdoutCapture quiet;
        BY_NAME(util.get(), "sm2Verify", Q_RETURN_ARG(int, verdict), Q_ARG(unsigned char*, junk),
                Q_ARG(uint, 8), Q_ARG(unsigned char*, junk), Q_ARG(uint, 8), Q_ARG(unsigned char*, junk),
                Q_ARG(uint, 8));
        EXPECT_EQ(verdict, 1);
        BY_NAME(util.get(), "rsaVerify", Q_RETURN_ARG(int, verdict), Q_ARG(unsigned char*, junk),
                Q_ARG(uint, 8), Q_ARG(unsigned char*, junk), Q_ARG(uint, 8), Q_ARG(unsigned char*, junk),
                Q_ARG(uint, 8));
        EXPECT_EQ(verdict, RsaVerify(junk, 8, junk, 8, junk, 8));
    }
    QByteArray p1;
    BY_NAME(util.get(), "convSignDataToP1", Q_RETURN_ARG(QByteArray, p1), Q_ARG(QByteArray, QByteArray(64, 1)));
    EXPECT_EQ(p1.left(4), hex("30440220"));

    QString carried, back;
    QByteArray gbk, wide;
    BY_NAME(util.get(), "Multi2Utf8", Q_RETURN_ARG(QString, carried), Q_ARG(QByteArray, hex("D6D0")));
    BY_NAME(util.get(), "Utf8toMulti", Q_RETURN_ARG(QByteArray, gbk), Q_ARG(QString, carried));
    BY_NAME(util.get(), "Utf8toWide", Q_RETURN_ARG(QByteArray, wide), Q_ARG(QString, carried));
    BY_NAME(util.get(), "Wide2Utf8", Q_RETURN_ARG(QString, back), Q_ARG(QByteArray, wide));
    EXPECT_EQ(carried, QString::fromLatin1("\xE4\xB8\xAD"));
    EXPECT_EQ(gbk, hex("D6D0"));
    EXPECT_EQ(wide, hex("2D4E0000"));
    EXPECT_EQ(back, carried);
}

}  // namespace
