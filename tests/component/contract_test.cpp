// The host calls every component by name: the meta-object of each class is
// the contract and must not drift (exact signatures leave no room for a
// misspelled type, and no method of ZTVerifyTools is reachable by name).
#include <QMetaMethod>
#include <QMetaObject>

#include "support/common.h"
#include "ztutil/ztasn.h"
#include "ztutil/ztbase64.h"
#include "ztutil/ztcertificate.h"
#include "ztutil/ztutil.h"
#include "ztutil/ztverifytools.h"

namespace {

struct MethodRow {
    const char* returnType;
    const char* signature;
    const char* parameterNames;  // comma-separated, as the host sees them
};

const std::vector<MethodRow> kAsnBlock = {
    {"void", "dump(int)", "level"}, {"void", "dump()", ""}, {"int", "type()", ""},
    {"bool", "checkTag(int)", "type"}, {"ZTAsnBlock*", "getChild(int,int)", "index,checkTag"},
    {"ZTAsnBlock*", "getChild(int)", "index"}, {"int", "getChildCount()", ""},
    {"ZTAsnBlock*", "addSample(int)", "tagType"}, {"ZTAsnBlock*", "addStruct(int)", "tagType"},
    {"bool", "remove(int)", "index"}, {"QByteArray", "build()", ""}, {"void", "update()", ""},
    {"bool", "setData(QByteArray)", "data"}, {"bool", "addBlock(QByteArray)", "data"},
    {"QString", "toString()", ""}, {"int", "toInt()", ""}, {"QByteArray", "toByteArray()", ""},
    {"QDateTime", "toDateTime()", ""}, {"QDateTime", "convertDateTime(QByteArray)", "text"},
};

const std::vector<MethodRow> kAsn = {
    {"bool", "create(int)", "tagType"}, {"bool", "create()", ""}, {"bool", "open(QByteArray)", "data"},
    {"void", "close()", ""},
};

const std::vector<MethodRow> kCertificate = {
    {"void", "dump()", ""}, {"bool", "open(QByteArray)", "data"}, {"void", "close()", ""},
    {"QString", "version()", ""}, {"QString", "serialNumber()", ""}, {"QString", "algName()", ""},
    {"QString", "getIssuerC()", ""}, {"QString", "getIssuerO()", ""}, {"QString", "getIssuerOU()", ""},
    {"QString", "getIssuerCN()", ""}, {"QString", "getIssuerDN()", ""}, {"QString", "getSubjectDN()", ""},
    {"QString", "getSubjectCN()", ""}, {"QString", "getSubjectE()", ""}, {"QString", "getSubjectO()", ""},
    {"QString", "getSubjectOU()", ""}, {"QDateTime", "notAfter()", ""}, {"QDateTime", "notBefore()", ""},
    {"QString", "pubkey()", ""}, {"QByteArray", "getPublicKeyData()", ""}, {"QString", "pubKeyAlgOID()", ""},
    {"QDateTime", "fromUTCTime(QString)", "value"}, {"QDateTime", "fromGeneralizedTime(QString)", "value"},
    {"bool", "ZTGetPubKeyByCert(unsigned char*,uint,unsigned char*,uint*)",
     "pbtCertData,dwCertDataLength,pbtPubKey,pdwPubKeySize"},
    {"QString", "GetCertString(QByteArray)", "qbCert"},
    {"QByteArray", "GetCertByteArray(QString)", "qStrCert"},
    {"QString", "GetCertParam(QByteArray,int,int)", "qCert,iParamID,iParamStruct"},
    {"QByteArray", "GetZWASNData(QByteArray,QByteArray,QByteArray,QByteArray)",
     "qSealSignInfo,qCert,qMethod,qEccSign"},
    {"QByteArray",
     "GetZWSignInfo(unsigned char*,int,unsigned char*,int,unsigned char*,int,unsigned char*,int,"
     "unsigned char*,int,unsigned char*,int)",
     "pVersion,iVersionLen,pSealInfo,iSealInfoLen,pPropertyInfo,PropertyInfoLen,pHashData,iHashLen,"
     "pSignMethod,iMethodLen,pTimeInfo,iTimeInfoLen"},
    {"QByteArray",
     "GetGMSignInfo(unsigned char*,int,unsigned char*,int,unsigned char*,int,unsigned char*,int,"
     "unsigned char*,int,unsigned char*,int,unsigned char*,int)",
     "pVersion,iVersionLen,pSealInfo,iSealInfoLen,pPropertyInfo,PropertyInfoLen,pHashData,iHashLen,"
     "pCertContext,iCertLen,pTimeInfo,iTimeInfoLen,pSignMethod,iMethodLen"},
    {"QByteArray", "GetGMV2ASNData(QByteArray,QByteArray)", "qSealSignInfo,qEccSign"},
};

const std::vector<MethodRow> kBase64 = {
    {"void", "setTableCode(char*)", "p"}, {"QString", "encodeEx(QByteArray)", "data"},
    {"char*", "encodeBase64Ex(unsigned char*,int,char*)", "lpValue,ValueLen,TableBase64"},
    {"unsigned char*", "decodeBase64Ex(unsigned char*,int,char*,int*)",
     "lpValue,ValueLen,TableBase64,outlen"},
};

const std::vector<MethodRow> kUtil = {
    {"BOOL", "sm3_with_sm2(unsigned char*,int,unsigned char*,int,const char*,int,unsigned char*)",
     "input,ilen,public_key,keylen,user_id,uidlen,output"},
    {"void", "sm3(unsigned char*,int,unsigned char*)", "input,ilen,output"},
    {"int", "sm2Verify(unsigned char*,uint,unsigned char*,uint,unsigned char*,uint)",
     "pbtPubKey,uiPubKeyLen,pbtDigestData,uiDigestDataLen,pbtSignData,uiSignDataLen"},
    {"int", "rsaVerify(unsigned char*,uint,unsigned char*,uint,unsigned char*,uint)",
     "pbtCertData,dwCertDataLen,pbtData,dwDataLen,pbtSignData,dwSignDataLen"},
    {"QByteArray", "convSignDataToP1(QByteArray)", "data"},
    {"BOOL", "rsaDigest(BYTE*,uint,BYTE*,uint*)", "pbtData,dwDataLen,pbtHashData,pdwHashDataLength"},
    {"QString", "Multi2Utf8(QByteArray)", "data"}, {"QByteArray", "Utf8toMulti(QString)", "strUtf8"},
    {"QString", "Wide2Utf8(QByteArray)", "data"}, {"QByteArray", "Utf8toWide(QString)", "strUtf8"},
};

void expectContract(const QMetaObject& meta, const char* className, const QMetaObject& base,
                    const std::vector<MethodRow>& rows) {
    SCOPED_TRACE(className);
    EXPECT_STREQ(meta.className(), className);
    EXPECT_EQ(meta.superClass(), &base);
    EXPECT_EQ(meta.methodOffset(), base.methodCount()) << "own methods follow the base class";
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), static_cast<int>(rows.size()));
    for (size_t i = 0; i < rows.size(); ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + static_cast<int>(i));
        SCOPED_TRACE(rows[i].signature);
        EXPECT_EQ(method.methodSignature(), QByteArray(rows[i].signature)) << "index " << i;
        EXPECT_STREQ(method.typeName(), rows[i].returnType);
        EXPECT_EQ(method.parameterNames().join(','), QByteArray(rows[i].parameterNames));
        EXPECT_EQ(method.methodType(), QMetaMethod::Method) << "no signals or slots";
        EXPECT_EQ(method.access(), QMetaMethod::Public);
    }
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset()) << "no properties";
    EXPECT_EQ(meta.enumeratorCount(), meta.enumeratorOffset()) << "no enums";
    EXPECT_EQ(meta.classInfoCount(), meta.classInfoOffset()) << "no class info";
    EXPECT_EQ(meta.constructorCount(), 0);
}

TEST(HostContract, EveryComponentMetaObjectIsExactlyTheTable) {
    expectContract(ZTAsnBlock::staticMetaObject, "ZTAsnBlock", QObject::staticMetaObject, kAsnBlock);
    expectContract(ZTAsn::staticMetaObject, "ZTAsn", ZTAsnBlock::staticMetaObject, kAsn);
    expectContract(ZTCertificate::staticMetaObject, "ZTCertificate", QObject::staticMetaObject, kCertificate);
    expectContract(ZTBase64::staticMetaObject, "ZTBase64", QObject::staticMetaObject, kBase64);
    expectContract(ZTUtil::staticMetaObject, "ZTUtil", QObject::staticMetaObject, kUtil);
    expectContract(ZTVerifyTools::staticMetaObject, "ZTVerifyTools", QObject::staticMetaObject, {});
}

TEST(HostContract, DefaultArgumentEntriesAreClones) {
    const QMetaObject& block = ZTAsnBlock::staticMetaObject;
    const int offset = block.methodOffset();
    EXPECT_TRUE(block.method(offset + 1).attributes() & QMetaMethod::Cloned);   // dump()
    EXPECT_TRUE(block.method(offset + 5).attributes() & QMetaMethod::Cloned);   // getChild(int)
    const QMetaObject& asn = ZTAsn::staticMetaObject;
    EXPECT_TRUE(asn.method(asn.methodOffset() + 1).attributes() & QMetaMethod::Cloned);  // create()
}

}  // namespace
