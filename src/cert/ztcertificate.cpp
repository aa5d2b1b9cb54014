// ZTCertificate: lifetime, open/close and the field accessors.
#include "ztutil/ztcertificate.h"

#include <QDebug>
#include <cstdio>

#include "ztutil/ztasn.h"
#include "ztutil/ztverifytools.h"
#include "asn/asn_tags.h"

namespace {

QString hexLower(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex());
}

}  // namespace

ZTCertificate::ZTCertificate(QObject* parent)
    : QObject(parent), asn_(new ZTAsn(this)), version_(0) {}

ZTCertificate::~ZTCertificate() {
    close();
}

void ZTCertificate::dump() {
    qDebug() << "asn:" << asn_;
    asn_->dump(0);
}

bool ZTCertificate::open(QByteArray data) {
    qDebug() << "[ZTCertificate::open]...";
    if (data.isEmpty()) {
        std::printf("[ZTCertificate::open] data.isEmpty\n");
        return false;
    }
    // A document left open by an earlier open() is not closed here: the new
    // tree is appended after it and child 0 still names the first
    // certificate. Hosts that reuse one object call close() in between.
    if (!asn_->open(data)) {
        std::printf("[ZTCertificate::open] asn->open fail! \n");
        qDebug() << "[ZTCertificate::open] asn->open fail!";
        return false;
    }
    if (!asn_->checkTag(tag::kSequence)) {
        std::printf("[ZTCertificate::open] asn root type is not SEQUENCE\n");
        qDebug() << "[ZTCertificate::open] asn root type is not SEQUENCE!";
        asn_->close();
        return false;
    }
    if (!parseTBSCertificate(asn_)) {
        std::printf("[ZTCertificate::open] parseTBSCertificate fail\n");
        qDebug() << "[ZTCertificate::open] parseTBSCertificate fail!";
        asn_->close();
        return false;
    }
    data_ = data;
    return true;
}

void ZTCertificate::close() {
    asn_->close();
}

QString ZTCertificate::version() {
    if (version_ == 0)
        return QStringLiteral("1");
    if (version_ == 1)
        return QStringLiteral("2");
    return QStringLiteral("3");
}

QString ZTCertificate::serialNumber() {
    return serialNumber_;
}

QString ZTCertificate::algName() {
    return algName_;
}

QString ZTCertificate::getIssuerC() {
    return issuerC_;
}

QString ZTCertificate::getIssuerO() {
    return issuerO_;
}

QString ZTCertificate::getIssuerOU() {
    return issuerOU_;
}

QString ZTCertificate::getIssuerCN() {
    return issuerCN_;
}

// Each arg() fills the lowest remaining marker, so a value that itself holds
// a marker such as "%3" is filled again by a later step.
QString ZTCertificate::getIssuerDN() {
    return QStringLiteral("C=%1,O=%2,OU=%3,CN=%4")
        .arg(issuerC_)
        .arg(issuerO_)
        .arg(issuerOU_)
        .arg(issuerCN_);
}

QString ZTCertificate::getSubjectDN() {
    return QStringLiteral("CN=%1,E=%2,O=%3,OU=%4")
        .arg(subjectCN_)
        .arg(subjectE_)
        .arg(subjectO_)
        .arg(subjectOU_);
}

QString ZTCertificate::getSubjectCN() {
    return subjectCN_;
}

QString ZTCertificate::getSubjectE() {
    return subjectE_;
}

QString ZTCertificate::getSubjectO() {
    return subjectO_;
}

QString ZTCertificate::getSubjectOU() {
    return subjectOU_;
}

QDateTime ZTCertificate::notAfter() {
    return notAfter_;
}

QDateTime ZTCertificate::notBefore() {
    return notBefore_;
}

QString ZTCertificate::pubkey() {
    return hexLower(pubKey_);
}

QByteArray ZTCertificate::getPublicKeyData() {
    return pubKey_;
}

QString ZTCertificate::pubKeyAlgOID() {
    return pubKeyAlgOID_;
}

bool ZTCertificate::ZTGetPubKeyByCert(unsigned char* pbtCertData, uint dwCertDataLength,
                                      unsigned char* pbtPubKey, uint* pdwPubKeySize) {
    return ZTVerifyTools::ZTGetPubKeyByCert(pbtCertData, dwCertDataLength, pbtPubKey,
                                            pdwPubKeySize) != 0;
}
