// ZTCertificate: the walk over the to-be-signed part of a certificate.
//
// The walk goes by child index and tag, in a fixed order, and fills the
// object's fields as it goes. Fields are not cleared first: a field whose
// source is absent keeps the value of a certificate opened earlier by the
// same object, and a failure part-way keeps what was filled before it.
#include <QDebug>

#include "ztutil/ztasn.h"
#include "ztutil/ztcertificate.h"
#include "asn/asn_tags.h"

namespace {

const int kUtcTimeLength = 13;
const int kGeneralizedTimeLength = 15;
const int kUncompressedPointLength = 65;
const unsigned char kUncompressedPointPrefix = 0x04;

// The debug line of a failed step.
void tbsFail(const char* what) {
    qDebug() << (QByteArray("[ZTCertificate::parseTBSCertificate] ...tbsCertificate ") + what)
                    .constData();
}

// Walks the RDNs of a name; every attribute goes to `step`, whose own result
// is ignored. A multi-valued RDN is read value by value.
template <typename AttributeStep>
bool walkName(ZTAsnBlock* name, AttributeStep step) {
    for (int i = 0; i < name->getChildCount(); ++i) {
        ZTAsnBlock* rdn = name->getChild(i, tag::kSet);
        if (rdn == nullptr) {
            tbsFail("relativeDistinguishedName fail");
            return false;
        }
        const int valueCount = rdn->getChildCount();
        qDebug() << "set count:" << valueCount;
        const int walked = valueCount < 2 ? 1 : valueCount;
        for (int j = 0; j < walked; ++j) {
            ZTAsnBlock* attribute = rdn->getChild(j, tag::kSequence);
            if (attribute == nullptr) {
                tbsFail("attributeTypeAndValue fail");
                return false;
            }
            step(attribute);
        }
    }
    return true;
}

// Reads one validity time into `out`; the labels name notBefore or notAfter.
struct TimeLabels {
    const char* fail;
    const char* valueFail;
    const char* utcLabel;
    const char* genLabel;
};

}  // namespace

bool ZTCertificate::parseTBSCertificate(ZTAsnBlock* root) {
    if (root == nullptr)
        return false;
    ZTAsnBlock* tbs = root->getChild(0, tag::kSequence);
    if (tbs == nullptr) {
        tbsFail("fail");
        return false;
    }

    int shift = 0;
    if (ZTAsnBlock* explicitVersion = tbs->getChild(0, tag::kContextZero)) {
        ZTAsnBlock* versionValue = explicitVersion->getChild(0, tag::kInteger);
        if (versionValue == nullptr) {
            tbsFail("version2 fail");
            return false;
        }
        version_ = versionValue->toInt();
        qDebug() << "version:" << version_;
        shift = 1;
    } else {
        tbsFail("version fail");  // a version-1 certificate: not an error
        version_ = 0;
    }

    ZTAsnBlock* serial = tbs->getChild(shift, tag::kInteger);
    if (serial == nullptr) {
        tbsFail("serialNumber fail");
        return false;
    }
    serialNumber_ = QString::fromLatin1(serial->toByteArray().toHex());
    qDebug() << "certSerialNumber:" << serialNumber_;

    ZTAsnBlock* signature = tbs->getChild(shift + 1, tag::kSequence);
    if (signature == nullptr) {
        tbsFail("signature fail");
        return false;
    }
    ZTAsnBlock* signatureOid = signature->getChild(0, tag::kOid);
    if (signatureOid == nullptr) {
        tbsFail("signature2 fail");
        return false;
    }
    algName_ = signatureOid->toString();
    qDebug() << "signature:" << algName_;

    ZTAsnBlock* issuer = tbs->getChild(shift + 2, tag::kSequence);
    if (issuer == nullptr) {
        tbsFail("issuer fail");
        return false;
    }
    qDebug() << "issuer count:" << issuer->getChildCount();
    if (!walkName(issuer, [this](ZTAsnBlock* attribute) { return parseTBSIssuer(attribute); }))
        return false;

    ZTAsnBlock* validity = tbs->getChild(shift + 3, tag::kSequence);
    if (validity == nullptr) {
        tbsFail("validity fail");
        return false;
    }
    auto readTime = [this, validity](int which, const TimeLabels& labels, QDateTime* out) {
        ZTAsnBlock* time = validity->getChild(which, 0);
        if (time == nullptr) {
            tbsFail(labels.fail);
            return false;
        }
        const QString text = time->toString();
        if (!text.endsWith(QLatin1Char('Z'))) {
            tbsFail(labels.valueFail);
            return false;
        }
        if (time->checkTag(tag::kUtcTime) && text.length() == kUtcTimeLength) {
            qDebug() << labels.utcLabel << text;
            *out = fromUTCTime(text);
        } else if (time->checkTag(tag::kGeneralizedTime) && text.length() == kGeneralizedTimeLength) {
            qDebug() << labels.genLabel << text;
            *out = fromGeneralizedTime(text);
        } else {
            tbsFail(labels.fail);
            return false;
        }
        return true;
    };
    if (!readTime(0, {"notBefore fail", "notBeforeValue fail", "notBefore UTCTime:", "notBefore GenTime:"},
                  &notBefore_))
        return false;
    if (!readTime(1, {"notAfter fail", "notAfterValue fail", "notAfter UTCTime:", "notAfter GenTime:"},
                  &notAfter_))
        return false;
    qDebug() << "validity notBefore: " << notBefore_.toString();
    qDebug() << "validity notAfter: " << notAfter_.toString();

    ZTAsnBlock* subject = tbs->getChild(shift + 4, tag::kSequence);
    if (subject == nullptr) {
        tbsFail("subject fail");
        return false;
    }
    qDebug() << "subject count:" << subject->getChildCount();
    if (!walkName(subject, [this](ZTAsnBlock* attribute) { return parseTBSSubject(attribute); }))
        return false;

    ZTAsnBlock* keyInfo = tbs->getChild(shift + 5, tag::kSequence);
    if (keyInfo == nullptr) {
        tbsFail("subjectPublicKeyInfo fail");
        return false;
    }
    ZTAsnBlock* algorithm = keyInfo->getChild(0, tag::kSequence);
    if (algorithm == nullptr) {
        tbsFail("subjectPublicKeyInfoAlgorithm fail");
        return false;
    }
    ZTAsnBlock* algorithmOid = algorithm->getChild(0, tag::kOid);
    if (algorithmOid == nullptr) {
        tbsFail("subjectPublicKeyInfoAlgorithmOID1 fail");
        return false;
    }
    pubKeyAlgOID_ = algorithmOid->toString();
    qDebug() << "subjectPublicKeyAlgorithmOID1:" << pubKeyAlgOID_;
    // The curve of an EC key; an RSA key's NULL parameters leave the field as it was.
    if (ZTAsnBlock* parameterOid = algorithm->getChild(1, tag::kOid)) {
        pubKeyAlgParamOID_ = parameterOid->toString();
        qDebug() << "subjectPublicKeyAlgorithmOID2:" << pubKeyAlgParamOID_;
    }

    ZTAsnBlock* keyBits = keyInfo->getChild(1, tag::kBitString);
    if (keyBits == nullptr) {
        tbsFail("subjectPublicKey fail");
        return false;
    }
    pubKey_ = keyBits->toByteArray();
    if (pubKey_.size() == kUncompressedPointLength &&
        static_cast<unsigned char>(pubKey_.at(0)) == kUncompressedPointPrefix)
        pubKey_.remove(0, 1);  // X then Y
    return true;
}

namespace {

// The type and value of one attribute, or false with the debug line written.
bool readAttribute(ZTAsnBlock* attribute, QString* typeText, QString* valueText) {
    ZTAsnBlock* type = attribute->getChild(0, tag::kOid);
    if (type == nullptr) {
        tbsFail("type fail");
        return false;
    }
    ZTAsnBlock* value = attribute->getChild(1, 0);
    if (value == nullptr) {
        tbsFail("value fail");
        return false;
    }
    *typeText = type->toString();
    *valueText = value->toString();
    return true;
}

// The value replaces the field of the matching type, so of several values of
// one type the last in DER order is kept.
void storeAttribute(const char* label, const QString& value, QString* field) {
    *field = value;
    qDebug() << label << value;
}

}  // namespace

bool ZTCertificate::parseTBSIssuer(ZTAsnBlock* attr) {
    QString type, value;
    if (!readAttribute(attr, &type, &value))
        return false;
    qDebug() << "typeOID:" << type;
    qDebug() << "attrValue:" << value;
    if (type == QLatin1String("2.5.4.3"))
        storeAttribute("issuerCN:", value, &issuerCN_);
    else if (type == QLatin1String("2.5.4.11"))
        storeAttribute("issuerOU:", value, &issuerOU_);
    else if (type == QLatin1String("2.5.4.10"))
        storeAttribute("issuerO:", value, &issuerO_);
    else if (type == QLatin1String("2.5.4.6"))
        storeAttribute("issuerC:", value, &issuerC_);
    return true;
}

bool ZTCertificate::parseTBSSubject(ZTAsnBlock* attr) {
    QString type, value;
    if (!readAttribute(attr, &type, &value))
        return false;
    qDebug() << "oid:" << type;
    qDebug() << "value:" << value;
    if (type == QLatin1String("2.5.4.3"))
        storeAttribute("subjectCN:", value, &subjectCN_);
    else if (type == QLatin1String("2.5.4.11"))
        storeAttribute("subjectOU:", value, &subjectOU_);
    else if (type == QLatin1String("2.5.4.10"))
        storeAttribute("subjectO:", value, &subjectO_);
    // This literal is what hosts have always matched; the standard PKCS #9
    // e-mail type reads as 1.2.840.113549.1.9.1 and so is not kept.
    else if (type == QLatin1String("1.2.840.16013.1.9.1"))
        storeAttribute("subjectE:", value, &subjectE_);
    return true;
}
