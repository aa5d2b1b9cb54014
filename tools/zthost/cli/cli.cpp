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
