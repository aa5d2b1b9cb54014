// zthost seal: build or verify seal signature structures.
#include "cli/cli.h"
#include "commands/seal_commands.h"

namespace {

const char kUsage[] =
    "usage: zthost seal gm|zw [OPTIONS]   build a GM or government-affairs structure\n"
    "       zthost seal verify [OPTIONS] FILE\n"
    "\n"
    "  gm       GetGMSignInfo / GetGMV2ASNData (see zthost seal gm --help)\n"
    "  zw       GetZWSignInfo / GetZWASNData   (see zthost seal zw --help)\n"
    "  verify   take a complete structure apart and verify its signature\n"
    "           (see zthost seal verify --help)\n";

int runSeal(Context& context, const QStringList& arguments) {
    if (arguments.isEmpty())
        throw UsageError(QStringLiteral("missing subcommand (gm, zw or verify)"));
    const QString subcommand = arguments.first();
    const QStringList rest = arguments.mid(1);
    const bool known = subcommand == QLatin1String("gm") || subcommand == QLatin1String("zw") ||
                       subcommand == QLatin1String("verify");
    if (known)
        context.setCommandPath(QStringLiteral("seal ") + subcommand);
    if (subcommand == QLatin1String("gm"))
        return runSealBuild(context, SealFormat::Gm, rest);
    if (subcommand == QLatin1String("zw"))
        return runSealBuild(context, SealFormat::Zw, rest);
    if (subcommand == QLatin1String("verify"))
        return runSealVerify(context, rest);
    if (subcommand == QLatin1String("--help") || subcommand == QLatin1String("-h"))
        throw HelpRequest{kUsage};
    throw UsageError(QStringLiteral("unknown subcommand %1 (gm, zw or verify)").arg(subcommand));
}

}  // namespace

extern const Command kSealCommand = {"seal", "build (gm, zw) or verify seal signature structures", kUsage,
                                     runSeal};
