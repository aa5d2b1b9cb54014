#include "verify/signer_checks.h"

#include <QCryptographicHash>

#include "cli/cli.h"
#include "host/host_session.h"
#include "readers/certificate_fields.h"
#include "readers/der_values.h"
#include "readers/oid_names.h"
#include "services/certificate_view.h"
#include "services/sm3_digest.h"
#include "verify/chain_check.h"
#include "verify/sm2_check.h"

namespace {

const char kSm3Oid[] = "1.2.156.10197.1.401";

bool isSm2WithSm3(const QString& algorithm) {
    return algorithm == QLatin1String(oid::kSm2WithSm3);
}

// The digest of `bytes` by the name a seal gives it; empty for names zthost
// does not know.
QByteArray digestByName(HostSession& session, const QString& name, const QByteArray& bytes) {
    const QString key = name.trimmed().toLower().remove(QLatin1Char('-'));
    if (key == QLatin1String("sm3") || key == QLatin1String(kSm3Oid))
        return sm3Digest(session.library(), bytes);
    if (key == QLatin1String("sha1") || key == QLatin1String("1.3.14.3.2.26"))
        return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1);
    if (key == QLatin1String("sha256") || key == QLatin1String("2.16.840.1.101.3.4.2.1"))
        return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
    return QByteArray();
}

void checkSignerListed(HostSession& session, const SesSeal& seal, const QByteArray& signer,
                       SignatureVerdict* verdict) {
    const QString name = QStringLiteral("signer listed in the seal");
    for (const ByteView& certificate : seal.signerCertificates) {
        if (certificate.toByteArray() == signer) {
            verdict->add(CheckScope::Seal, name, true);
            return;
        }
    }
    for (const SealCertificateDigest& digest : seal.signerCertificateDigests) {
        const QByteArray computed = digestByName(session, digest.type, signer);
        if (computed.isEmpty())
            verdict->notes << QStringLiteral("the seal lists a certificate digest of unknown type %1").arg(digest.type);
        else if (computed == digest.value.toByteArray()) {
            verdict->add(CheckScope::Seal, name, true);
            return;
        }
    }
    verdict->fail(CheckScope::Seal, name, QStringLiteral("the seal does not list the signer's certificate"));
}

QString timeRange(const QDateTime& from, const QDateTime& to) {
    return QStringLiteral("%1 .. %2").arg(isoTime(from), isoTime(to));
}

}  // namespace

void checkSm2Signature(HostSession& session, CheckScope scope, const QString& name, const QByteArray& value,
                       const QByteArray& certificate, const QByteArray& data, SignatureVerdict* verdict) {
    verdict->add(checkSm2Value(session, scope, name, value, certificate, data));
}

void checkSignerCertificate(HostSession& session, const QByteArray& certificate, const QDateTime& at,
                            SignatureVerdict* verdict) {
    try {
        const CertificateView view(session, certificate, QStringLiteral("the signer's certificate"));
        verdict->signer = view.name("getSubjectCN");
        // Without a readable signing time the certificate must be valid now.
        const QDateTime when = at.isValid() ? at : QDateTime::currentDateTimeUtc();
        const QString whenName = at.isValid() ? QStringLiteral("signing time") : QStringLiteral("current time");
        // The library's reading of the validity digits, and zthost's own.
        const QStringList digits = view.validityDigits().split(QLatin1Char(';'));
        const QDateTime libraryFrom = der::timeFromText(digits.value(0).toLatin1());
        const QDateTime libraryTo = der::timeFromText(digits.value(1).toLatin1());
        QDateTime from, to;
        try {
            const CertificateFields fields = readCertificateFields(ByteView::of(certificate));
            from = fields.notBefore;
            to = fields.notAfter;
        } catch (const FormatError&) {
            // no validity zthost can read: the strict answer is no
        }
        Check check;
        check.name = QStringLiteral("signer certificate valid at ") + whenName;
        check.library = answerOf(libraryFrom.isValid() && libraryTo.isValid() && libraryFrom <= when && when <= libraryTo);
        check.strict = answerOf(from.isValid() && to.isValid() && from <= when && when <= to);
        check.problem = QStringLiteral("the %1 %2 is outside the signer certificate's validity %3")
                            .arg(whenName, isoTime(when), timeRange(from, to));
        check.disagreement = QStringLiteral("the library reads the validity of this certificate as %1")
                                 .arg(libraryFrom.isValid() ? timeRange(libraryFrom, libraryTo) : QStringLiteral("absent"));
        verdict->add(check);
    } catch (const CommandFailure& failure) {
        verdict->fail(CheckScope::Signature, QStringLiteral("signer certificate"), failure.message);
    }
}

void checkSeal(HostSession& session, const SesSeal& seal, const QDateTime& at, const QByteArray& signerCertificate,
               const std::vector<QByteArray>& authorities, SignatureVerdict* verdict) {
    verdict->sealName = seal.name;
    verdict->sealId = seal.esId;
    verdict->picture = seal.pictureData.toByteArray();
    verdict->pictureExtension = pictureExtension(seal.pictureType);
    const QString makerCheck = QStringLiteral("seal maker signature");
    if (!isSm2WithSm3(seal.makerAlgorithm)) {
        verdict->fail(CheckScope::Seal, makerCheck, QStringLiteral("the seal maker's algorithm %1 is not SM2 with SM3")
                                                        .arg(oidWithName(seal.makerAlgorithm)));
    } else {
        checkSm2Signature(session, CheckScope::Seal, makerCheck, seal.makerSignature.toByteArray(),
                          seal.makerCertificate.toByteArray(), seal.makerSignedBytes, verdict);
    }
    addChainCheck(session, seal.makerCertificate.toByteArray(), authorities, at, ChainOwner::SealMaker, verdict);
    const QDateTime when = at.isValid() ? at : QDateTime::currentDateTimeUtc();
    verdict->add(CheckScope::Seal, QStringLiteral("seal valid at signing time"),
                 seal.validStart <= when && when <= seal.validEnd,
                 QStringLiteral("the seal is valid %1; the %2 %3 is outside")
                     .arg(timeRange(seal.validStart, seal.validEnd),
                          at.isValid() ? QStringLiteral("signing time") : QStringLiteral("current time"), isoTime(when)));
    if (!signerCertificate.isEmpty())
        checkSignerListed(session, seal, signerCertificate, verdict);
}

void checkEmbeddedSeal(HostSession& session, const ByteView& sealBytes, const QDateTime& at,
                       const QByteArray& signerCertificate, const std::vector<QByteArray>& authorities,
                       SignatureVerdict* verdict) {
    try {
        checkSeal(session, readSesSeal(sealBytes), at, signerCertificate, authorities, verdict);
    } catch (const FormatError& error) {
        verdict->fail(CheckScope::Seal, QStringLiteral("seal structure"),
                      QStringLiteral("the seal inside is no GB/T 38540 or GM/T 0031 seal: %1").arg(error.message));
    }
}
