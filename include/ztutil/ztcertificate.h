// The ZTCertificate component: reads one X.509 certificate into plain fields,
// converts certificates between DER and PEM text, and builds the DER
// structures of GM and government-affairs seal signatures.
#ifndef ZTUTIL_ZTCERTIFICATE_H
#define ZTUTIL_ZTCERTIFICATE_H

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>

#include "ztutil_global.h"

class ZTAsn;
class ZTAsnBlock;

class ZTUTIL_EXPORT ZTCertificate : public QObject {
    Q_OBJECT
public:
    explicit ZTCertificate(QObject* parent = nullptr);
    ~ZTCertificate() override;

    // Writes the document's node tree (debug stream and standard output).
    Q_INVOKABLE void dump();
    // Parses a DER certificate; see the field walk in ztcertificate_open.cpp.
    Q_INVOKABLE bool open(QByteArray data);
    // Frees the parsed tree; the fields keep their values.
    Q_INVOKABLE void close();

    Q_INVOKABLE QString version();
    Q_INVOKABLE QString serialNumber();
    Q_INVOKABLE QString algName();
    Q_INVOKABLE QString getIssuerC();
    Q_INVOKABLE QString getIssuerO();
    Q_INVOKABLE QString getIssuerOU();
    Q_INVOKABLE QString getIssuerCN();
    Q_INVOKABLE QString getIssuerDN();
    Q_INVOKABLE QString getSubjectDN();
    Q_INVOKABLE QString getSubjectCN();
    Q_INVOKABLE QString getSubjectE();
    Q_INVOKABLE QString getSubjectO();
    Q_INVOKABLE QString getSubjectOU();
    Q_INVOKABLE QDateTime notAfter();
    Q_INVOKABLE QDateTime notBefore();
    Q_INVOKABLE QString pubkey();
    Q_INVOKABLE QByteArray getPublicKeyData();
    Q_INVOKABLE QString pubKeyAlgOID();
    // Certificate time texts as instants; the digits are read as wall time
    // at UTC-8, so the result lies 8 hours after the digits taken as UTC.
    Q_INVOKABLE QDateTime fromUTCTime(QString value);
    Q_INVOKABLE QDateTime fromGeneralizedTime(QString value);
    Q_INVOKABLE bool ZTGetPubKeyByCert(unsigned char* pbtCertData, uint dwCertDataLength,
                                       unsigned char* pbtPubKey, uint* pdwPubKeySize);
    Q_INVOKABLE QString GetCertString(QByteArray qbCert);
    Q_INVOKABLE QByteArray GetCertByteArray(QString qStrCert);
    Q_INVOKABLE QString GetCertParam(QByteArray qCert, int iParamID, int iParamStruct);
    Q_INVOKABLE QByteArray GetZWASNData(QByteArray qSealSignInfo, QByteArray qCert,
                                        QByteArray qMethod, QByteArray qEccSign);
    Q_INVOKABLE QByteArray GetZWSignInfo(unsigned char* pVersion, int iVersionLen,
                                         unsigned char* pSealInfo, int iSealInfoLen,
                                         unsigned char* pPropertyInfo, int PropertyInfoLen,
                                         unsigned char* pHashData, int iHashLen,
                                         unsigned char* pSignMethod, int iMethodLen,
                                         unsigned char* pTimeInfo, int iTimeInfoLen);
    Q_INVOKABLE QByteArray GetGMSignInfo(unsigned char* pVersion, int iVersionLen,
                                         unsigned char* pSealInfo, int iSealInfoLen,
                                         unsigned char* pPropertyInfo, int PropertyInfoLen,
                                         unsigned char* pHashData, int iHashLen,
                                         unsigned char* pCertContext, int iCertLen,
                                         unsigned char* pTimeInfo, int iTimeInfoLen,
                                         unsigned char* pSignMethod, int iMethodLen);
    Q_INVOKABLE QByteArray GetGMV2ASNData(QByteArray qSealSignInfo, QByteArray qEccSign);

    // Not reachable by name: helpers of open() and of the seal structures.
    bool parseTBSCertificate(ZTAsnBlock* root);
    bool parseTBSIssuer(ZTAsnBlock* attr);
    bool parseTBSSubject(ZTAsnBlock* attr);
    // The time digits of child `which` of a validity node (12 of a UTCTime,
    // 14 of a GeneralizedTime), or empty text.
    QString GetValidityTime(ZTAsnBlock* validity, int which);
    // A 64-byte r || s signature value as DER SEQUENCE { INTEGER r, INTEGER s };
    // a value that is DER already is passed through.
    QByteArray CreateSM2DigalStruct(QByteArray eccSign);

private:
    QByteArray data_;
    ZTAsn* asn_;
    int version_;
    QString serialNumber_;
    QString algName_;
    QString issuerC_;
    QString issuerO_;
    QString issuerOU_;
    QString issuerCN_;
    QString subjectCN_;
    QString subjectE_;
    QString subjectO_;
    QString subjectOU_;
    QDateTime notBefore_;
    QDateTime notAfter_;
    QString pubKeyAlgOID_;
    QString pubKeyAlgParamOID_;
    QByteArray pubKey_;
};

#endif
