// zthost: drives libZTUtil.so.1 the way a host signing application does.
#include <QCoreApplication>
#include <QStringList>
#include <cstdio>
#include <cstring>

#include "commands.h"
#include "host_session.h"

namespace {

void printUsage(FILE* out) {
    std::fprintf(out,
                 "usage: zthost [--lib PATH] [COMMAND [ARGS...]]\n"
                 "\n"
                 "Loads libZTUtil.so.1 with dlopen and drives it as a host application does.\n"
                 "\n"
                 "commands:\n"
                 "  demo        a tour of the library (the default)\n"
                 "\n"
                 "options:\n"
                 "  --lib PATH  load the library from PATH instead of the search path\n"
                 "  --help      show this help\n"
                 "  --version   show the tool's version\n");
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    QString libraryPath;
    while (!args.isEmpty() && args.first().startsWith(QLatin1String("--"))) {
        const QString option = args.takeFirst();
        if (option == QLatin1String("--help")) {
            printUsage(stdout);
            return kExitOk;
        }
        if (option == QLatin1String("--version")) {
            std::printf("zthost %s\n", ZTHOST_VERSION);
            return kExitOk;
        }
        if (option == QLatin1String("--lib") && !args.isEmpty()) {
            libraryPath = args.takeFirst();
            continue;
        }
        std::fprintf(stderr, "zthost: unknown option %s\n", option.toLocal8Bit().constData());
        printUsage(stderr);
        return kExitUsage;
    }
    const QString command = args.isEmpty() ? QStringLiteral("demo") : args.takeFirst();

    HostSession session;
    QString error;
    if (!session.start(libraryPath, &error)) {
        std::fprintf(stderr, "zthost: cannot load the library: %s\n", error.toLocal8Bit().constData());
        return kExitFailed;
    }
    if (command == QLatin1String("demo"))
        return runDemo(session, args);
    std::fprintf(stderr, "zthost: unknown command %s\n", command.toLocal8Bit().constData());
    printUsage(stderr);
    return kExitUsage;
}
