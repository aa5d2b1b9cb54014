// ZTAsnBlock: content as Qt values (text, bytes, integers, date-times).
#include <QDate>
#include <QDebug>
#include <QTime>
#include <ctime>

#include "asn/asn_node_access.h"
#include "asn/bmp_text.h"
#include "ztutil/ztasn.h"
#include "asn/asn_tags.h"

using ztutil::asn::isConstructed;

namespace {

const unsigned char kBmpStringTag = 30;
const unsigned kOidNameCapacity = 100;
const int kCertificateUtcOffset = -28800;  // certificate times are read at UTC-8

// The content of a primitive node, null for no node or a constructed one.
const stASN_BLOCK_HEADER* primitiveNode(const stASN_BLOCK_HEADER* node) {
    return node != nullptr && !isConstructed(node) ? node : nullptr;
}

QByteArray contentOf(const stASN_BLOCK_HEADER* node) {
    return QByteArray(reinterpret_cast<const char*>(node->data), static_cast<int>(node->dataLength));
}

// BIT STRING content after its unused-bits octet.
QByteArray bitStringPayload(const stASN_BLOCK_HEADER* node) {
    if (node->dataLength < 1)
        return QByteArray();
    return QByteArray(reinterpret_cast<const char*>(node->data) + 1,
                      static_cast<int>(node->dataLength - 1));
}

QString oidText(const stASN_BLOCK_HEADER* node) {
    char name[kOidNameCapacity] = {};
    unsigned int capacity = kOidNameCapacity;
    if (!ASNGetOIDName(node->data, static_cast<int>(node->dataLength), name, &capacity))
        return QString();
    return QString::fromLatin1(name);
}

// Two characters of `text` at `position` as a decimal number (0 if not one).
int twoDigits(const QString& text, int position, int count = 2) {
    return text.mid(position, count).toInt();
}

int centuryFromPivot60(int twoDigitYear) {
    return twoDigitYear < 60 ? 2000 + twoDigitYear : 1900 + twoDigitYear;
}

// Seconds since 1970 of 1970-01-02 00:00:00 local time.
long long localSecondsOfSecondDay() {
    std::tm parts{};
    parts.tm_year = 70;
    parts.tm_mday = 2;
    parts.tm_isdst = -1;
    return static_cast<long long>(std::mktime(&parts));
}

// A local date-time; an invalid date or time makes the whole value invalid
// (no midnight is put in place of a bad time).
QDateTime localDateTime(const QDate& date, const QTime& time) {
    if (!date.isValid() || !time.isValid())
        return QDateTime();
    return QDateTime(date, time, Qt::LocalTime);
}

QDateTime fromUtcTimeText(const QString& text) {
    QDate date(centuryFromPivot60(twoDigits(text, 0)), twoDigits(text, 2), twoDigits(text, 4));
    int hour = twoDigits(text, 6);
    if (text.length() == 13 && text.endsWith(QLatin1Char('Z'))) {
        // Whole-hour zones at or east of UTC only; no other wrap is made.
        hour = 24 - static_cast<int>(localSecondsOfSecondDay() / 3600) + hour;
        if (hour >= 24) {
            hour -= 24;
            date = date.addDays(1);
        }
    }
    return localDateTime(date, QTime(hour, twoDigits(text, 8), twoDigits(text, 10), 0));
}

QDateTime fromGeneralizedTimeText(const QString& text) {
    const QDate date(twoDigits(text, 0, 4), twoDigits(text, 4), twoDigits(text, 6));
    const QTime time(twoDigits(text, 8), twoDigits(text, 10), twoDigits(text, 12), 0);
    return localDateTime(date, time);
}

}  // namespace

QString ZTAsnBlock::toString() {
    return operator QString();
}

int ZTAsnBlock::toInt() {
    return operator int();
}

QByteArray ZTAsnBlock::toByteArray() {
    return operator QByteArray();
}

QDateTime ZTAsnBlock::toDateTime() {
    return operator QDateTime();
}

ZTAsnBlock::operator QString() {
    const stASN_BLOCK_HEADER* leaf = primitiveNode(node);
    if (leaf == nullptr)
        return QString();
    switch (leaf->tag) {
    case tag::kOid:
        return oidText(leaf);
    case tag::kBitString:
        return QString::fromLatin1(bitStringPayload(leaf));
    case kBmpStringTag:
        // The UTF-8 octets are read as Latin-1, deliberately.
        return QString::fromLatin1(ztutil::asn::bmpToUtf8(leaf->data, leaf->dataLength));
    default:
        return QString::fromLatin1(contentOf(leaf));
    }
}

ZTAsnBlock::operator QByteArray() {
    const stASN_BLOCK_HEADER* leaf = primitiveNode(node);
    if (leaf == nullptr)
        return QByteArray();
    switch (leaf->tag) {
    case tag::kBitString:
        return bitStringPayload(leaf);
    case kBmpStringTag:
        return ztutil::asn::bmpToUtf8(leaf->data, leaf->dataLength);
    default:
        return contentOf(leaf);
    }
}

ZTAsnBlock::operator int() {
    const stASN_BLOCK_HEADER* leaf = primitiveNode(node);
    if (leaf == nullptr || leaf->tag != tag::kInteger)
        return 0;
    const unsigned char* octets = leaf->data;
    // Two and four octets are read least significant first, deliberately.
    switch (leaf->dataLength) {
    case 1:
        return octets[0];
    case 2:
        return octets[0] | (octets[1] << 8);
    case 4:
        return static_cast<int>(static_cast<unsigned>(octets[0]) | (static_cast<unsigned>(octets[1]) << 8) |
                                (static_cast<unsigned>(octets[2]) << 16) |
                                (static_cast<unsigned>(octets[3]) << 24));
    default:
        return 0;
    }
}

ZTAsnBlock::operator QDateTime() {
    const QString text = toString();
    qDebug("[ZTAsn::operator QDateTime]...");
    qDebug().noquote() << QStringLiteral("text: ") + text;
    switch (type()) {
    case tag::kUtcTime:
        return fromUtcTimeText(text);
    case tag::kGeneralizedTime:
        return fromGeneralizedTimeText(text);
    default:
        return QDateTime();
    }
}

QDateTime ZTAsnBlock::convertDateTime(QByteArray text) {
    QDateTime zone;
    zone.setOffsetFromUtc(kCertificateUtcOffset);
    const QString digits = QString::fromLatin1(text);
    int year = 0;
    int position = 0;
    if (text.size() == 13 && text.at(12) == 'Z') {
        year = centuryFromPivot60(twoDigits(digits, 0));
        position = 2;
    } else if (text.size() == 15 && text.at(14) == 'Z') {
        year = twoDigits(digits, 0, 4);
        position = 4;
    } else {
        return zone.toUTC();
    }
    const QDate date(year, twoDigits(digits, position), twoDigits(digits, position + 2));
    const QTime time(twoDigits(digits, position + 4), twoDigits(digits, position + 6),
                     twoDigits(digits, position + 8));
    if (!date.isValid() || !time.isValid())
        return zone.toUTC();
    // The digits are taken as UTC-8 wall-clock time and shown in UTC.
    return QDateTime(date, time, Qt::OffsetFromUTC, kCertificateUtcOffset).toUTC();
}
