#include "der_reader.h"

#include <QStringList>

namespace {

const unsigned char kHighTagNumber = 0x1F;
const unsigned char kLongLengthForm = 0x80;
const int kMaxLengthOctets = 4;

}  // namespace

bool DerCursor::next(DerElement* element) {
    if (malformed_ || atEnd())
        return false;
    const int start = position_;
    const int size = bytes_.size();
    auto octet = [this](int at) { return static_cast<unsigned char>(bytes_.at(at)); };
    malformed_ = true;  // until the element proves complete
    if (size - start < 2)
        return false;
    const unsigned char tag = octet(start);
    if ((tag & kHighTagNumber) == kHighTagNumber)
        return false;
    int at = start + 1;
    const unsigned char first = octet(at++);
    qint64 length = first;
    if (first & kLongLengthForm) {
        const int count = first & 0x7F;
        if (count == 0 || count > kMaxLengthOctets || size - at < count)
            return false;  // indefinite or oversized length
        length = 0;
        for (int i = 0; i < count; ++i)
            length = (length << 8) | octet(at++);
    }
    if (length > size - at)
        return false;
    element->tag = tag;
    element->offset = baseOffset_ + start;
    element->whole = bytes_.mid(start, at - start + static_cast<int>(length));
    element->content = bytes_.mid(at, static_cast<int>(length));
    position_ = at + static_cast<int>(length);
    malformed_ = false;
    return true;
}

bool parseSingleElement(const QByteArray& bytes, DerElement* element) {
    DerCursor cursor(bytes);
    return cursor.next(element) && cursor.atEnd();
}

bool parseChildren(const DerElement& parent, std::vector<DerElement>* children) {
    const int contentOffset = parent.offset + parent.whole.size() - parent.content.size();
    DerCursor cursor(parent.content, contentOffset);
    children->clear();
    DerElement child;
    while (cursor.next(&child))
        children->push_back(child);
    return !cursor.malformed();
}

QString oidText(const QByteArray& content) {
    QStringList arcs;
    quint64 value = 0;
    bool pending = false;
    for (const char c : content) {
        const auto octet = static_cast<unsigned char>(c);
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
