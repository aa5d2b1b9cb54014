// Readable GoogleTest failure messages for Qt value types.
#ifndef ZTUTIL_TESTS_QT_PRINTERS_H
#define ZTUTIL_TESTS_QT_PRINTERS_H

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <ostream>

QT_BEGIN_NAMESPACE
inline void PrintTo(const QString& value, std::ostream* os) {
    *os << '"' << value.toStdString() << '"';
}
inline void PrintTo(const QByteArray& value, std::ostream* os) {
    *os << "QByteArray(" << value.size() << " bytes: " << value.toHex(' ').toStdString() << ")";
}
inline void PrintTo(const QStringList& value, std::ostream* os) {
    *os << '[' << value.join(QStringLiteral(", ")).toStdString() << ']';
}
inline void PrintTo(const QDateTime& value, std::ostream* os) {
    *os << value.toString(Qt::ISODateWithMs).toStdString();
}
QT_END_NAMESPACE

#endif
