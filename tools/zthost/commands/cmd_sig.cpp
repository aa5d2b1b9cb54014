// zthost sig convert: an SM2 signature value from one form to another.
#include "cli/args.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "output/report.h"
#include "services/sm2_signature.h"

namespace {

const char kUsage[] =
    "usage: zthost sig convert --to 64|128|der [--format hex|base64|raw] [-o OUT] [--json] FILE\n"
    "\n"
    "Converts an SM2 signature value between its three forms with the library's\n"
    "ZTVerifyTools functions:\n"
    "  64   r || s, 32 bytes each\n"
    "  128  r and s right-aligned in two 64-byte fields\n"
    "  der  SEQUENCE { INTEGER r, INTEGER s }\n"
    "FILE (\"-\": standard input) holds the value as raw bytes, hex or Base64;\n"
    "its form is told by length and structure.\n"
    "\n"
    "options:\n"
    "  --to FORM          the form wanted\n"
    "  --format ENCODING  how to print it: hex (default), base64 or raw bytes\n"
    "  -o OUT             write the raw bytes to OUT instead\n"
    "  --json             print {from, to, bytes, hex} as JSON\n"
    "\n"
    "example:\n"
    "  zthost sig convert --to 64 examples/document.sm2.sig\n";

SignatureForm targetForm(const QString& name) {
    if (name == QLatin1String("64"))
        return SignatureForm::Bytes64;
    if (name == QLatin1String("128"))
        return SignatureForm::Bytes128;
    if (name == QLatin1String("der"))
        return SignatureForm::Der;
    throw UsageError(QStringLiteral("--to must be 64, 128 or der"));
}

QByteArray convertTo(const ZtLibrary& library, const QByteArray& value, SignatureForm from,
                     SignatureForm to) {
    switch (to) {
    case SignatureForm::Bytes64: return signatureTo64(library, value, from);
    case SignatureForm::Bytes128: return signatureTo128(library, value, from);
    case SignatureForm::Der: return signatureToDer(library, value, from);
    }
    return value;
}

void printValue(const QByteArray& value, const QString& format) {
    if (format == QLatin1String("hex"))
        console::printLine(QString::fromLatin1(value.toHex()));
    else if (format == QLatin1String("base64"))
        console::printLine(QString::fromLatin1(value.toBase64()));
    else
        console::writeBytes(value);
}

int runConvert(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage,
                    {{"--to", true}, {"--format", true}, {"-o", true}, {"--json", false}});
    args.expectPositionals(1, "signature file");
    const SignatureForm to = targetForm(args.required("--to"));
    const QString format = args.value("--format", QStringLiteral("hex"));
    if (format != QLatin1String("hex") && format != QLatin1String("base64") && format != QLatin1String("raw"))
        throw UsageError(QStringLiteral("--format must be hex, base64 or raw"));
    const QString path = args.positionals().at(0);
    const QByteArray value = input::readByteValue(path);
    const SignatureForm from = detectSignatureForm(value, path);
    const QByteArray converted = convertTo(context.session().library(), value, from, to);
    if (args.has("-o"))
        input::writeFile(args.value("-o"), converted);
    if (args.has("--json")) {
        Report report = Report::object();
        report.set("from", signatureFormName(from));
        report.set("to", signatureFormName(to));
        report.set("bytes", converted.size());
        report.set("hex", QString::fromLatin1(converted.toHex()));
        printReport(report, true);
    } else if (!args.has("-o")) {
        printValue(converted, format);
    }
    return kExitOk;
}

int runSig(Context& context, const QStringList& arguments) {
    return runSingleSubcommand(context, arguments, kUsage, "convert", runConvert);
}

}  // namespace

extern const Command kSigCommand = {"sig", "convert an SM2 signature value (64, 128, DER)", kUsage, runSig};
