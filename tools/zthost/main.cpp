// zthost: drives libZTUtil.so.1 the way a host signing application does,
// and does everyday certificate and seal work with it.
#include <QCoreApplication>
#include <QStringList>

#include "cli/cli.h"
#include "output/console.h"
#include "output/report.h"

namespace {

QString toolUsage() {
    QString text = QStringLiteral(
        "usage: zthost [--lib PATH] [--verbose] [COMMAND [ARGS...]]\n"
        "\n"
        "Loads libZTUtil.so.1 with dlopen, initialises it with zthost's own host\n"
        "object and drives it as a host application does: components by ProgID,\n"
        "methods called by name.\n"
        "\n"
        "commands:\n");
    for (const Command* const* command = commandTable(); *command != nullptr; ++command)
        text += QStringLiteral("  %1 %2\n").arg(QLatin1String((*command)->name), -10).arg(QLatin1String((*command)->summary));
    text += QStringLiteral(
        "  help CMD   the help of one command (also: zthost CMD --help)\n"
        "\n"
        "Without a command, zthost runs the demo.\n"
        "\n"
        "options:\n"
        "  --lib PATH     load the library from PATH (default: beside zthost, then\n"
        "                 the installed library folder, then the loader's path)\n"
        "  -v, --verbose  show the library's own messages and the host log on\n"
        "                 standard error\n"
        "  --help         show this help\n"
        "  --version      show the tool's version\n"
        "\n"
        "Exit status: 0 success, 1 verification failed or bad input, 2 usage error.\n");
    return text;
}

struct Invocation {
    RunOptions options;
    const Command* command = nullptr;
    QStringList arguments;
};

// Global options, then the command and its arguments. Returns false when
// the run is over already (help, version, usage error) with `status` set.
bool parseInvocation(QStringList args, Invocation* invocation, int* status) {
    while (!args.isEmpty() && args.first().startsWith(QLatin1Char('-'))) {
        const QString option = args.takeFirst();
        if (option == QLatin1String("--help") || option == QLatin1String("-h")) {
            console::print(toolUsage());
            *status = kExitOk;
            return false;
        }
        if (option == QLatin1String("--version")) {
            console::printLine(QStringLiteral("zthost " ZTHOST_VERSION));
            *status = kExitOk;
            return false;
        }
        if (option == QLatin1String("--verbose") || option == QLatin1String("-v")) {
            invocation->options.verbose = true;
        } else if (option == QLatin1String("--lib") && !args.isEmpty()) {
            invocation->options.libraryPath = args.takeFirst();
        } else {
            console::error(QStringLiteral("unknown option %1").arg(option));
            console::note(QStringLiteral("try 'zthost --help'"));
            *status = kExitUsage;
            return false;
        }
    }
    QString name = args.isEmpty() ? QStringLiteral("demo") : args.takeFirst();
    if (name == QLatin1String("help")) {
        if (args.isEmpty()) {
            console::print(toolUsage());
            *status = kExitOk;
            return false;
        }
        name = args.takeFirst();
        args = QStringList{QStringLiteral("--help")};
    }
    invocation->command = findCommand(name);
    if (invocation->command == nullptr) {
        console::error(QStringLiteral("unknown command %1").arg(name));
        console::note(QStringLiteral("try 'zthost --help'"));
        *status = kExitUsage;
        return false;
    }
    invocation->arguments = args;
    return true;
}

// --json among the options of a command that has it.
bool jsonRequested(const Invocation& invocation) {
    if (!QByteArray(invocation.command->usage).contains("--json"))
        return false;
    for (const QString& argument : invocation.arguments) {
        if (argument == QLatin1String("--"))
            break;
        if (argument == QLatin1String("--json"))
            return true;
    }
    return false;
}

// A failure under --json is still one JSON object on standard output, so
// that a script never parses an empty result.
void reportFailureAsJson(const Invocation& invocation, const Context& context, const CommandFailure& failure) {
    if (!jsonRequested(invocation) || console::resultsWritten())
        return;
    printReport(Report::object()
                    .set("error", failure.message)
                    .set("command", context.commandPath())
                    .set("status", failure.status),
                true);
}

int runCommand(const Invocation& invocation) {
    Context context(invocation.options);
    context.setCommandPath(QLatin1String(invocation.command->name));
    try {
        return invocation.command->run(context, invocation.arguments);
    } catch (const HelpRequest& help) {
        console::print(QString::fromUtf8(help.usage));
        return kExitOk;
    } catch (const UsageError& error) {
        reportFailureAsJson(invocation, context, error);
        console::error(context.commandPath() + QStringLiteral(": ") + error.message);
        console::note(QStringLiteral("try 'zthost %1 --help'").arg(context.commandPath()));
        return kExitUsage;
    } catch (const CommandFailure& failure) {
        reportFailureAsJson(invocation, context, failure);
        console::error(context.commandPath() + QStringLiteral(": ") + failure.message);
        return failure.status;
    }
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    Invocation invocation;
    int status = kExitOk;
    {
        // The verbose flag decides where the library's texts go, so it is
        // read before the streams are set up.
        const QStringList args = app.arguments().mid(1);
        for (int i = 0; i < args.size() && args.at(i).startsWith(QLatin1Char('-')); ++i) {
            if (args.at(i) == QLatin1String("--verbose") || args.at(i) == QLatin1String("-v"))
                invocation.options.verbose = true;
            if (args.at(i) == QLatin1String("--lib"))
                ++i;  // its value
        }
        console::setUp(invocation.options.verbose);
        if (parseInvocation(args, &invocation, &status))
            status = runCommand(invocation);
    }
    if (!console::flushResults()) {
        console::error(QStringLiteral("cannot write the results"));
        return kExitFailed;
    }
    return status;
}
