// zthost ofd verify: every signature of a sealed OFD document, verified
// through the library as a host does.
#include <QDir>

#include "cli/args.h"
#include "cli/cli.h"
#include "cli/input.h"
#include "output/console.h"
#include "output/report.h"
#include "services/certificate_input.h"
#include "verify/ofd_verify.h"

namespace {

const char kUsage[] =
    "usage: zthost ofd verify [--json] [--extract-seals DIR] [--ca FILE]... FILE.ofd\n"
    "\n"
    "Verifies every signature of an OFD document end to end: OFD.xml, each\n"
    "document's Signatures.xml, every Signature.xml. For each signature it\n"
    "checks every referenced file against its CheckValue (SM3 through the\n"
    "library, SHA-1 or SHA-256 where the CheckMethod names them), that the\n"
    "Document.xml OFD.xml shows (DocRoot) is among them, then the signed value:\n"
    "  Seal  a seal signature (GB/T 38540 v4 or GM/T 0031 v1, told by shape):\n"
    "        its data hash must be the SM3 of Signature.xml, its SM2 signature\n"
    "        (user ID 1234567812345678) must verify with the signer certificate\n"
    "        inside it, and the seal inside must carry a valid maker signature,\n"
    "        be valid at the signing time and list the signer\n"
    "  Sign  a GM/T 0010 (or PKCS #7) SM2 signedData over Signature.xml\n"
    "Signatures are verified with ZTVerifyTools::VerifySignatureValue, and\n"
    "strictly with OpenSSL's SM2, whose answer decides (a line says why where\n"
    "the library answers otherwise); certificates are read with ZTCertificate.\n"
    "With --ca every signer's certificate, and every seal maker's, must have a\n"
    "path to a root among the given certificates, valid at the signing time;\n"
    "without it the output says that no root was checked. What the package may make zthost\n"
    "read is bounded (16 MiB per XML file or signed value, 1 GiB per\n"
    "referenced file); paths that leave the package are refused.\n"
    "Exit status 0: every signature is valid (and, in a package of several\n"
    "documents, every document signed); 1: one is not, or the file is no\n"
    "readable OFD package; 2: usage error.\n"
    "\n"
    "options:\n"
    "  --json               print {valid, signatures: [...], problems} as JSON\n"
    "  --ca FILE            a trusted root or intermediate certificate\n"
    "                       (repeatable; a PEM file may hold several)\n"
    "  --extract-seals DIR  write each seal's picture to DIR as\n"
    "                       signature-N.EXT (EXT from the picture's type)\n"
    "\n"
    "example:\n"
    "  zthost ofd verify examples/invoice.ofd\n";

void extractSeals(const QString& folder, const OfdVerdict& verdict) {
    if (!QDir().mkpath(folder))
        throw CommandFailure(kExitFailed, QStringLiteral("%1: cannot create the folder").arg(folder));
    int number = 0;
    for (const SignatureVerdict& signature : verdict.signatures) {
        ++number;
        if (signature.picture.isEmpty())
            continue;
        const QString path = QStringLiteral("%1/signature-%2.%3").arg(folder).arg(number).arg(signature.pictureExtension);
        input::writeFile(path, signature.picture);
        console::note(QStringLiteral("seal picture of signature %1: %2").arg(number).arg(path));
    }
}

void printText(const QString& file, const OfdVerdict& verdict) {
    QString out = QStringLiteral("file: %1\n").arg(file);
    for (const SignatureVerdict& signature : verdict.signatures)
        out += QLatin1Char('\n') + signature.toText();
    for (const QString& problem : verdict.problems)
        out += QStringLiteral("problem: %1\n").arg(problem);
    int valid = 0;
    for (const SignatureVerdict& signature : verdict.signatures)
        valid += signature.valid() ? 1 : 0;
    out += QStringLiteral("\n%1: %2 of %3 signature(s) valid\n")
               .arg(verdict.valid() ? QStringLiteral("VALID") : QStringLiteral("NOT VALID"))
               .arg(valid)
               .arg(verdict.signatures.size());
    console::print(out);
}

int runVerify(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--json", false}, {"--extract-seals", true}, {"--ca", true}});
    args.expectPositionals(1, "OFD file");
    const QString path = args.positionals().at(0);
    const QByteArray bytes = input::readFile(path);
    const OfdVerdict verdict = verifyOfd(context.session(), bytes, readAuthorities(context.session(), args.values("--ca")));
    if (args.has("--extract-seals"))
        extractSeals(args.value("--extract-seals"), verdict);
    if (args.has("--json"))
        printReport(verdict.toReport(path), true);
    else
        printText(path, verdict);
    for (const QString& problem : verdict.problems)
        console::error(QStringLiteral("ofd verify: %1: %2").arg(input::displayName(path), problem));
    if (!verdict.valid() && verdict.problems.isEmpty())
        console::error(QStringLiteral("ofd verify: %1: not every signature is valid").arg(input::displayName(path)));
    return verdict.valid() ? kExitOk : kExitFailed;
}

int runOfd(Context& context, const QStringList& arguments) {
    return runSingleSubcommand(context, arguments, kUsage, "verify", runVerify);
}

}  // namespace

extern const Command kOfdCommand = {"ofd", "verify the signatures of a sealed OFD document", kUsage, runOfd};
