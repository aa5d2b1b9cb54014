// zthost hmac-sm3: HMAC-SM3 of files with a key given in hex.
#include "cli/args.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "output/report.h"
#include "services/sm3_digest.h"

namespace {

const char kUsage[] =
    "usage: zthost hmac-sm3 --key-hex KEY [--json] [FILE...]\n"
    "\n"
    "Prints the HMAC-SM3 of each FILE (\"-\" or none: standard input) as\n"
    "\"MAC  FILE\", computed by the library's ztutil_sm3_hmac_starts, _update\n"
    "and _finish. Keys longer than 64 bytes are first hashed, as HMAC does.\n"
    "\n"
    "options:\n"
    "  --key-hex KEY   the key as hex digits (may be empty: --key-hex \"\")\n"
    "  --json          print a JSON array of {file, hmac_sm3}\n"
    "\n"
    "example:\n"
    "  zthost hmac-sm3 --key-hex 000102030405060708090a0b0c0d0e0f examples/document.txt\n";

int runHmacSm3(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--key-hex", true}, {"--json", false}});
    QByteArray key;
    if (!input::decodeHex(args.required("--key-hex").toLatin1(), &key))
        throw UsageError(QStringLiteral("--key-hex needs an even number of hex digits"));
    QStringList paths = args.positionals();
    if (paths.isEmpty())
        paths.append(QStringLiteral("-"));
    const ZtLibrary& library = context.session().library();
    Report report = Report::array();
    int status = kExitOk;
    for (const QString& path : paths) {
        Sm3Stream stream(library, key);  // a missing SM3 ends the command here
        try {
            feedFile(stream, path);
        } catch (const CommandFailure& failure) {
            console::error(QStringLiteral("hmac-sm3: ") + failure.message);
            status = kExitFailed;
            continue;
        }
        const QString hex = QString::fromLatin1(stream.finish().toHex());
        if (args.has("--json"))
            report.append(Report::object().set("file", path).set("hmac_sm3", hex));
        else
            console::printLine(hex + QStringLiteral("  ") + path);
    }
    if (args.has("--json"))
        printReport(report, true);
    return status;
}

}  // namespace

extern const Command kHmacSm3Command = {"hmac-sm3", "HMAC-SM3 of files", kUsage, runHmacSm3};
