// zthost validity: is a certificate inside its validity period now.
#include "cli/args.h"
#include "services/certificate_input.h"
#include "services/certificate_view.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "readers/der_values.h"
#include "verify/validity_check.h"

namespace {

const char kUsage[] =
    "usage: zthost validity [--json] CERT\n"
    "\n"
    "Checks whether the certificate is inside its validity period now, twice:\n"
    "with ZTVerifyTools::VerifyCertValidity, which reads the certificate's\n"
    "digits as local time, reads the times of version-3 certificates only and\n"
    "counts a certificate whose times it cannot find as valid; and strictly,\n"
    "by the certificate's own digits taken as UTC, as certificates state them.\n"
    "Both pairs of times are shown: the library's (8 hours after the digits)\n"
    "and the digits as UTC, so that \"valid now\" can be checked by eye.\n"
    "Exit status (following the strict answer) 0: valid now, 1: expired, not\n"
    "yet valid, or unreadable.\n"
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
    const ValidityNow validity = checkValidityNow(session, file.der);
    const Check& check = validity.check;
    const bool valid = check.passed();
    Report report = Report::object();
    report.set("certificate", file.path);
    report.set("subject_cn", certificate.name("getSubjectCN"));
    report.set("not_before", timeText(certificate.time("notBefore")));
    report.set("not_after", timeText(certificate.time("notAfter")));
    report.set("validity_digits", certificate.validityDigits());
    report.set("not_before_utc", isoTime(validity.notBefore));
    report.set("not_after_utc", isoTime(validity.notAfter));
    report.set("now", isoTime(validity.now));
    report.set("library_valid_now", check.library == Answer::Yes);
    report.set("strict_valid_now", check.strict == Answer::Yes);
    if (args.has("--json") || check.disagrees())
        report.set("disagreement", check.disagrees() ? Report::text(check.disagreement) : Report());
    report.set("valid_now", valid);
    printReport(report, args.has("--json"));
    if (!valid)
        console::error(QStringLiteral("validity: %1: %2").arg(file.path, check.problem));
    return valid ? kExitOk : kExitFailed;
}

}  // namespace

extern const Command kValidityCommand = {"validity", "check a certificate's validity period now", kUsage,
                                         runValidity};
