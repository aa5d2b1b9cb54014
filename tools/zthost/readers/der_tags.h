// The DER tag octets zthost reads, in one place.
#ifndef ZTHOST_READERS_DER_TAGS_H
#define ZTHOST_READERS_DER_TAGS_H

#include <QString>

namespace der {
namespace tag {
constexpr unsigned char kBoolean = 0x01;
constexpr unsigned char kInteger = 0x02;
constexpr unsigned char kBitString = 0x03;
constexpr unsigned char kOctetString = 0x04;
constexpr unsigned char kNull = 0x05;
constexpr unsigned char kOid = 0x06;
constexpr unsigned char kEnumerated = 0x0A;
constexpr unsigned char kUtf8String = 0x0C;
constexpr unsigned char kNumericString = 0x12;
constexpr unsigned char kPrintableString = 0x13;
constexpr unsigned char kTeletexString = 0x14;
constexpr unsigned char kVideotexString = 0x15;
constexpr unsigned char kIa5String = 0x16;
constexpr unsigned char kUtcTime = 0x17;
constexpr unsigned char kGeneralizedTime = 0x18;
constexpr unsigned char kGraphicString = 0x19;
constexpr unsigned char kVisibleString = 0x1A;
constexpr unsigned char kGeneralString = 0x1B;
constexpr unsigned char kUniversalString = 0x1C;
constexpr unsigned char kBmpString = 0x1E;
constexpr unsigned char kSequence = 0x30;
constexpr unsigned char kSet = 0x31;

constexpr unsigned char kConstructed = 0x20;
constexpr unsigned char kClassMask = 0xC0;
constexpr unsigned char kApplicationClass = 0x40;
constexpr unsigned char kContextClass = 0x80;
constexpr unsigned char kPrivateClass = 0xC0;
constexpr unsigned char kNumberMask = 0x1F;
constexpr unsigned char kHighNumberForm = 0x1F;

// [n] with the constructed bit (EXPLICIT, or IMPLICIT of a SEQUENCE / SET).
constexpr unsigned char contextConstructed(int number) {
    return static_cast<unsigned char>(kContextClass | kConstructed | number);
}
// [n] of a primitive type (IMPLICIT).
constexpr unsigned char contextPrimitive(int number) {
    return static_cast<unsigned char>(kContextClass | number);
}
}  // namespace tag

// The display name of a tag octet: "SEQUENCE", "[0]", "[APPLICATION 3]".
QString tagName(unsigned char tagOctet);

// True for the string types whose content is single-byte text.
bool isSingleByteText(unsigned char tagOctet);

}  // namespace der

#endif
