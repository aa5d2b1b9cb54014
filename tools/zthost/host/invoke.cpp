#include "host/invoke.h"

#include <QByteArray>
#include <QMetaObject>
#include <vector>

#include "cli/cli.h"

namespace {

QString signatureText(const char* method, std::initializer_list<QGenericArgument> arguments) {
    QByteArray text(method);
    text += '(';
    bool first = true;
    for (const QGenericArgument& argument : arguments) {
        if (argument.name() == nullptr)
            break;
        if (!first)
            text += ',';
        text += argument.name();
        first = false;
    }
    text += ')';
    return QString::fromLatin1(QMetaObject::normalizedSignature(text.constData()));
}

[[noreturn]] void throwMissingMethod(QObject* component, const QString& signature) {
    throw MissingPiece(QStringLiteral("the %1 component has no method %2")
                                          .arg(QString::fromLatin1(component->metaObject()->className()),
                                               signature));
}

}  // namespace

void callByName(QObject* component, const char* method, QGenericReturnArgument result,
                QGenericArgument a0, QGenericArgument a1, QGenericArgument a2, QGenericArgument a3,
                QGenericArgument a4, QGenericArgument a5, QGenericArgument a6, QGenericArgument a7,
                QGenericArgument a8, QGenericArgument a9) {
    const QString signature = signatureText(method, {a0, a1, a2, a3, a4, a5, a6, a7, a8, a9});
    // Checked first so that a missing method gives zthost's own message
    // rather than Qt's warning.
    if (component->metaObject()->indexOfMethod(signature.toLatin1().constData()) < 0)
        throwMissingMethod(component, signature);
    if (!QMetaObject::invokeMethod(component, method, Qt::DirectConnection, result, a0, a1, a2, a3, a4,
                                   a5, a6, a7, a8, a9)) {
        throw CommandFailure(kExitFailed, QStringLiteral("calling %1 failed (return type %2?)")
                                              .arg(signature, QString::fromLatin1(result.name())));
    }
}

void callBySignature(QObject* component, const char* signature, void* result,
                     std::initializer_list<void*> arguments) {
    const QByteArray normalized = QMetaObject::normalizedSignature(signature);
    const int index = component->metaObject()->indexOfMethod(normalized.constData());
    if (index < 0)
        throwMissingMethod(component, QString::fromLatin1(normalized));
    std::vector<void*> argv;
    argv.reserve(arguments.size() + 1);
    argv.push_back(result);
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    component->qt_metacall(QMetaObject::InvokeMetaMethod, index, argv.data());
}
