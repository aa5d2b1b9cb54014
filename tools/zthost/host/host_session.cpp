#include "host/host_session.h"

HostSession::~HostSession() {
    if (initialised_)
        library_.componentDestroy();
}

bool HostSession::start(const QString& libraryPath, QString* error) {
    if (!library_.load(libraryPath, error))
        return false;
    library_.componentInit(&host_);
    initialised_ = true;
    return true;
}

std::unique_ptr<QObject> HostSession::create(const char* progId) {
    return std::unique_ptr<QObject>(
        library_.createComponent(QString::fromLatin1(progId), QString()));
}
