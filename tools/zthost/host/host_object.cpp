#include "host/host_object.h"

#include <cstdio>

HostObject::HostObject(QObject* parent) : QObject(parent) {}

void HostObject::logDebug(QString message) {
    logged_.append(QStringLiteral("logDebug: ") + message);
    if (echo_)
        std::fprintf(stderr, "host log: %s\n", message.toLocal8Bit().constData());
}

QObject* HostObject::createComponentObject(QString progId, QString clsId) {
    logged_.append(QStringLiteral("createComponentObject: \"%1\", \"%2\"").arg(progId, clsId));
    return nullptr;
}
