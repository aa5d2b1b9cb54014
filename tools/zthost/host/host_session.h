// One host session: the loaded library, ComponentInit with zthost's own host
// object, and ComponentDestroy when the session ends.
#ifndef ZTHOST_HOST_SESSION_H
#define ZTHOST_HOST_SESSION_H

#include <QObject>
#include <QString>
#include <memory>

#include "host/host_object.h"
#include "host/library.h"

class HostSession {
public:
    HostSession() = default;
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    // Loads the library and initialises it with the host object.
    bool start(const QString& libraryPath, QString* error);

    // A new component by ProgID, owned by the caller; null if unknown.
    std::unique_ptr<QObject> create(const char* progId);

    ZtLibrary& library() { return library_; }
    HostObject& host() { return host_; }

private:
    ZtLibrary library_;
    HostObject host_;
    bool initialised_ = false;
};

#endif
