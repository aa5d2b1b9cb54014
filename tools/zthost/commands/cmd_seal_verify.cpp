// zthost seal verify: a seal signature structure of either layout, taken
// apart and verified with the library's own functions, seal included.
#include "cli/args.h"
#include "cli/cli.h"
#include "cli/input.h"
#include "commands/seal_commands.h"
#include "host/host_session.h"
#include "output/console.h"
#include "output/report.h"
#include "readers/der_values.h"
#include "readers/oid_names.h"
#include "readers/ses_signature.h"
#include "services/certificate_input.h"
#include "verify/signature_verify.h"
#include "verify/validity_check.h"

namespace {

const char kUsage[] =
    "usage: zthost seal verify [--doc FILE] [--cert FILE] [--ca FILE]... [--json] FILE\n"
    "\n"
    "Reads a complete seal signature: GB/T 38540 (v4: the signer certificate\n"
    "and algorithm beside the to-be-signed part, optional extension data and\n"
    "time stamp) or GM/T 0031 (v1: everything inside the to-be-signed part),\n"
    "told by shape whatever the version number says; the library's GM and\n"
    "government-affairs structures are of these two shapes. It verifies the\n"
    "SM2 signature over the to-be-signed bytes exactly as they stand in FILE\n"
    "(ZTVerifyTools::VerifySignatureValue, user ID 1234567812345678; r || s\n"
    "or DER), the signer certificate's validity at the signing time, and the\n"
    "seal inside: its maker's signature, its validity period and that it\n"
    "lists the signer. Every check is reported. Each SM2 signature is also\n"
    "verified strictly with OpenSSL's SM2, whose answer decides; where the\n"
    "library answers otherwise (it misreads DER INTEGERs shorter than 32\n"
    "bytes, for one), a line says why. With --ca the signer's certificate and\n"
    "the seal maker's must have a path to a root among the given certificates,\n"
    "valid at the signing time; without it the output says that no root was\n"
    "checked.\n"
    "Exit status 0: every check passed; 1: one did not, or FILE is no seal\n"
    "signature.\n"
    "\n"
    "options:\n"
    "  --doc FILE    also check that the data hash is the SM3 of FILE (without\n"
    "                it a note says that no document was compared)\n"
    "  --cert FILE, -cert FILE\n"
    "                verify against this certificate instead of the embedded one\n"
    "  --ca FILE     a trusted root or intermediate certificate (repeatable)\n"
    "  --json        print the fields and results as JSON\n"
    "\n"
    "example:\n"
    "  zthost seal verify --doc examples/document.txt examples/gm-seal.der\n";

QString printable(const ByteView& bytes) {
    const QByteArray raw = bytes.toByteArray();
    return input::isText(raw) ? QString::fromLatin1(raw) : bytes.hex().toLower();
}

int runVerify(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--doc", true}, {"--cert", true, "-cert"}, {"--ca", true}, {"--json", false}});
    args.expectPositionals(1, "seal signature file");
    const QString path = args.positionals().at(0);
    const QString source = input::displayName(path);
    const QByteArray bytes = input::readFile(path);
    const SesSignature signature = readOrFail(source, [&] { return readSesSignature(ByteView::of(bytes)); });
    HostSession& session = context.session();
    const QByteArray certificate = args.has("--cert") ? readCertificate(session, args.value("--cert")).der : QByteArray();
    SignedBytes document;
    if (args.has("--doc"))
        document = SignedBytes{input::readFile(args.value("--doc")), input::displayName(args.value("--doc"))};
    SignatureVerdict verdict;
    verdict.type = QStringLiteral("Seal");
    const std::vector<QByteArray> authorities = readAuthorities(session, args.values("--ca"));
    verifySesSignature(session, signature, args.has("--doc") ? &document : nullptr, certificate, authorities, &verdict);

    Report report = Report::object();
    report.set("file", path);
    report.set("format", verdict.format);
    report.set("time", verdict.time);
    report.set("signed_digest", signature.dataHash.hex().toLower());
    report.set("property", printable(signature.property));
    report.set("algorithm", oidWithName(signature.algorithm));
    report.set("certificate_source", args.has("--cert") ? args.value("--cert") : QStringLiteral("the structure"));
    report.set("signer", verdict.signer);
    report.set("signer_valid_now",
               checkValidityNow(session, certificate.isEmpty() ? signature.certificate.toByteArray() : certificate)
                   .check.passed());
    report.set("to_be_signed_bytes", signature.toBeSigned.size());
    report.set("signature_bytes", signature.signature.size());
    report.set("seal_name", verdict.sealName);
    report.set("seal_id", verdict.sealId);
    for (const Check& check : verdict.checks)
        report.set(check.name.toLatin1().replace(' ', '_').constData(), !check.failed());
    report.set("signature_valid", verdict.signatureValid());
    report.set("seal_valid", verdict.scopeReport(CheckScope::Seal));
    report.set("valid", verdict.valid());
    Report problems = Report::array();
    for (const QString& problem : verdict.problems())
        problems.append(Report::text(problem));
    report.set("problems", problems);
    Report notes = Report::array();
    for (const QString& note : verdict.notes)
        notes.append(Report::text(note));
    report.set("notes", notes);
    if (!verdict.disagreements().isEmpty() || args.has("--json")) {
        Report disagreements = Report::array();
        for (const QString& disagreement : verdict.disagreements())
            disagreements.append(Report::text(disagreement));
        report.set("disagreements", disagreements);
    }
    printReport(report, args.has("--json"));
    if (!verdict.valid())
        console::error(QStringLiteral("seal verify: %1 does not verify").arg(source));
    return verdict.valid() ? kExitOk : kExitFailed;
}

}  // namespace

int runSealVerify(Context& context, const QStringList& args) {
    return runVerify(context, args);
}
