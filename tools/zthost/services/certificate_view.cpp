#include "services/certificate_view.h"

#include "cli/cli.h"
#include "host/components.h"
#include "host/invoke.h"
#include "readers/der_tags.h"
#include "readers/oid_names.h"

namespace {

const int kValidityParam = 4;

}  // namespace

QString timeText(const QDateTime& time) {
    return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QStringLiteral("invalid");
}

CertificateView::CertificateView(HostSession& session, const QByteArray& der, const QString& source)
    : component_(requireComponent(session, progid::kCertificate)), der_(der) {
    bool opened = false;
    callByName(component_.get(), "open", Q_RETURN_ARG(bool, opened), Q_ARG(QByteArray, der_));
    if (!opened) {
        throw CommandFailure(kExitFailed,
                             QStringLiteral("%1: the library cannot parse this certificate").arg(source));
    }
}

QString CertificateView::text(const char* accessor) const {
    QString value;
    callByName(component_.get(), accessor, Q_RETURN_ARG(QString, value));
    return value;
}

QDateTime CertificateView::time(const char* accessor) const {
    QDateTime value;
    callByName(component_.get(), accessor, Q_RETURN_ARG(QDateTime, value));
    return value;
}

QByteArray CertificateView::bytes(const char* accessor) const {
    QByteArray value;
    callByName(component_.get(), accessor, Q_RETURN_ARG(QByteArray, value));
    return value;
}

QString CertificateView::validityDigits() const {
    QString value;
    callByName(component_.get(), "GetCertParam", Q_RETURN_ARG(QString, value), Q_ARG(QByteArray, der_),
               Q_ARG(int, kValidityParam), Q_ARG(int, int(der::tag::kSequence)));
    return value;
}

Report CertificateView::fields() const {
    Report report = Report::object();
    report.set("version", text("version"));
    report.set("serial_number", text("serialNumber"));
    const QString algorithm = text("algName");
    report.set("signature_algorithm", algorithm);
    report.set("signature_algorithm_name", oidName(algorithm));
    report.set("issuer", text("getIssuerDN"));
    report.set("subject", text("getSubjectDN"));
    report.set("issuer_c", text("getIssuerC"));
    report.set("issuer_o", text("getIssuerO"));
    report.set("issuer_ou", text("getIssuerOU"));
    report.set("issuer_cn", text("getIssuerCN"));
    report.set("subject_cn", text("getSubjectCN"));
    report.set("subject_e", text("getSubjectE"));
    report.set("subject_o", text("getSubjectO"));
    report.set("subject_ou", text("getSubjectOU"));
    report.set("not_before", timeText(time("notBefore")));
    report.set("not_after", timeText(time("notAfter")));
    report.set("validity_digits", validityDigits());
    const QString keyAlgorithm = text("pubKeyAlgOID");
    report.set("public_key_algorithm", keyAlgorithm);
    report.set("public_key_algorithm_name", oidName(keyAlgorithm));
    report.set("public_key_bytes", bytes("getPublicKeyData").size());
    report.set("public_key", text("pubkey"));
    return report;
}
