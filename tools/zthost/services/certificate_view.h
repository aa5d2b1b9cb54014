// A certificate opened in the library's ZTCertificate component, read
// through its accessors by name.
#ifndef ZTHOST_CERTIFICATE_VIEW_H
#define ZTHOST_CERTIFICATE_VIEW_H

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <memory>
#include <vector>

#include "output/report.h"
#include "readers/certificate_fields.h"

class HostSession;

class CertificateView {
public:
    // Opens `der`; throws CommandFailure naming `source` when the library
    // cannot parse it.
    CertificateView(HostSession& session, const QByteArray& der, const QString& source);

    QObject* component() const { return component_.get(); }
    const QByteArray& der() const { return der_; }

    // A no-argument accessor returning QString, QDateTime or QByteArray.
    QString text(const char* accessor) const;
    // A name accessor (getSubjectCN, getIssuerO, ...) as the text the name
    // is: the library returns UTF-8 and BMP names as UTF-8 octets and other
    // string types as their octets, one per character; they are decoded by
    // the tag the certificate gives the attribute, with the decoder `zthost
    // asn` uses.
    QString name(const char* accessor) const;
    QDateTime time(const char* accessor) const;
    QByteArray bytes(const char* accessor) const;

    // GetCertParam(certificate, 4, SEQUENCE): the validity digits as the
    // certificate holds them, "notBefore;notAfter" without the final "Z".
    QString validityDigits() const;

    // Every field the component exposes, for `zthost cert`.
    Report fields() const;

private:
    std::unique_ptr<QObject> component_;
    QByteArray der_;
    std::vector<NameAttribute> issuer_, subject_;  // as zthost reads them; views into der_
};

// A certificate time as the library returns it (UTC), ISO 8601.
QString timeText(const QDateTime& time);

#endif
