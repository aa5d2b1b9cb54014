// zthost asn: the DER tree of a file as the library's ZTAsn parses it.
#include "cli/args.h"
#include "services/asn_tree.h"
#include "services/base64_text.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "output/report.h"
#include "host/library_symbols.h"

namespace {

const char kUsage[] =
    "usage: zthost asn [--json] [--full] FILE\n"
    "\n"
    "Prints the DER tree of FILE as the library's ZTAsn component parses it:\n"
    "offset in the file, type, content length and value of every element.\n"
    "Where the library's tree differs from the bytes, a warning says so. FILE\n"
    "may hold DER or its PEM or Base64 text (offsets are then those of the\n"
    "decoded DER); \"-\" reads standard input. Only the first element is read.\n"
    "\n"
    "options:\n"
    "  --json   print the tree as JSON (values in full, as hex and text)\n"
    "  --full   do not cut long binary values after 32 bytes\n"
    "\n"
    "example:\n"
    "  zthost asn examples/gm-seal.der\n";

// The Base64 body of PEM text: the lines between "-----BEGIN" and "-----END".
QByteArray pemBody(const QByteArray& text) {
    const int begin = text.indexOf("-----BEGIN");
    const int bodyStart = text.indexOf('\n', begin);
    const int end = text.indexOf("-----END", begin);
    if (bodyStart < 0 || end < bodyStart)
        return QByteArray();
    return text.mid(bodyStart, end - bodyStart);
}

QByteArray derOf(HostSession& session, const QByteArray& content, const QString& path) {
    if (!input::isText(content))
        return content;
    const QByteArray body = content.contains("-----BEGIN") ? pemBody(content) : content;
    QByteArray der;
    if (body.isEmpty() ||
        !decodeBase64Strict(session, input::withoutWhitespace(body), normalTable(session.library()), &der) ||
        der.isEmpty()) {
        throw CommandFailure(kExitFailed,
                             QStringLiteral("%1: text that is neither PEM nor Base64").arg(input::displayName(path)));
    }
    return der;
}

int runAsn(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--json", false}, {"--full", false}});
    args.expectPositionals(1, "file");
    const QString path = args.positionals().at(0);
    const QByteArray content = input::readFile(path);
    if (content.isEmpty())
        throw CommandFailure(kExitFailed, QStringLiteral("%1: empty file").arg(input::displayName(path)));
    HostSession& session = context.session();
    const QByteArray der = derOf(session, content, path);
    const AsnTree tree = readAsnTree(session, der, input::displayName(path));
    if (args.has("--json"))
        printReport(asnTreeReport(tree.root), true);
    else
        console::print(asnTreeText(tree.root, args.has("--full")));
    for (const QString& disagreement : tree.disagreements)
        console::error(QStringLiteral("asn: %1: %2").arg(input::displayName(path), disagreement));
    if (tree.encodedSize() < der.size()) {
        console::error(QStringLiteral("asn: %1: %2 bytes after the first element were not read")
                           .arg(input::displayName(path))
                           .arg(der.size() - tree.encodedSize()));
    }
    return kExitOk;
}

}  // namespace

extern const Command kAsnCommand = {"asn", "print the DER tree of a file", kUsage, runAsn};
