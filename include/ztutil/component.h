// Entry points of the library, the component registry and the host-dispatch
// objects through which the library calls back into the host.
#ifndef ZTUTIL_COMPONENT_H
#define ZTUTIL_COMPONENT_H

#include <QObject>
#include <QString>
#include <cstdarg>

#include "ztutil_global.h"

// Calls methods of a host QObject by name through its meta-object.
class ZTUTIL_EXPORT Q_Dispatch : public QObject {
public:
    explicit Q_Dispatch(QObject* hostObject = nullptr);
    ~Q_Dispatch() override;

    // Calls the host method `methodName` (bare name, no parameter list).
    // `ret` receives the result (may be null); the variable arguments are one
    // pointer per declared parameter of the target method, each the address
    // of the argument value. Failures are silent except a failed lookup,
    // which lists the target's methods on the debug stream.
    void invokeHelper(QString methodName, void* ret, ...);
    void invokeHelperV(QString methodName, void* ret, va_list args);

    QObject* hostObject() const { return m_pHostObject; }

protected:
    QObject* m_pHostObject;  // not owned
};

// The single proxy of the host's signature core (object name "Agent").
class ZTUTIL_EXPORT ZTSignatureCoreAgent : public Q_Dispatch {
public:
    explicit ZTSignatureCoreAgent(QObject* hostObject = nullptr);
    ~ZTSignatureCoreAgent() override;
};

// Version query. *len is set to 9; with a buffer the call zero-fills nine
// bytes and returns -1 (the text itself is never copied); without one it
// returns 0.
ZTUTIL_C_API int ZT_GetVersion(unsigned char* buf, unsigned int* len);

// Creates the agent bound to `host`; always returns 1.
ZTUTIL_C_API int ComponentInit(QObject* host);

// Creates a component by ProgID or CLSID; null for unknown identifiers.
// The caller owns the object.
ZTUTIL_C_API QObject* CreateComponent(const QString& progId, const QString& clsId);

// Deletes the agent; components are not touched.
ZTUTIL_C_API void ComponentDestroy();

// The agent (null before ComponentInit and after ComponentDestroy).
ZTUTIL_EXPORT Q_Dispatch* getSignatureCore();

// Asks the host's signature core to create one of its components.
ZTUTIL_EXPORT QObject* createComponentObject(QString progId, QString clsId);

#endif
