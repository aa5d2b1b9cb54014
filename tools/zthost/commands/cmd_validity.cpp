// zthost validity: is a certificate inside its validity period now.
#include "cli/args.h"
#include "services/certificate_input.h"
#include "services/certificate_view.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "services/signature_check.h"

namespace {

const char kUsage[] =
    "usage: zthost validity [--json] CERT\n"
    "\n"
    "Checks with ZTVerifyTools::VerifyCertValidity whether the certificate is\n"
    "inside its validity period at the current local time. Exit status 0: valid\n"
    "now, 1: expired, not yet valid, or unreadable. The library reads the times\n"
    "of version-3 certificates only and counts a certificate whose times it\n"
    "cannot find as valid.\n"
    "\n"
    "options:\n"
    "  --json   print the result as JSON\n"
    "\n"
    "example:\n"
    "  zthost validity examples/sm2-expired-cert.der\n";

int runValidity(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--json", false}});
    args.expectPositionals(1, "certificate file");
    HostSession& session = context.session();
    const CertificateFile file = readCertificate(session, args.positionals().at(0));
    const CertificateView certificate(session, file.der, file.path);
    const bool valid = certificateValidNow(session.library(), file.der);
    Report report = Report::object();
    report.set("certificate", file.path);
    report.set("subject_cn", certificate.text("getSubjectCN"));
    report.set("not_before", timeText(certificate.time("notBefore")));
    report.set("not_after", timeText(certificate.time("notAfter")));
    report.set("validity_digits", certificate.validityDigits());
    report.set("valid_now", valid);
    printReport(report, args.has("--json"));
    if (!valid)
        console::error(QStringLiteral("validity: %1 is expired or not yet valid").arg(file.path));
    return valid ? kExitOk : kExitFailed;
}

}  // namespace

extern const Command kValidityCommand = {"validity", "check a certificate's validity period now", kUsage,
                                         runValidity};
