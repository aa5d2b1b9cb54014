// zthost sm3: SM3 digests of files, in the manner of sha256sum.
#include "cli/args.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "output/report.h"
#include "host/library_symbols.h"
#include "services/sm3_digest.h"

namespace {

const char kUsage[] =
    "usage: zthost sm3 [--json] [FILE...]\n"
    "\n"
    "Prints the SM3 digest of each FILE as \"DIGEST  FILE\", like sha256sum.\n"
    "Files are hashed by the library's ztutil_sm3_file, standard input (\"-\",\n"
    "or no FILE at all) through ztutil_sm3_update. A file that cannot be read\n"
    "is reported and the others are still hashed; the exit status is then 1.\n"
    "\n"
    "options:\n"
    "  --json   print a JSON array of {file, sm3}\n"
    "\n"
    "example:\n"
    "  zthost sm3 examples/document.txt\n";

QByteArray digestOf(const ZtLibrary& library, const QString& path) {
    if (path != QLatin1String("-"))
        return sm3OfFile(library, path);
    Sm3Stream stream(library);
    feedFile(stream, path);
    return stream.finish();
}

int runSm3(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--json", false}});
    QStringList paths = args.positionals();
    if (paths.isEmpty())
        paths.append(QStringLiteral("-"));
    const ZtLibrary& library = context.session().library();
    requireSymbol<fn::Sm3File>(library, Symbol::Sm3File);  // fail once, not per file
    Report report = Report::array();
    int status = kExitOk;
    for (const QString& path : paths) {
        QByteArray digest;
        try {
            digest = digestOf(library, path);
        } catch (const CommandFailure& failure) {
            console::error(QStringLiteral("sm3: ") + failure.message);
            status = kExitFailed;
            continue;
        }
        const QString hex = QString::fromLatin1(digest.toHex());
        if (args.has("--json"))
            report.append(Report::object().set("file", path).set("sm3", hex));
        else
            console::printLine(hex + QStringLiteral("  ") + path);
    }
    if (args.has("--json"))
        printReport(report, true);
    return status;
}

}  // namespace

extern const Command kSm3Command = {"sm3", "SM3 digests of files (like sha256sum)", kUsage, runSm3};
