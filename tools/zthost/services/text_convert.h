// GBK <-> UTF-8 with the library's code-page functions, refusing what they
// cannot map instead of letting it turn into NULs.
#ifndef ZTHOST_TEXT_CONVERT_H
#define ZTHOST_TEXT_CONVERT_H

#include <QByteArray>
#include <QString>

class ZtLibrary;
class HostSession;

// Throw CommandFailure naming `source` for text the tables cannot map.
QByteArray gbkToUtf8(const ZtLibrary& library, const QByteArray& gbk, const QString& source);
QByteArray utf8ToGbk(const ZtLibrary& library, const QByteArray& utf8, const QString& source);

// The same through the ZTUtil component (Qt's GBK codec).
QByteArray gbkToUtf8WithComponent(HostSession& session, const QByteArray& gbk);
QByteArray utf8ToGbkWithComponent(HostSession& session, const QByteArray& utf8);

#endif
