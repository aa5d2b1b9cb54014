#include "host/components.h"

#include "cli/cli.h"
#include "host/host_session.h"

std::unique_ptr<QObject> requireComponent(HostSession& session, const char* progId) {
    std::unique_ptr<QObject> component = session.create(progId);
    if (!component) {
        throw MissingPiece(QStringLiteral("this libZTUtil.so.1 creates no component for %1")
                                              .arg(QLatin1String(progId)));
    }
    return component;
}
