// zthost cert: a certificate's fields as ZTCertificate reads them, the
// extensions a person checks, and (cert verify) its path to a trusted root.
#include <QCryptographicHash>
#include <QMetaObject>
#include <QRegularExpression>

#include "cli/args.h"
#include "cli/cli.h"
#include "crypto/certificate_facts.h"
#include "host/host_session.h"
#include "host/invoke.h"
#include "output/console.h"
#include "output/report.h"
#include "services/certificate_input.h"
#include "services/certificate_view.h"
#include "services/sm3_digest.h"
#include "verify/chain_check.h"

namespace {

const char kUsage[] =
    "usage: zthost cert [--json] [--pem] FILE\n"
    "       zthost cert verify --ca FILE [--ca FILE]... [--json] CERT\n"
    "\n"
    "Prints the fields of an X.509 certificate as the library's ZTCertificate\n"
    "component reads them, then the extensions a person checks (key usage,\n"
    "basic constraints, subject alternative names, key identifiers, as\n"
    "OpenSSL reads them) and the SHA-256 and SM3 fingerprints (SM3 by the\n"
    "library). FILE may be DER, PEM or bare Base64 (told apart by content);\n"
    "\"-\" reads standard input. Names are shown as the text they are (UTF-8\n"
    "and BMP names decoded; the library returns their octets).\n"
    "\n"
    "Times are shown as the library returns them: the certificate's digits read\n"
    "at UTC-8, that is 8 hours later than the digits taken as UTC. The line\n"
    "\"validity digits\" shows the digits themselves (GetCertParam 4).\n"
    "\n"
    "verify builds the path from CERT to a root among the --ca certificates\n"
    "(roots and intermediates; a PEM file may hold several) by issuer and\n"
    "subject names and key identifiers, and checks every certificate on it:\n"
    "its signature (SM2 with the default ID through the library's\n"
    "ztutil_sm3_with_sm2 and SM2Verify, RSA through RsaVerify; each strictly\n"
    "with OpenSSL too, which decides), its validity period now by its own UTC\n"
    "digits, and for issuers basicConstraints cA, the path length and\n"
    "keyCertSign. Exit status 0: the path holds; 1: it does not.\n"
    "\n"
    "options:\n"
    "  --json          print the fields (or the path and checks) as JSON\n"
    "  --pem           print the certificate as PEM text, 64 characters a line\n"
    "                  (the Base64 of GetCertString)\n"
    "  -in FILE        the certificate, as FILE\n"
    "  --ca FILE       with verify: a trusted root or intermediate certificate\n"
    "\n"
    "examples:\n"
    "  zthost cert examples/sm2-cert.pem\n"
    "  zthost cert verify --ca root.pem --ca intermediate.pem signer.pem\n";

const int kPemColumns = 64;

// GetCertString gives the markers and the Base64 on one line; PEM readers
// want lines of 64 characters.
QString pemText(QObject* certificate, const QByteArray& der) {
    QString oneLine;
    callByName(certificate, "GetCertString", Q_RETURN_ARG(QString, oneLine), Q_ARG(QByteArray, der));
    const QString begin = QStringLiteral("-----BEGIN CERTIFICATE-----");
    const QString end = QStringLiteral("-----END CERTIFICATE-----");
    QString body = oneLine;
    body.remove(begin).remove(end).remove(QRegularExpression(QStringLiteral("\\s")));
    QString pem = begin + QLatin1Char('\n');
    for (int at = 0; at < body.size(); at += kPemColumns)
        pem += body.mid(at, kPemColumns) + QLatin1Char('\n');
    return pem + end;
}

Report textList(const QStringList& items) {
    Report list = Report::array();
    for (const QString& item : items)
        list.append(Report::text(item));
    return list;
}

// The extensions as OpenSSL reads them, and the fingerprints.
void addExtensions(HostSession& session, const QByteArray& der, Report* report) {
    X509Ptr certificate = parseX509(der);
    if (!certificate) {
        report->set("extensions", "OpenSSL cannot read this certificate");
    } else {
        const CertificateFacts facts = certificateFacts(certificate.get());
        if (!facts.extensionsReadable)
            report->set("extensions", "malformed (OpenSSL cannot read every extension)");
        report->set("key_usage", facts.hasKeyUsage ? Report::text(facts.keyUsage.join(QStringLiteral(", "))) : Report());
        const QString constraints = basicConstraintsText(facts);
        report->set("basic_constraints", constraints.isEmpty() ? Report() : Report::text(constraints));
        report->set("subject_alternative_names", textList(facts.alternativeNames));
        report->set("subject_key_id", facts.subjectKeyId.isEmpty() ? Report() : Report::text(colonHex(facts.subjectKeyId)));
        report->set("authority_key_id",
                    facts.authorityKeyId.isEmpty() ? Report() : Report::text(colonHex(facts.authorityKeyId)));
    }
    report->set("sha256_fingerprint", colonHex(QCryptographicHash::hash(der, QCryptographicHash::Sha256)));
    report->set("sm3_fingerprint", colonHex(sm3Digest(session.library(), der)));
}

int runShow(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--json", false}, {"--pem", false}, {"-in", true}});
    args.expectPositionalsBetween(args.has("-in") ? 0 : 1, args.has("-in") ? 0 : 1, "certificate file");
    const QString path = args.has("-in") ? args.value("-in") : args.positionals().at(0);
    HostSession& session = context.session();
    const CertificateFile file = readCertificate(session, path);
    const CertificateView view(session, file.der, file.path);
    if (args.has("--pem")) {
        console::printLine(pemText(view.component(), file.der));
        return kExitOk;
    }
    Report report = Report::object();
    report.set("file", file.path);
    report.set("format", certificateFormatName(file.format));
    report.set("der_bytes", file.der.size());
    const Report fields = view.fields();
    for (const auto& member : fields.members())
        report.set(member.first.toLatin1().constData(), member.second);
    addExtensions(session, file.der, &report);
    printReport(report, args.has("--json"));
    return kExitOk;
}

int runVerify(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--ca", true}, {"--json", false}});
    args.expectPositionals(1, "certificate file");
    HostSession& session = context.session();
    const CertificateFile file = readCertificate(session, args.positionals().at(0));
    const std::vector<QByteArray> authorities = readAuthorities(session, args.values("--ca"));
    if (authorities.empty())
        throw UsageError(QStringLiteral("missing --ca: the certificates to build the path to"));
    const ChainVerdict chain = verifyChain(session, file.der, authorities, QDateTime::currentDateTimeUtc());
    if (args.has("--json")) {
        Report report = Report::object();
        report.set("certificate", file.path);
        const Report chainReport = chain.toReport();
        for (const auto& member : chainReport.members())
            report.set(member.first.toLatin1().constData(), member.second);
        printReport(report, true);
    } else {
        console::print(QStringLiteral("file: %1\n").arg(file.path) + chain.toText());
    }
    if (!chain.valid())
        console::error(QStringLiteral("cert verify: %1: no valid path to a trusted root").arg(file.path));
    return chain.valid() ? kExitOk : kExitFailed;
}

int runCert(Context& context, const QStringList& arguments) {
    if (!arguments.isEmpty() && arguments.first() == QLatin1String("verify")) {
        context.setCommandPath(QStringLiteral("cert verify"));
        return runVerify(context, arguments.mid(1));
    }
    return runShow(context, arguments);
}

}  // namespace

extern const Command kCertCommand = {"cert", "print a certificate's fields, or verify its path to a root", kUsage,
                                     runCert};
