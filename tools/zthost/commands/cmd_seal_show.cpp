// zthost seal show: an electronic seal on its own, its fields, its maker and
// the maker's signature verified through the library.
#include "cli/args.h"
#include "cli/cli.h"
#include "cli/input.h"
#include "commands/seal_commands.h"
#include "host/host_session.h"
#include "output/console.h"
#include "output/report.h"
#include "readers/der_values.h"
#include "readers/oid_names.h"
#include "readers/ses_seal.h"
#include "services/certificate_view.h"
#include "verify/signer_checks.h"

namespace {

const char kUsage[] =
    "usage: zthost seal show [--json] [--picture FILE] SEAL\n"
    "\n"
    "Shows an electronic seal (SESeal) of either layout, GB/T 38540 (v4) or\n"
    "GM/T 0031 (v1), told by shape: header, id, type, name, the signer\n"
    "certificates it lists, its dates, its picture, and its maker. The maker's\n"
    "SM2 signature is verified with ZTVerifyTools::VerifySignatureValue (v4:\n"
    "over the seal information; v1: over the seal information, maker\n"
    "certificate and algorithm) and the validity period against the current\n"
    "time. Names are shown as the characters they encode (UTF-8 or BMP).\n"
    "Exit status 0: the maker's signature verifies and the seal is valid now;\n"
    "1 otherwise, or when SEAL is no seal.\n"
    "\n"
    "options:\n"
    "  --json           print the fields and results as JSON\n"
    "  --picture FILE   write the seal's picture to FILE\n"
    "\n"
    "example:\n"
    "  zthost seal show --picture seal.png examples/seal.der\n";

QString makerName(HostSession& session, const ByteView& certificate, QString* validity) {
    try {
        const CertificateView view(session, certificate.toByteArray(), QStringLiteral("the maker certificate"));
        *validity = view.validityDigits();
        return view.name("getSubjectCN");
    } catch (const CommandFailure& failure) {
        return failure.message;
    }
}

Report sealReport(HostSession& session, const QString& path, const SesSeal& seal) {
    Report report = Report::object();
    report.set("file", path);
    report.set("format", sesLayoutName(seal.layout));
    report.set("header", QStringLiteral("%1, version %2, vendor %3").arg(seal.headerId).arg(seal.headerVersion).arg(seal.vendorId));
    report.set("id", seal.esId);
    report.set("name", seal.name);
    report.set("type", seal.type);
    report.set("signer_certificates", int(seal.signerCertificates.size() + seal.signerCertificateDigests.size()));
    report.set("created", isoTime(seal.createDate));
    report.set("valid_from", isoTime(seal.validStart));
    report.set("valid_to", isoTime(seal.validEnd));
    report.set("picture_type", seal.pictureType);
    report.set("picture_bytes", seal.pictureData.size());
    report.set("picture_size_mm", QStringLiteral("%1 x %2").arg(seal.pictureWidth).arg(seal.pictureHeight));
    report.set("extension_data", seal.extensionCount);
    QString validity;
    report.set("maker", makerName(session, seal.makerCertificate, &validity));
    report.set("maker_validity_digits", validity);
    report.set("maker_algorithm", oidWithName(seal.makerAlgorithm));
    return report;
}

int runShow(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--json", false}, {"--picture", true}});
    args.expectPositionals(1, "seal file");
    const QString path = args.positionals().at(0);
    const QByteArray bytes = input::readFile(path);
    const SesSeal seal = readOrFail(input::displayName(path), [&] { return readSesSeal(ByteView::of(bytes)); });
    HostSession& session = context.session();
    SignatureVerdict verdict;
    checkSeal(session, seal, QDateTime(), QByteArray(), {}, &verdict);
    if (args.has("--picture"))
        input::writeFile(args.value("--picture"), seal.pictureData.toByteArray());
    Report report = sealReport(session, path, seal);
    report.set("maker_signature_valid", verdict.passed(QStringLiteral("seal maker signature")));
    report.set("valid_now", verdict.passed(QStringLiteral("seal valid at signing time")));
    Report problems = Report::array();
    for (const QString& problem : verdict.problems())
        problems.append(Report::text(problem));
    report.set("problems", problems);
    printReport(report, args.has("--json"));
    const bool valid = verdict.problems().isEmpty();
    if (!valid)
        console::error(QStringLiteral("seal show: %1: %2").arg(input::displayName(path), verdict.problems().join(QStringLiteral("; "))));
    return valid ? kExitOk : kExitFailed;
}

}  // namespace

int runSealShow(Context& context, const QStringList& args) {
    return runShow(context, args);
}
