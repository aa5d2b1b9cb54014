// ZTUtil: the host's text conversions through Qt's codecs.
//
// UTF-8 travels in a QString one byte per character (Latin-1 transport):
// the host stores and sends these strings as byte strings. The codecs are
// looked up by name on every call.
#include <QTextCodec>
#include <cstring>
#include <memory>

#include "ztutil/ztutil.h"

namespace {

QTextCodec* gbkCodec() {
    return QTextCodec::codecForName("GBK");
}

QTextCodec* utf8Codec() {
    return QTextCodec::codecForName("utf-8");
}

// UTF-8 octets as a QString of one character per octet, up to the first zero.
QString latin1Transport(const QByteArray& utf8) {
    return QString::fromLatin1(utf8.constData());
}

}  // namespace

QString ZTUtil::Multi2Utf8(QByteArray data) {
    QString result(QLatin1String(""));
    QTextCodec* gbk = gbkCodec();
    QTextCodec* utf8 = utf8Codec();
    if (gbk == nullptr || utf8 == nullptr)
        return result;
    result = latin1Transport(utf8->fromUnicode(gbk->toUnicode(data)));
    return result;
}

QByteArray ZTUtil::Utf8toMulti(QString strUtf8) {
    QByteArray result;
    QTextCodec* gbk = gbkCodec();
    QTextCodec* utf8 = utf8Codec();
    if (gbk == nullptr || utf8 == nullptr)
        return result;
    result = gbk->fromUnicode(utf8->toUnicode(strUtf8.toLatin1()));
    return result;
}

QString ZTUtil::Wide2Utf8(QByteArray data) {
    QString result(QLatin1String(""));
    QTextCodec* utf8 = utf8Codec();
    if (utf8 == nullptr)
        return result;
    // (n + 1) rounded down to even, plus one: always room for the bytes and
    // a zero unit after them.
    const size_t byteCount = static_cast<size_t>(data.size());
    const size_t unitCount = ((byteCount + 1) & ~static_cast<size_t>(1)) + 1;
    std::unique_ptr<wchar_t[]> units(new wchar_t[unitCount]());
    std::memcpy(units.get(), data.constData(), byteCount);
    const QString text = QString::fromWCharArray(units.get(), -1);
    result = latin1Transport(utf8->fromUnicode(text));
    return result;
}

QByteArray ZTUtil::Utf8toWide(QString strUtf8) {
    QByteArray result;
    QTextCodec* utf8 = utf8Codec();
    if (utf8 == nullptr)
        return result;
    const QString text = utf8->toUnicode(strUtf8.toLatin1());
    std::unique_ptr<wchar_t[]> units(new wchar_t[static_cast<size_t>(text.length()) + 1]);
    const int count = text.toWCharArray(units.get());
    result = QByteArray(reinterpret_cast<const char*>(units.get()),
                        count * static_cast<int>(sizeof(wchar_t)));
    return result;
}
