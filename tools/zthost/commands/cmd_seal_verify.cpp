// zthost seal verify: a complete seal signature structure, taken apart and
// verified with the library's own functions.
#include "cli/args.h"
#include "services/certificate_input.h"
#include "services/certificate_view.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "output/report.h"
#include "readers/oid_names.h"
#include "commands/seal_commands.h"
#include "readers/seal_structure.h"
#include "services/signature_check.h"
#include "services/sm3_digest.h"

namespace {

const char kUsage[] =
    "usage: zthost seal verify [--doc FILE] [--cert FILE] [--json] FILE\n"
    "\n"
    "Reads a complete GM or government-affairs seal signature structure (as the\n"
    "library builds them), takes out the to-be-signed bytes exactly as they stand\n"
    "in FILE, the signer's certificate (GM: inside the to-be-signed part; ZW: in\n"
    "the outer structure) and the signature value, and verifies the signature\n"
    "with ZTVerifyTools::VerifySignatureValue (SM2 with SM3, user ID\n"
    "1234567812345678). Prints every field and what was checked.\n"
    "Exit status 0: the signature (and the document digest, with --doc)\n"
    "verifies; 1: it does not, or FILE is no such structure.\n"
    "\n"
    "options:\n"
    "  --doc FILE    also check that the signed digest is the SM3 of FILE\n"
    "  --cert FILE   verify against this certificate instead of the embedded one\n"
    "  --json        print the fields and results as JSON\n"
    "\n"
    "example:\n"
    "  zthost seal verify --doc examples/document.txt examples/gm-seal.der\n";

QString printable(const QByteArray& bytes) {
    return input::isText(bytes) ? QString::fromLatin1(bytes) : QString::fromLatin1(bytes.toHex());
}

QByteArray signerCertificate(HostSession& session, const Args& args, const SealSignature& seal,
                             const QString& source) {
    if (args.has("--cert"))
        return readCertificate(session, args.value("--cert")).der;
    if (seal.certificate.empty()) {
        throw CommandFailure(kExitFailed,
                             QStringLiteral("%1: the structure carries no certificate; give --cert").arg(source));
    }
    return seal.certificate.toByteArray();
}

void describeFields(Report& report, const SealSignature& seal) {
    report.set("format", sealFormatName(seal.format));
    report.set("version", seal.format == SealFormat::Gm ? 2 : 4);
    report.set("seal_bytes", seal.seal.size());
    report.set("time", printable(seal.time.toByteArray()));
    report.set("digest", seal.digest.hex().toLower());
    report.set("property", QString::fromLatin1(seal.property.toByteArray()));
    report.set("algorithm", seal.algorithm);
    report.set("algorithm_name", oidName(seal.algorithm));
    report.set("to_be_signed_bytes", seal.toBeSigned.size());
}

int runVerify(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--doc", true}, {"--cert", true}, {"--json", false}});
    args.expectPositionals(1, "seal signature file");
    const QString path = args.positionals().at(0);
    const QString source = input::displayName(path);
    const QByteArray bytes = input::readFile(path);
    const SealSignature seal = readOrFail(source, [&] { return parseSealSignature(ByteView::of(bytes)); });
    const QByteArray signature = seal.signature.toByteArray();
    HostSession& session = context.session();
    if (seal.algorithm != QLatin1String(oid::kSm2WithSm3)) {
        throw CommandFailure(kExitFailed, QStringLiteral("%1: the algorithm %2 is not SM2 with SM3")
                                              .arg(source, oidWithName(seal.algorithm)));
    }
    const SignatureForm form = detectSignatureForm(signature, source);
    const QByteArray certificate = signerCertificate(session, args, seal, source);
    const CertificateView signer(session, certificate, source + QStringLiteral(" (signer's certificate)"));

    Report report = Report::object();
    report.set("file", path);
    describeFields(report, seal);
    report.set("certificate_source", args.has("--cert") ? args.value("--cert")
                                     : seal.format == SealFormat::Gm ? QStringLiteral("to-be-signed part")
                                                                     : QStringLiteral("signature structure"));
    report.set("signer", signer.text("getSubjectDN"));
    report.set("signer_valid_now", certificateValidNow(session.library(), certificate));
    report.set("signature_form", signatureFormName(form));
    report.set("signature_bytes", seal.signature.size());
    if (form == SignatureForm::Der) {
        const QString warning = shortIntegerWarning(signature);
        if (!warning.isEmpty())
            console::error(QStringLiteral("seal verify: warning: ") + warning);
    }
    bool valid = true;
    if (args.has("--doc")) {
        Sm3Stream stream(session.library());
        feedFile(stream, args.value("--doc"));
        const bool matches = stream.finish() == seal.digest.toByteArray();
        report.set("document_digest_matches", matches);
        valid = matches;
    }
    const bool signatureValid = verifySm2(session.library(), signature, form, certificate, seal.toBeSigned.toByteArray());
    report.set("signature_valid", signatureValid);
    valid = valid && signatureValid;
    report.set("valid", valid);
    printReport(report, args.has("--json"));
    if (!valid)
        console::error(QStringLiteral("seal verify: %1 does not verify").arg(source));
    return valid ? kExitOk : kExitFailed;
}

}  // namespace

int runSealVerify(Context& context, const QStringList& args) {
    return runVerify(context, args);
}
