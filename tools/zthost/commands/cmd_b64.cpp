// zthost b64: Base64 with the standard or the SM2 alphabet.
#include "cli/args.h"
#include "services/base64_text.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "host/library_symbols.h"

namespace {

const char kUsage[] =
    "usage: zthost b64 encode [--sm2-table] [-o OUT] [FILE]\n"
    "       zthost b64 decode [--sm2-table] [--lenient] [-o OUT] [FILE]\n"
    "\n"
    "Base64 through the library. FILE defaults to standard input; results go to\n"
    "standard output or OUT.\n"
    "  encode   ZTBase64::encodeBase64Ex: one line, no breaks\n"
    "  decode   ZTBase64Decode, the strict decoder, after ZTBase64::setTableCode;\n"
    "           white space is removed first; anything else outside the\n"
    "           alphabet, or a length that is not a multiple of 4, is an error\n"
    "\n"
    "options:\n"
    "  --sm2-table  the SM2 alphabet: \"=\" is the digit 0 and \"/\" pads\n"
    "  --lenient    decode with ZTBase64::decodeBase64Ex instead, which reads\n"
    "               unknown characters as padding and refuses nothing\n"
    "  -o OUT       write the result to OUT\n"
    "\n"
    "example:\n"
    "  printf 'Man' | zthost b64 encode --sm2-table\n";

void writeResult(const Args& args, const QByteArray& bytes) {
    input::writeFile(args.value("-o", QStringLiteral("-")), bytes);
}

int runB64(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--sm2-table", false}, {"--lenient", false}, {"-o", true}});
    args.expectPositionalsBetween(1, 2, "encode or decode");
    const QString mode = args.positionals().at(0);
    if (mode != QLatin1String("encode") && mode != QLatin1String("decode"))
        throw UsageError(QStringLiteral("unknown mode %1 (encode or decode)").arg(mode));
    if (mode == QLatin1String("encode") && args.has("--lenient"))
        throw UsageError(QStringLiteral("--lenient is for decode"));
    const QString path = args.positionals().value(1, QStringLiteral("-"));
    const QByteArray content = input::readFile(path);
    HostSession& session = context.session();
    char* table = args.has("--sm2-table") ? sm2Table(session.library()) : normalTable(session.library());
    if (mode == QLatin1String("encode")) {
        writeResult(args, encodeBase64(session, content, table) + '\n');
        return kExitOk;
    }
    const QByteArray text = input::withoutWhitespace(content);
    if (args.has("--lenient")) {
        writeResult(args, decodeBase64Lenient(session, text, table));
        return kExitOk;
    }
    QByteArray bytes;
    if (!decodeBase64Strict(session, text, table, &bytes)) {
        throw CommandFailure(kExitFailed, QStringLiteral("%1: not valid Base64 for the %2 alphabet")
                                              .arg(input::displayName(path),
                                                   args.has("--sm2-table") ? QStringLiteral("SM2")
                                                                           : QStringLiteral("standard")));
    }
    writeResult(args, bytes);
    return kExitOk;
}

}  // namespace

extern const Command kB64Command = {"b64", "Base64 encode or decode (standard or SM2 alphabet)", kUsage,
                                    runB64};
