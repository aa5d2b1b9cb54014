// The host's signature core as zthost presents it to the library: the object
// handed to ComponentInit, whose methods the library calls by name.
#ifndef ZTHOST_HOST_OBJECT_H
#define ZTHOST_HOST_OBJECT_H

#include <QObject>
#include <QString>
#include <QStringList>

class HostObject : public QObject {
    Q_OBJECT
public:
    explicit HostObject(QObject* parent = nullptr);

    // The calls the library made, in order: "logDebug: TEXT" and
    // "createComponentObject: \"PROGID\", \"CLSID\"".
    const QStringList& loggedLines() const { return logged_; }
    // Set to echo every logged line to standard error.
    void setEcho(bool echo) { echo_ = echo; }

    Q_INVOKABLE void logDebug(QString message);
    // zthost has no components of its own: it records the request and
    // answers null.
    Q_INVOKABLE QObject* createComponentObject(QString progId, QString clsId);

private:
    QStringList logged_;
    bool echo_ = false;
};

#endif
