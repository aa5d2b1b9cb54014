// zthost seal gm|zw: the to-be-signed part and the signature structure of a
// seal signature, built by the library from files and texts.
#include <QRegularExpression>

#include "cli/args.h"
#include "services/asn_tree.h"
#include "services/certificate_input.h"
#include "cli/cli.h"
#include "output/console.h"
#include "readers/der.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "output/report.h"
#include "services/seal_builder.h"
#include "commands/seal_commands.h"
#include "services/sm2_signature.h"
#include "services/sm3_digest.h"

namespace {

const char kGmUsage[] =
    "usage: zthost seal gm --seal FILE (--doc FILE | --digest-hex HEX) --time TEXT\n"
    "                      [--property TEXT] [--cert FILE] [--sig FILE] [-o OUT] [--json]\n"
    "       zthost seal gm --tbs FILE --sig FILE [-o OUT] [--json]\n"
    "\n"
    "Builds a GM seal signature with the library's ZTCertificate component.\n"
    "Without --sig: the to-be-signed part (GetGMSignInfo): version 2, the seal,\n"
    "the time and the document digest as BIT STRINGs, the property text, the\n"
    "signer's certificate and the SM2-with-SM3 OID. Sign those bytes (SM2 with\n"
    "SM3, user ID 1234567812345678), then run again with --sig (same fields, or\n"
    "--tbs) for the signature structure (GetGMV2ASNData).\n"
    "The result is written to OUT as DER, or printed as a tree.\n"
    "\n"
    "options:\n"
    "  --seal FILE        the seal: one complete DER element\n"
    "  --doc FILE         the document; its SM3 digest (by the library) is signed\n"
    "  --digest-hex HEX   the document digest, given directly\n"
    "  --time TEXT        the signing time, e.g. 20240101120000Z\n"
    "  --property TEXT    property text (ASCII), empty by default\n"
    "  --cert FILE        the signer's certificate (DER, PEM or Base64)\n"
    "  --tbs FILE         a to-be-signed part built before, instead of the fields\n"
    "  --sig FILE         the SM2 signature over it (64, 128 bytes or DER; raw,\n"
    "                     hex or Base64)\n"
    "  -o OUT             write the DER structure to OUT\n"
    "  --json             print {structure, bytes, der, tree} as JSON\n"
    "\n"
    "example:\n"
    "  zthost seal gm --seal examples/seal.der --doc examples/document.txt \\\n"
    "      --time 20240101120000Z --property 'zthost demo seal' \\\n"
    "      --cert examples/sm2-cert.der --sig examples/gm-tbs.sig -o gm-seal.der\n";

const char kZwUsage[] =
    "usage: zthost seal zw --seal FILE (--doc FILE | --digest-hex HEX) --time TIME\n"
    "                      [--property TEXT] [--cert FILE --sig FILE [--method OID]]\n"
    "                      [-o OUT] [--json]\n"
    "       zthost seal zw --tbs FILE --cert FILE --sig FILE [--method OID] [-o OUT] [--json]\n"
    "\n"
    "Builds a government-affairs seal signature with the library's ZTCertificate\n"
    "component. Without --sig: the to-be-signed part (GetZWSignInfo): version 4,\n"
    "the seal, the time as a GeneralizedTime, the digest as a BIT STRING and the\n"
    "property text. With --cert and --sig: the signature structure\n"
    "(GetZWASNData), which adds the certificate, the algorithm OID and the\n"
    "signature. The result is written to OUT as DER, or printed as a tree.\n"
    "\n"
    "options:\n"
    "  --seal FILE        the seal: one complete DER element\n"
    "  --doc FILE         the document; its SM3 digest (by the library) is signed\n"
    "  --digest-hex HEX   the document digest, given directly\n"
    "  --time TIME        GeneralizedTime text YYYYMMDDhhmmssZ\n"
    "  --property TEXT    property text (ASCII), empty by default\n"
    "  --cert FILE        the signer's certificate (DER, PEM or Base64)\n"
    "  --method OID       the signature algorithm, 1.2.156.10197.1.501 by default\n"
    "  --tbs FILE         a to-be-signed part built before, instead of the fields\n"
    "  --sig FILE         the SM2 signature over the to-be-signed part\n"
    "  -o OUT             write the DER structure to OUT\n"
    "  --json             print {structure, bytes, der, tree} as JSON\n"
    "\n"
    "example:\n"
    "  zthost seal zw --seal examples/seal.der --doc examples/document.txt \\\n"
    "      --time 20240101120000Z -o zw-tbs.der\n";

const char* const kFieldOptions[] = {"--seal", "--doc", "--digest-hex", "--time", "--property"};

struct BuildRequest {
    SealFormat format;
    const Args& args;
};

[[noreturn]] void fail(const QString& path, const QString& reason) {
    throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(input::displayName(path), reason));
}

QByteArray readElement(const QString& path, const char* what) {
    const QByteArray bytes = input::readFile(path);
    der::Element element;
    if (!der::readSingle(ByteView::of(bytes), &element))
        fail(path, QStringLiteral("the %1 must be one complete DER element").arg(QLatin1String(what)));
    return bytes;
}

QByteArray digestOf(HostSession& session, const Args& args) {
    if (args.has("--doc") == args.has("--digest-hex"))
        throw UsageError(QStringLiteral("give either --doc or --digest-hex"));
    if (args.has("--doc")) {
        Sm3Stream stream(session.library());
        feedFile(stream, args.value("--doc"));
        return stream.finish();
    }
    QByteArray digest;
    if (!input::decodeHex(args.value("--digest-hex").toLatin1(), &digest) || digest.isEmpty())
        throw UsageError(QStringLiteral("--digest-hex needs hex digits"));
    return digest;
}

QByteArray timeOf(SealFormat format, const Args& args) {
    const QString time = args.required("--time");
    static const QRegularExpression generalizedTime(QStringLiteral("^[0-9]{14}Z$"));
    if (format == SealFormat::Zw && !generalizedTime.match(time).hasMatch())
        throw UsageError(QStringLiteral("--time must be YYYYMMDDhhmmssZ for a government-affairs seal"));
    if (time.isEmpty())
        throw UsageError(QStringLiteral("--time may not be empty"));
    return time.toUtf8();
}

QByteArray propertyOf(const Args& args) {
    const QString property = args.value("--property");
    for (const QChar c : property) {
        if (c.unicode() > 0x7E || c.unicode() < 0x20)
            throw UsageError(QStringLiteral("--property must be printable ASCII (it is an IA5String)"));
    }
    return property.toLatin1();
}

QByteArray certificateOf(HostSession& session, const Args& args) {
    return args.has("--cert") ? readCertificate(session, args.value("--cert")).der : QByteArray();
}

QByteArray toBeSigned(HostSession& session, const BuildRequest& request) {
    const Args& args = request.args;
    if (args.has("--tbs")) {
        for (const char* option : kFieldOptions) {
            if (args.has(option))
                throw UsageError(QStringLiteral("--tbs replaces %1").arg(QLatin1String(option)));
        }
        return readElement(args.value("--tbs"), "to-be-signed part");
    }
    SealFields fields;
    fields.seal = readElement(args.required("--seal"), "seal");
    fields.digest = digestOf(session, args);
    fields.time = timeOf(request.format, args);
    fields.property = propertyOf(args);
    if (request.format == SealFormat::Gm)
        fields.certificate = certificateOf(session, args);
    const QByteArray built = request.format == SealFormat::Gm ? buildGmToBeSigned(session, fields)
                                                              : buildZwToBeSigned(session, fields);
    if (built.isEmpty())
        throw CommandFailure(kExitFailed, QStringLiteral("the library built no to-be-signed part"));
    return built;
}

// The signature as the library embeds it: 64 bytes or DER.
QByteArray signatureOf(HostSession& session, const QString& path) {
    const QByteArray value = input::readByteValue(path);
    const SignatureForm form = detectSignatureForm(value, path);
    return form == SignatureForm::Bytes128 ? signatureTo64(session.library(), value, form) : value;
}

QByteArray signatureStructure(HostSession& session, const BuildRequest& request, const QByteArray& tbs) {
    const Args& args = request.args;
    const QByteArray signature = signatureOf(session, args.value("--sig"));
    QByteArray built;
    if (request.format == SealFormat::Gm) {
        built = buildGmSignature(session, tbs, signature);
    } else {
        const QString method = args.value("--method");
        static const QRegularExpression dotted(QStringLiteral("^[0-9]+(\\.[0-9]+)+$"));
        if (!method.isEmpty() && !dotted.match(method).hasMatch())
            throw UsageError(QStringLiteral("--method must be a dotted OID"));
        built = buildZwSignature(session, tbs, certificateOf(session, args), method.toLatin1(), signature);
    }
    if (built.isEmpty())
        throw CommandFailure(kExitFailed, QStringLiteral("the library built no signature structure"));
    return built;
}

void checkCombination(const BuildRequest& request) {
    const Args& args = request.args;
    args.expectPositionals(0, "");
    if (request.format == SealFormat::Gm) {
        if (args.has("--tbs") && args.has("--cert"))
            throw UsageError(QStringLiteral("the certificate of a GM seal is inside --tbs"));
        if (args.has("--tbs") && !args.has("--sig"))
            throw UsageError(QStringLiteral("--tbs needs --sig"));
        return;
    }
    if (args.has("--sig") != args.has("--cert"))
        throw UsageError(QStringLiteral("a government-affairs signature needs both --cert and --sig"));
    if (args.has("--method") && !args.has("--sig"))
        throw UsageError(QStringLiteral("--method belongs to the signature structure (--sig)"));
    if (args.has("--tbs") && !args.has("--sig"))
        throw UsageError(QStringLiteral("--tbs needs --cert and --sig"));
}

void printResult(HostSession& session, const QByteArray& der, const QString& structure, const Args& args) {
    if (args.has("-o"))
        input::writeFile(args.value("-o"), der);
    if (args.has("--json")) {
        Report report = Report::object();
        report.set("structure", structure);
        report.set("bytes", der.size());
        report.set("der", QString::fromLatin1(der.toHex()));
        report.set("tree", asnTreeReport(readAsnTree(session, der, structure).root));
        printReport(report, true);
    } else if (!args.has("-o")) {
        console::print(asnTreeText(readAsnTree(session, der, structure).root, false));
    }
}

}  // namespace

int runSealBuild(Context& context, SealFormat format, const QStringList& arguments) {
    const Args args(arguments, format == SealFormat::Gm ? kGmUsage : kZwUsage,
                    {{"--seal", true}, {"--doc", true}, {"--digest-hex", true}, {"--time", true},
                     {"--property", true}, {"--cert", true}, {"--method", true}, {"--tbs", true},
                     {"--sig", true}, {"-o", true}, {"--json", false}});
    if (format == SealFormat::Gm && args.has("--method"))
        throw UsageError(QStringLiteral("the GM format fixes the algorithm; --method is for zw"));
    const BuildRequest request{format, args};
    checkCombination(request);
    HostSession& session = context.session();
    const QByteArray tbs = toBeSigned(session, request);
    const QString prefix = QLatin1String(format == SealFormat::Gm ? "gm" : "zw");
    if (!args.has("--sig")) {
        printResult(session, tbs, prefix + QStringLiteral("-to-be-signed"), args);
        return kExitOk;
    }
    printResult(session, signatureStructure(session, request, tbs), prefix + QStringLiteral("-signature"), args);
    return kExitOk;
}
