// zthost seal: build or verify seal signature structures.
#include "cli/cli.h"
#include "commands/seal_commands.h"

namespace {

const char kUsage[] =
    "usage: zthost seal gm|zw [OPTIONS]   build a GM or government-affairs structure\n"
    "       zthost seal verify [OPTIONS] FILE\n"
    "       zthost seal show [OPTIONS] SEAL\n"
    "\n"
    "  gm       GetGMSignInfo / GetGMV2ASNData (see zthost seal gm --help)\n"
    "  zw       GetZWSignInfo / GetZWASNData   (see zthost seal zw --help)\n"
    "  verify   take a complete structure apart and verify its signature\n"
    "           (see zthost seal verify --help)\n"
    "  show     an electronic seal on its own, its maker signature verified\n"
    "           (see zthost seal show --help)\n"
    "Each subcommand takes --json to print its result as JSON.\n";

int runSeal(Context& context, const QStringList& arguments) {
    if (arguments.isEmpty())
        throw UsageError(QStringLiteral("missing subcommand (gm, zw, verify or show)"));
    const QString subcommand = arguments.first();
    const QStringList rest = arguments.mid(1);
    const bool known = subcommand == QLatin1String("gm") || subcommand == QLatin1String("zw") ||
                       subcommand == QLatin1String("verify") || subcommand == QLatin1String("show");
    if (known)
        context.setCommandPath(QStringLiteral("seal ") + subcommand);
    if (subcommand == QLatin1String("gm"))
        return runSealBuild(context, SealFormat::Gm, rest);
    if (subcommand == QLatin1String("zw"))
        return runSealBuild(context, SealFormat::Zw, rest);
    if (subcommand == QLatin1String("verify"))
        return runSealVerify(context, rest);
    if (subcommand == QLatin1String("show"))
        return runSealShow(context, rest);
    if (subcommand == QLatin1String("--help") || subcommand == QLatin1String("-h"))
        throw HelpRequest{kUsage};
    throw UsageError(QStringLiteral("unknown subcommand %1 (gm, zw, verify or show)").arg(subcommand));
}

}  // namespace

extern const Command kSealCommand = {"seal", "build (gm, zw), verify or show seals and seal signatures", kUsage,
                                     runSeal};
