// zthost sm3: SM3 digests of files, in the manner of sha256sum, and the
// check of a list of digests (sha256sum -c).
#include <QRegularExpression>

#include "cli/args.h"
#include "cli/cli.h"
#include "cli/input.h"
#include "host/host_session.h"
#include "output/console.h"
#include "output/report.h"
#include "services/sm3_digest.h"

namespace {

const char kUsage[] =
    "usage: zthost sm3 [--json] [FILE...]\n"
    "       zthost sm3 -c|--check [--json] [LIST...]\n"
    "\n"
    "Prints the SM3 digest of each FILE as \"DIGEST  FILE\", like sha256sum,\n"
    "computed by the library's ztutil_sm3_starts, _update and _finish over the\n"
    "file read in pieces (\"-\", or no FILE at all: standard input); a long\n"
    "file shows a progress line on standard error when it is a terminal. A\n"
    "file that cannot be read is reported and the others are still hashed;\n"
    "the exit status is then 1.\n"
    "\n"
    "With -c, each LIST holds lines \"DIGEST  FILE\" (or \"DIGEST *FILE\") as\n"
    "sha256sum (and this command) writes them; every FILE is hashed and shown as\n"
    "\"FILE: OK\" or \"FILE: FAILED\" (\"FAILED open or read\" when it cannot be\n"
    "read), with a warning on standard error that counts the mismatches,\n"
    "unreadable files and malformed lines. Exit status 1 when any file fails.\n"
    "\n"
    "options:\n"
    "  -c, --check   check the digests listed in each LIST\n"
    "  -in FILE      hash FILE (as a FILE argument)\n"
    "  --json        print a JSON array of {file, sm3}; a file that cannot be\n"
    "                read is {file, error}; with -c {file, expected, sm3, ok}\n"
    "\n"
    "examples:\n"
    "  zthost sm3 examples/document.txt > digests.sm3\n"
    "  zthost sm3 -c digests.sm3\n";

const int kDigestHexSize = 64;

struct Sm3Run {
    const ZtLibrary& library;
    bool json;
    Report entries = Report::array();
    int status = kExitOk;
};

// The digest of `path`, or empty with `error` set when it cannot be read.
QByteArray digestOf(const ZtLibrary& library, const QString& path, QString* error) {
    Sm3Stream stream(library);
    try {
        input::readChunks(path, QStringLiteral("sm3: ") + input::displayName(path),
                          [&](const char* data, int size) { stream.update(data, size); });
    } catch (const CommandFailure& failure) {
        *error = failure.message;
        return QByteArray();
    }
    return stream.finish();
}

void hashFiles(Sm3Run& run, const QStringList& paths) {
    for (const QString& path : paths) {
        QString error;
        const QByteArray digest = digestOf(run.library, path, &error);
        if (digest.isEmpty()) {
            console::error(QStringLiteral("sm3: ") + error);
            run.entries.append(Report::object().set("file", path).set("error", error));
            run.status = kExitFailed;
            continue;
        }
        const QString hex = QString::fromLatin1(digest.toHex());
        if (run.json)
            run.entries.append(Report::object().set("file", path).set("sm3", hex));
        else
            console::printLine(hex + QStringLiteral("  ") + path);
    }
}

struct CheckCounts {
    int failed = 0, unreadable = 0, malformed = 0, checked = 0;
};

void checkLine(Sm3Run& run, const QString& expected, const QString& path, CheckCounts* counts) {
    ++counts->checked;
    QString error;
    const QByteArray digest = digestOf(run.library, path, &error);
    const QString hex = QString::fromLatin1(digest.toHex());
    const bool ok = !digest.isEmpty() && hex == expected;
    if (digest.isEmpty()) {
        ++counts->unreadable;
        console::error(QStringLiteral("sm3: ") + error);
        run.entries.append(Report::object().set("file", path).set("expected", expected).set("error", error));
    } else {
        counts->failed += ok ? 0 : 1;
        run.entries.append(Report::object().set("file", path).set("expected", expected).set("sm3", hex).set("ok", ok));
    }
    if (!run.json)
        console::printLine(QStringLiteral("%1: %2").arg(path, ok ? QStringLiteral("OK")
                                                        : digest.isEmpty() ? QStringLiteral("FAILED open or read")
                                                                           : QStringLiteral("FAILED")));
}

void checkList(Sm3Run& run, const QString& listPath, CheckCounts* counts) {
    static const QRegularExpression line(QStringLiteral("^([0-9a-fA-F]{%1}) [ *](.+)$").arg(kDigestHexSize));
    const QString text = QString::fromUtf8(input::readFile(listPath, input::kMaxValueSize));
    for (const QString& raw : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch match = line.match(raw.endsWith(QLatin1Char('\r')) ? raw.chopped(1) : raw);
        if (match.hasMatch())
            checkLine(run, match.captured(1).toLower(), match.captured(2), counts);
        else
            ++counts->malformed;
    }
}

void warn(int count, const char* one, const char* many) {
    if (count > 0)
        console::error(QStringLiteral("sm3: WARNING: %1 %2").arg(count).arg(QLatin1String(count == 1 ? one : many)));
}

void checkLists(Sm3Run& run, const QStringList& lists) {
    CheckCounts counts;
    for (const QString& list : lists)
        checkList(run, list, &counts);
    warn(counts.malformed, "line is improperly formatted", "lines are improperly formatted");
    warn(counts.unreadable, "listed file could not be read", "listed files could not be read");
    warn(counts.failed, "computed checksum did NOT match", "computed checksums did NOT match");
    if (counts.checked == 0)
        throw CommandFailure(kExitFailed, QStringLiteral("no properly formatted SM3 checksum lines found"));
    if (counts.failed > 0 || counts.unreadable > 0)
        run.status = kExitFailed;
}

int runSm3(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--json", false}, {"--check", false, "-c"}, {"-in", true}});
    QStringList paths = args.positionals() + args.values("-in");
    if (paths.isEmpty())
        paths.append(QStringLiteral("-"));
    Sm3Run run{context.session().library(), args.has("--json")};
    Sm3Stream probe(run.library);  // a library without SM3 fails here, once
    if (args.has("--check"))
        checkLists(run, paths);
    else
        hashFiles(run, paths);
    if (run.json)
        printReport(run.entries, true);
    return run.status;
}

}  // namespace

extern const Command kSm3Command = {"sm3", "SM3 digests of files, or check a list of them (like sha256sum)", kUsage,
                                    runSm3};
