// Calls component methods by name, the way a host does: through the Qt
// meta-object of the object CreateComponent returned, never through the
// component classes themselves (zthost does not link the library).
#ifndef ZTHOST_INVOKE_H
#define ZTHOST_INVOKE_H

#include <QGenericArgument>
#include <QObject>
#include <initializer_list>

// QMetaObject::invokeMethod, synchronous, up to ten arguments. The method is
// looked up by its name and the type names of the arguments given; when the
// component has no such method, throws CommandFailure naming the signature.
void callByName(QObject* component, const char* method, QGenericReturnArgument result,
                QGenericArgument a0 = QGenericArgument(), QGenericArgument a1 = QGenericArgument(),
                QGenericArgument a2 = QGenericArgument(), QGenericArgument a3 = QGenericArgument(),
                QGenericArgument a4 = QGenericArgument(), QGenericArgument a5 = QGenericArgument(),
                QGenericArgument a6 = QGenericArgument(), QGenericArgument a7 = QGenericArgument(),
                QGenericArgument a8 = QGenericArgument(), QGenericArgument a9 = QGenericArgument());

// For methods with more than ten parameters: finds `signature` (normalized)
// in the meta-object and calls qt_metacall with an argument vector whose
// element 0 is `result` and whose further elements are the addresses of the
// argument values in declaration order. Throws CommandFailure when absent.
void callBySignature(QObject* component, const char* signature, void* result,
                     std::initializer_list<void*> arguments);

// A return slot for a method returning a pointer to a component class zthost
// does not know (ZTAsnBlock*): the type name matches the declaration, the
// storage is a QObject* (the classes derive from QObject first).
inline QGenericReturnArgument objectReturn(const char* typeName, QObject*& slot) {
    return QGenericReturnArgument(typeName, &slot);
}

#endif
