#include "verify/validity_check.h"

#include <QTimeZone>

#include "host/host_session.h"
#include "readers/certificate_fields.h"
#include "readers/der_values.h"
#include "services/signature_check.h"

namespace {

QString disagreementOf(bool library, int version) {
    if (library && version < 3)
        return QStringLiteral("the library reads the validity of version-3 certificates only and counts this "
                              "version-%1 certificate as valid").arg(version);
    const QString zone = QString::fromLatin1(QTimeZone::systemTimeZoneId());
    return QStringLiteral("the library compares the certificate's digits with the local time (%1); taken as UTC, "
                          "as certificates state them, the certificate is %2 now")
        .arg(zone, library ? QStringLiteral("not valid") : QStringLiteral("valid"));
}

}  // namespace

ValidityNow checkValidityNow(HostSession& session, const QByteArray& certificate) {
    ValidityNow result;
    result.now = QDateTime::currentDateTimeUtc();
    Check& check = result.check;
    check.name = QStringLiteral("valid now");
    check.library = answerOf(certificateValidNow(session.library(), certificate));
    int version = 3;
    try {
        const CertificateFields fields = readCertificateFields(ByteView::of(certificate));
        result.notBefore = fields.notBefore;
        result.notAfter = fields.notAfter;
        version = fields.version;
        check.strict = answerOf(result.notBefore <= result.now && result.now <= result.notAfter);
        check.problem = QStringLiteral("the certificate is valid %1 .. %2 (its own digits, UTC); now is %3")
                            .arg(isoTime(result.notBefore), isoTime(result.notAfter), isoTime(result.now));
    } catch (const FormatError& error) {
        check.strict = Answer::No;
        check.problem = QStringLiteral("the validity cannot be read: %1").arg(error.message);
    }
    if (check.disagrees())
        check.disagreement = disagreementOf(check.library == Answer::Yes, version);
    return result;
}
