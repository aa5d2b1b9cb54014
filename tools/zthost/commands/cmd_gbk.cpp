// zthost gbk: text between GBK and UTF-8.
#include "cli/args.h"
#include "cli/cli.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "services/text_convert.h"

namespace {

const char kUsage[] =
    "usage: zthost gbk to-utf8|from-utf8 [--qt-codec] [-o OUT] [FILE]\n"
    "\n"
    "Converts text between GBK and UTF-8. FILE defaults to standard input; the\n"
    "result goes to standard output or OUT. By default the library's own\n"
    "code-page tables do the work (code_gbk_to_utf8, code_utf8_to_gbk); a\n"
    "character they cannot map, or a byte sequence they cannot read, is an\n"
    "error rather than being dropped. The text may not contain NUL bytes.\n"
    "\n"
    "options:\n"
    "  --qt-codec   convert with the ZTUtil component (Multi2Utf8, Utf8toMulti),\n"
    "               which uses Qt's GBK codec and replaces what it cannot map\n"
    "  -o OUT       write the result to OUT\n"
    "\n"
    "example:\n"
    "  zthost gbk to-utf8 examples/text-gbk.txt\n";

int runGbk(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--qt-codec", false}, {"-o", true}});
    args.expectPositionalsBetween(1, 2, "to-utf8 or from-utf8");
    const QString mode = args.positionals().at(0);
    if (mode != QLatin1String("to-utf8") && mode != QLatin1String("from-utf8"))
        throw UsageError(QStringLiteral("unknown mode %1 (to-utf8 or from-utf8)").arg(mode));
    const bool toUtf8 = mode == QLatin1String("to-utf8");
    const QString path = args.positionals().value(1, QStringLiteral("-"));
    const QByteArray text = input::readFile(path);
    if (text.contains('\0'))
        throw CommandFailure(kExitFailed, input::displayName(path) + QStringLiteral(": the text contains NUL bytes"));
    HostSession& session = context.session();
    QByteArray converted;
    if (args.has("--qt-codec"))
        converted = toUtf8 ? gbkToUtf8WithComponent(session, text) : utf8ToGbkWithComponent(session, text);
    else
        converted = toUtf8 ? gbkToUtf8(session.library(), text, input::displayName(path))
                           : utf8ToGbk(session.library(), text, input::displayName(path));
    input::writeFile(args.value("-o", QStringLiteral("-")), converted);
    return kExitOk;
}

}  // namespace

extern const Command kGbkCommand = {"gbk", "convert text between GBK and UTF-8", kUsage, runGbk};
