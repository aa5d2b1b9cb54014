#include "readers/der.h"

namespace der {
namespace {

const unsigned char kLongLengthForm = 0x80;
const int kMaxLengthOctets = 4;

QString hexOctet(unsigned char octet) {
    return QStringLiteral("0x%1").arg(octet, 2, 16, QLatin1Char('0'));
}

}  // namespace

bool readElement(ByteView* in, Element* element) {
    ByteView rest = *in;
    const ByteView start = rest;
    unsigned char tag = 0;
    unsigned char first = 0;
    if (!rest.takeByte(&tag) || (tag & tag::kNumberMask) == tag::kHighNumberForm || !rest.takeByte(&first))
        return false;
    qint64 length = first;
    if (first & kLongLengthForm) {
        const int count = first & 0x7F;
        if (count == 0 || count > kMaxLengthOctets)
            return false;  // indefinite or oversized length
        length = 0;
        for (int i = 0; i < count; ++i) {
            unsigned char octet = 0;
            if (!rest.takeByte(&octet))
                return false;
            length = (length << 8) | octet;
        }
    }
    ByteView content;
    if (!rest.take(length, &content))
        return false;
    element->tag = tag;
    element->content = content;
    element->whole = start.first(content.end() - start.offset());
    *in = rest;
    return true;
}

bool readSingle(const ByteView& bytes, Element* element) {
    ByteView rest = bytes;
    return readElement(&rest, element) && rest.empty();
}

bool readChildren(const Element& parent, std::vector<Element>* children) {
    children->clear();
    ByteView rest = parent.content;
    Element child;
    while (!rest.empty()) {
        if (!readElement(&rest, &child))
            return false;
        children->push_back(child);
    }
    return true;
}

bool hasMinimalLength(const Element& element) {
    const int length = element.content.size();
    const int header = element.headerLength();
    if (length < 0x80)
        return header == 2;
    int octets = 0;
    for (int rest = length; rest > 0; rest >>= 8)
        ++octets;
    return header == 2 + octets;
}

void throwTagMismatch(const Element& element, unsigned char expectedTag, const QString& what) {
    throw FormatError{QStringLiteral("%1 at offset %2 has tag %3, expected %4")
                          .arg(what)
                          .arg(element.offset())
                          .arg(hexOctet(element.tag), hexOctet(expectedTag))};
}

Element expectSingle(const ByteView& bytes, unsigned char expectedTag, const QString& what) {
    Element element;
    if (!readSingle(bytes, &element))
        throw FormatError{QStringLiteral("%1 at offset %2 is not one complete DER element").arg(what).arg(bytes.offset())};
    if (element.tag != expectedTag)
        throwTagMismatch(element, expectedTag, what);
    return element;
}

Fields::Fields(const Element& element, unsigned char expectedTag, const QString& what) : what_(what) {
    if (element.tag != expectedTag)
        throwTagMismatch(element, expectedTag, what);
    if (!readChildren(element, &children_))
        throw FormatError{QStringLiteral("%1 at offset %2 does not hold complete DER elements").arg(what).arg(element.offset())};
}

Element Fields::nextAny(const char* field) {
    if (atEnd())
        throw FormatError{QStringLiteral("%1 ends before its %2").arg(what_, QLatin1String(field))};
    return children_[index_++];
}

Element Fields::next(unsigned char expectedTag, const char* field) {
    const Element element = nextAny(field);
    if (element.tag != expectedTag)
        throwTagMismatch(element, expectedTag, QStringLiteral("the %1 of %2").arg(QLatin1String(field), what_));
    return element;
}

bool Fields::nextIf(unsigned char expectedTag, Element* element) {
    if (atEnd() || children_[index_].tag != expectedTag)
        return false;
    *element = children_[index_++];
    return true;
}

const Element& Fields::peek() const {
    if (atEnd())
        throw FormatError{QStringLiteral("%1 ends early").arg(what_)};
    return children_[index_];
}

void Fields::expectEnd() const {
    if (!atEnd()) {
        throw FormatError{QStringLiteral("%1 has %2 unexpected element(s) from offset %3")
                              .arg(what_)
                              .arg(remaining())
                              .arg(children_[index_].offset())};
    }
}

}  // namespace der
