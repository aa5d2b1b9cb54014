#include "readers/signed_data.h"

#include "readers/certificate_fields.h"
#include "readers/der.h"
#include "readers/der_builder.h"
#include "readers/ses_fields.h"

namespace {

QString algorithmOf(const der::Element& identifier, const char* what) {
    der::Fields fields(identifier, der::tag::kSequence, QLatin1String(what));
    return ses::algorithm(fields.next(der::tag::kOid, "algorithm"));
}

void readAttributes(const der::Element& attributes, SignedData* data) {
    data->hasSignedAttributes = true;
    // Signed as a SET: the same length octets and content under tag 0x31.
    data->signedAttributes = QByteArray(1, char(der::tag::kSet)) + attributes.whole.toByteArray().mid(1);
    der::Fields list(attributes, attributes.tag, QStringLiteral("the signed attributes"));
    while (!list.atEnd()) {
        der::Fields attribute(list.nextAny("attribute"), der::tag::kSequence, QStringLiteral("a signed attribute"));
        const QString type = ses::algorithm(attribute.next(der::tag::kOid, "type"));
        der::Fields values(attribute.next(der::tag::kSet, "values"), der::tag::kSet,
                           QStringLiteral("the values of attribute %1").arg(type));
        if (type == QLatin1String(oid::kMessageDigest)) {
            data->hasMessageDigest = true;
            data->messageDigest = values.next(der::tag::kOctetString, "message digest").content;
        }
    }
}

void readSignerInfo(const der::Element& element, SignedData* data) {
    der::Fields signer(element, der::tag::kSequence, QStringLiteral("the signer information"));
    signer.next(der::tag::kInteger, "version");
    der::Element identifier;
    if (signer.nextIf(der::tag::kSequence, &identifier)) {
        der::Fields issuerAndSerial(identifier, der::tag::kSequence, QStringLiteral("the signer's issuer and serial"));
        data->issuer = issuerAndSerial.next(der::tag::kSequence, "issuer").whole;
        data->serialNumber = issuerAndSerial.next(der::tag::kInteger, "serial number").content;
    } else {
        signer.next(der::tag::contextPrimitive(0), "signer identifier");
    }
    data->digestAlgorithm = algorithmOf(signer.next(der::tag::kSequence, "digest algorithm"), "the digest algorithm");
    der::Element attributes;
    if (signer.nextIf(der::tag::contextConstructed(0), &attributes))
        readAttributes(attributes, data);
    data->signatureAlgorithm =
        algorithmOf(signer.next(der::tag::kSequence, "signature algorithm"), "the signature algorithm");
    data->signature = signer.next(der::tag::kOctetString, "signature").content;
}

void readSignedContent(const der::Element& element, SignedData* data) {
    der::Fields info(element, der::tag::kSequence, QStringLiteral("the signed content information"));
    info.next(der::tag::kOid, "content type");
    der::Element wrapped;
    if (info.nextIf(der::tag::contextConstructed(0), &wrapped)) {
        data->hasContent = true;
        data->content = der::expectSingle(wrapped.content, der::tag::kOctetString, QStringLiteral("the signed content"))
                            .content;
    }
}

}  // namespace

bool isSignedDataType(const QString& dotted) {
    return dotted == QLatin1String(oid::kGmSignedData) || dotted == QLatin1String(oid::kPkcs7SignedData);
}

SignedData readSignedData(const ByteView& der) {
    const der::Element whole = der::expectSingle(der, der::tag::kSequence, QStringLiteral("the signedData"));
    der::Fields contentInfo(whole, der::tag::kSequence, QStringLiteral("the signedData"));
    SignedData data;
    data.contentType = ses::algorithm(contentInfo.next(der::tag::kOid, "content type"));
    if (!isSignedDataType(data.contentType))
        throw FormatError{QStringLiteral("the content type %1 is not signedData").arg(data.contentType)};
    const der::Element explicitContent = contentInfo.next(der::tag::contextConstructed(0), "content");
    const der::Element signedData = der::expectSingle(explicitContent.content, der::tag::kSequence,
                                                      QStringLiteral("the signedData content"));
    der::Fields fields(signedData, der::tag::kSequence, QStringLiteral("the signedData content"));
    fields.next(der::tag::kInteger, "version");
    fields.next(der::tag::kSet, "digest algorithms");
    readSignedContent(fields.next(der::tag::kSequence, "content information"), &data);
    der::Element certificates;
    if (fields.nextIf(der::tag::contextConstructed(0), &certificates)) {
        der::Fields list(certificates, certificates.tag, QStringLiteral("the certificates"));
        while (!list.atEnd())
            data.certificates.push_back(list.nextAny("certificate").whole);
    }
    der::Element revocations;
    fields.nextIf(der::tag::contextConstructed(1), &revocations);
    der::Fields signers(fields.next(der::tag::kSet, "signer information"), der::tag::kSet,
                        QStringLiteral("the signer information"));
    data.signerCount = signers.count();
    readSignerInfo(signers.next(der::tag::kSequence, "first signer"), &data);
    return data;
}

ByteView signerCertificate(const SignedData& data) {
    if (data.issuer.empty())
        return data.certificates.size() == 1 ? data.certificates.front() : ByteView();
    for (const ByteView& certificate : data.certificates) {
        try {
            const CertificateFields fields = readCertificateFields(certificate);
            if (fields.issuer.sameBytes(data.issuer) && fields.serialNumber.sameBytes(data.serialNumber))
                return certificate;
        } catch (const FormatError&) {
            // not a certificate zthost can read: not the signer's
        }
    }
    return ByteView();
}
