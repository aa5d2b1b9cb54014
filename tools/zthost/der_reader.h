// A small bounds-checked reader of DER elements, used to take a seal
// signature structure apart byte for byte (the library's object model
// re-encodes; a verifier must hash exactly the bytes in the file).
// Single-octet tags and definite lengths of up to four octets only.
#ifndef ZTHOST_DER_READER_H
#define ZTHOST_DER_READER_H

#include <QByteArray>
#include <QString>
#include <vector>

struct DerElement {
    unsigned char tag = 0;
    int offset = 0;      // of the tag octet within the parsed bytes
    QByteArray whole;    // tag, length and content
    QByteArray content;  // content octets
};

// Reads consecutive elements from `bytes`.
class DerCursor {
public:
    explicit DerCursor(const QByteArray& bytes, int baseOffset = 0)
        : bytes_(bytes), baseOffset_(baseOffset) {}

    // The next element; false at the end or when the element is malformed
    // or runs past the end (then malformed() is true).
    bool next(DerElement* element);
    bool atEnd() const { return position_ >= bytes_.size(); }
    bool malformed() const { return malformed_; }

private:
    QByteArray bytes_;
    int baseOffset_;
    int position_ = 0;
    bool malformed_ = false;
};

// `bytes` is exactly one complete element.
bool parseSingleElement(const QByteArray& bytes, DerElement* element);

// The elements inside a constructed element's content; false when they do
// not fill it exactly.
bool parseChildren(const DerElement& parent, std::vector<DerElement>* children);

// The dotted text of OBJECT IDENTIFIER content octets; empty when malformed.
QString oidText(const QByteArray& content);

// DER tags used by zthost.
namespace der {
constexpr unsigned char kInteger = 0x02;
constexpr unsigned char kBitString = 0x03;
constexpr unsigned char kOctetString = 0x04;
constexpr unsigned char kOid = 0x06;
constexpr unsigned char kIa5String = 0x16;
constexpr unsigned char kGeneralizedTime = 0x18;
constexpr unsigned char kSequence = 0x30;
}  // namespace der

#endif
