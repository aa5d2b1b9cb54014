#include "cli/cli.h"

#include "host/host_session.h"

Context::Context(RunOptions options) : options_(std::move(options)) {}

Context::~Context() = default;

HostSession& Context::session() {
    if (!session_) {
        auto session = std::make_unique<HostSession>();
        session->host().setEcho(options_.verbose);
        QString error;
        if (!session->start(options_.libraryPath, &error))
            throw CommandFailure(kExitFailed, QStringLiteral("cannot load the library: %1").arg(error));
        session_ = std::move(session);
    }
    return *session_;
}

int runSingleSubcommand(Context& context, const QStringList& args, const char* usage, const char* name,
                        int (*run)(Context& context, const QStringList& args)) {
    const QLatin1String subcommand(name);
    if (args.isEmpty())
        throw UsageError(QStringLiteral("missing subcommand (%1)").arg(subcommand));
    if (args.first() == QLatin1String("--help") || args.first() == QLatin1String("-h"))
        throw HelpRequest{usage};
    if (args.first() != subcommand)
        throw UsageError(QStringLiteral("unknown subcommand %1 (%2)").arg(args.first(), subcommand));
    context.setCommandPath(context.commandPath() + QLatin1Char(' ') + subcommand);
    return run(context, args.mid(1));
}
