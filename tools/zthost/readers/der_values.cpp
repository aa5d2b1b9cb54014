#include "readers/der_values.h"

#include <QRegularExpression>
#include <QStringList>
#include <QTextCodec>

namespace {

const int kMaxIntegerOctets = 8;
const int kTwoDigitYearPivot = 50;

// UTF-8 without replacement characters, or false.
bool strictUtf8(const QByteArray& bytes, QString* text) {
    QTextCodec::ConverterState state;
    const QString decoded = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0)
        return false;
    *text = decoded;
    return true;
}

}  // namespace

namespace der {
namespace {

QString utf16BigEndian(const ByteView& content) {
    QString text;
    for (int i = 0; i + 1 < content.size(); i += 2)
        text += QChar(static_cast<ushort>(content[i] << 8 | content[i + 1]));
    if (content.size() % 2 != 0)
        text += QChar(QChar::ReplacementCharacter);
    return text;
}

QString utf32BigEndian(const ByteView& content) {
    QString text;
    for (int i = 0; i + 3 < content.size(); i += 4) {
        const uint code = uint(content[i]) << 24 | uint(content[i + 1]) << 16 | uint(content[i + 2]) << 8 |
                          content[i + 3];
        const bool valid = code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        const char32_t unit = valid ? char32_t(code) : char32_t(QChar::ReplacementCharacter);
        text += QString::fromUcs4(&unit, 1);
    }
    if (content.size() % 4 != 0)
        text += QChar(QChar::ReplacementCharacter);
    return text;
}

int fieldValue(const QString& digits, int at, int count) {
    return digits.midRef(at, count).toInt();
}

}  // namespace

QString oidText(const ByteView& content) {
    QStringList arcs;
    quint64 value = 0;
    bool pending = false;
    for (int i = 0; i < content.size(); ++i) {
        const unsigned char octet = content[i];
        if (!pending && octet == 0x80)
            return QString();  // a non-minimal arc
        if (value > (Q_UINT64_C(1) << 56))
            return QString();  // an arc too large to show
        value = (value << 7) | (octet & 0x7F);
        pending = (octet & 0x80) != 0;
        if (pending)
            continue;
        if (arcs.isEmpty()) {
            const quint64 first = value < 80 ? value / 40 : 2;
            arcs << QString::number(first) << QString::number(value - first * 40);
        } else {
            arcs << QString::number(value);
        }
        value = 0;
    }
    if (pending || arcs.isEmpty())
        return QString();
    return arcs.join(QLatin1Char('.'));
}

bool smallInteger(const ByteView& content, qint64* value) {
    if (content.empty() || content.size() > kMaxIntegerOctets)
        return false;
    qint64 result = static_cast<signed char>(content[0]);
    for (int i = 1; i < content.size(); ++i)
        result = result * 256 + content[i];
    *value = result;
    return true;
}

bool bitStringPayload(const Element& element, ByteView* payload) {
    ByteView rest = element.content;
    unsigned char unusedBits = 0;
    if (element.tag != tag::kBitString || !rest.takeByte(&unusedBits) || unusedBits != 0)
        return false;
    *payload = rest;
    return true;
}

QString decodeText(unsigned char tagOctet, const ByteView& content) {
    if (tagOctet == tag::kUtf8String)
        return QString::fromUtf8(content.toByteArray());
    if (tagOctet == tag::kBmpString)
        return utf16BigEndian(content);
    if (tagOctet == tag::kUniversalString)
        return utf32BigEndian(content);
    if (isSingleByteText(tagOctet))
        return QString::fromLatin1(content.toByteArray());
    return QString();
}

QDateTime timeValue(const Element& element) {
    // The tag fixes the form: 10 or 12 digits for UTCTime, 14 for
    // GeneralizedTime (a 12-digit GeneralizedTime would read as a UTCTime).
    static const QRegularExpression leadingDigits(QStringLiteral("^[0-9]*"));
    const QByteArray text = element.content.toByteArray();
    const int digits = leadingDigits.match(QString::fromLatin1(text)).capturedLength();
    const bool fits = element.tag == tag::kUtcTime ? (digits == 10 || digits == 12)
                      : element.tag == tag::kGeneralizedTime && digits == 14;
    return fits ? timeFromText(text) : QDateTime();
}

QDateTime timeFromText(const QByteArray& text) {
    static const QRegularExpression pattern(QStringLiteral(
        "^([0-9]{10,14})(?:\\.([0-9]{1,9}))?(Z|[+-][0-9]{4})?$"));
    const QRegularExpressionMatch match = pattern.match(QString::fromLatin1(text));
    if (!match.hasMatch())
        return QDateTime();
    const QString digits = match.captured(1);
    int at = 0;
    int year = 0;
    if (digits.size() == 10 || digits.size() == 12) {
        year = fieldValue(digits, 0, 2);
        year += year < kTwoDigitYearPivot ? 2000 : 1900;
        at = 2;
    } else if (digits.size() == 14) {
        year = fieldValue(digits, 0, 4);
        at = 4;
    } else {
        return QDateTime();
    }
    const QDate date(year, fieldValue(digits, at, 2), fieldValue(digits, at + 2, 2));
    const int seconds = digits.size() - at == 10 ? fieldValue(digits, at + 8, 2) : 0;
    const QTime time(fieldValue(digits, at + 4, 2), fieldValue(digits, at + 6, 2), seconds);
    if (!date.isValid() || !time.isValid())
        return QDateTime();
    QDateTime result(date, time, Qt::UTC);
    const QString zone = match.captured(3);
    if (zone.size() == 5) {
        const int minutes = fieldValue(zone, 1, 2) * 60 + fieldValue(zone, 3, 2);
        result = result.addSecs(zone.at(0) == QLatin1Char('+') ? -minutes * 60 : minutes * 60);
    }
    return result;
}

}  // namespace der

QString textFromLibrary(const QString& carried) {
    for (const QChar c : carried) {
        if (c.unicode() > 0xFF)
            return carried;  // already characters
    }
    QString decoded;
    return strictUtf8(carried.toLatin1(), &decoded) ? decoded : carried;
}

QString isoTime(const QDateTime& time) {
    return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QStringLiteral("invalid");
}
