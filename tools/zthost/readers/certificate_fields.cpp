#include "readers/certificate_fields.h"

#include "readers/der.h"
#include "readers/ses_fields.h"

CertificateFields readCertificateFields(const ByteView& der) {
    const der::Element whole = der::expectSingle(der, der::tag::kSequence, QStringLiteral("the certificate"));
    der::Fields certificate(whole, der::tag::kSequence, QStringLiteral("the certificate"));
    der::Fields tbs(certificate.next(der::tag::kSequence, "to-be-signed part"), der::tag::kSequence,
                    QStringLiteral("the certificate's to-be-signed part"));
    der::Element version;
    tbs.nextIf(der::tag::contextConstructed(0), &version);
    CertificateFields fields;
    fields.serialNumber = tbs.next(der::tag::kInteger, "serial number").content;
    tbs.next(der::tag::kSequence, "signature algorithm");
    fields.issuer = tbs.next(der::tag::kSequence, "issuer").whole;
    der::Fields validity(tbs.next(der::tag::kSequence, "validity"), der::tag::kSequence,
                         QStringLiteral("the validity"));
    fields.notBefore = ses::time(validity.nextAny("start"), "start of validity");
    fields.notAfter = ses::time(validity.nextAny("end"), "end of validity");
    fields.subject = tbs.next(der::tag::kSequence, "subject").whole;
    return fields;
}
