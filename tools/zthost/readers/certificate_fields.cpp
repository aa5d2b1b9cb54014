#include "readers/certificate_fields.h"

#include <QStringList>

#include "readers/der.h"
#include "readers/der_values.h"
#include "readers/ses_fields.h"

namespace {

struct ShortName {
    const char* type;
    const char* name;
};

const ShortName kShortNames[] = {
    {"2.5.4.3", "CN"},       {"2.5.4.6", "C"},         {"2.5.4.7", "L"},
    {"2.5.4.8", "ST"},       {"2.5.4.10", "O"},        {"2.5.4.11", "OU"},
    {"2.5.4.5", "serialNumber"}, {"2.5.4.12", "title"}, {"1.2.840.113549.1.9.1", "emailAddress"},
    {"0.9.2342.19200300.100.1.25", "DC"}, {"0.9.2342.19200300.100.1.1", "UID"},
};

QString shortName(const QString& type) {
    for (const ShortName& entry : kShortNames) {
        if (type == QLatin1String(entry.type))
            return QLatin1String(entry.name);
    }
    return type;
}

// Name ::= SEQUENCE OF SET OF SEQUENCE { type OID, value ANY }
std::vector<NameAttribute> readName(const der::Element& name, const char* what) {
    std::vector<NameAttribute> attributes;
    der::Fields rdns(name, der::tag::kSequence, QLatin1String(what));
    while (!rdns.atEnd()) {
        der::Fields set(rdns.next(der::tag::kSet, "relative distinguished name"), der::tag::kSet,
                        QStringLiteral("a relative distinguished name"));
        while (!set.atEnd()) {
            der::Fields pair(set.next(der::tag::kSequence, "attribute"), der::tag::kSequence, QStringLiteral("an attribute"));
            const QString type = ses::algorithm(pair.next(der::tag::kOid, "attribute type"));
            const der::Element value = pair.nextAny("attribute value");
            pair.expectEnd();
            attributes.push_back(NameAttribute{type, value.tag, value.content});
        }
    }
    return attributes;
}

int versionOf(der::Fields& tbs) {
    der::Element explicitVersion;
    if (!tbs.nextIf(der::tag::contextConstructed(0), &explicitVersion))
        return 1;
    der::Fields inner(explicitVersion, der::tag::contextConstructed(0), QStringLiteral("the version"));
    return int(ses::integer(inner.next(der::tag::kInteger, "version"), "version")) + 1;
}

}  // namespace

QString NameAttribute::text() const {
    return der::decodeText(tag, value);
}

CertificateFields readCertificateFields(const ByteView& der) {
    const der::Element whole = der::expectSingle(der, der::tag::kSequence, QStringLiteral("the certificate"));
    der::Fields certificate(whole, der::tag::kSequence, QStringLiteral("the certificate"));
    const der::Element tbsElement = certificate.next(der::tag::kSequence, "to-be-signed part");
    der::Fields tbs(tbsElement, der::tag::kSequence, QStringLiteral("the certificate's to-be-signed part"));
    CertificateFields fields;
    fields.toBeSigned = tbsElement.whole;
    fields.version = versionOf(tbs);
    fields.serialNumber = tbs.next(der::tag::kInteger, "serial number").content;
    tbs.next(der::tag::kSequence, "signature algorithm");
    const der::Element issuer = tbs.next(der::tag::kSequence, "issuer");
    fields.issuer = issuer.whole;
    fields.issuerAttributes = readName(issuer, "the issuer");
    der::Fields validity(tbs.next(der::tag::kSequence, "validity"), der::tag::kSequence,
                         QStringLiteral("the validity"));
    fields.notBefore = ses::time(validity.nextAny("start"), "start of validity");
    fields.notAfter = ses::time(validity.nextAny("end"), "end of validity");
    const der::Element subject = tbs.next(der::tag::kSequence, "subject");
    fields.subject = subject.whole;
    fields.subjectAttributes = readName(subject, "the subject");
    der::Fields algorithm(certificate.next(der::tag::kSequence, "signature algorithm"), der::tag::kSequence,
                          QStringLiteral("the signature algorithm"));
    fields.signatureAlgorithm = ses::algorithm(algorithm.next(der::tag::kOid, "algorithm"));
    fields.signatureValue = ses::bitString(certificate.next(der::tag::kBitString, "signature"), "signature");
    return fields;
}

QString nameText(const std::vector<NameAttribute>& attributes) {
    QStringList parts;
    for (const NameAttribute& attribute : attributes)
        parts << shortName(attribute.type) + QLatin1Char('=') + attribute.text();
    return parts.join(QStringLiteral(", "));
}

const NameAttribute* lastAttribute(const std::vector<NameAttribute>& attributes, const char* type) {
    const NameAttribute* found = nullptr;
    for (const NameAttribute& attribute : attributes) {
        if (attribute.type == QLatin1String(type))
            found = &attribute;
    }
    return found;
}
