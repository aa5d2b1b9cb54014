// zthost cert: a certificate's fields as ZTCertificate reads them.
#include <QMetaObject>

#include "cli/args.h"
#include "services/certificate_input.h"
#include "services/certificate_view.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "host/invoke.h"
#include "output/report.h"

namespace {

const char kUsage[] =
    "usage: zthost cert [--json] [--pem] FILE\n"
    "\n"
    "Prints the fields of an X.509 certificate as the library's ZTCertificate\n"
    "component reads them. FILE may be DER, PEM or bare Base64 (told apart by\n"
    "content); \"-\" reads standard input.\n"
    "\n"
    "Times are shown as the library returns them: the certificate's digits read\n"
    "at UTC-8, that is 8 hours later than the digits taken as UTC. The line\n"
    "\"validity digits\" shows the digits themselves (GetCertParam 4).\n"
    "\n"
    "options:\n"
    "  --json   print the fields as JSON\n"
    "  --pem    print the certificate as PEM text (GetCertString) instead\n"
    "\n"
    "example:\n"
    "  zthost cert examples/sm2-cert.pem\n";

QString pemText(QObject* certificate, const QByteArray& der) {
    QString pem;
    callByName(certificate, "GetCertString", Q_RETURN_ARG(QString, pem), Q_ARG(QByteArray, der));
    return pem;
}

int runCert(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--json", false}, {"--pem", false}});
    args.expectPositionals(1, "certificate file");
    HostSession& session = context.session();
    const CertificateFile file = readCertificate(session, args.positionals().at(0));
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
    printReport(report, args.has("--json"));
    return kExitOk;
}

}  // namespace

extern const Command kCertCommand = {"cert", "print a certificate's fields", kUsage, runCert};
