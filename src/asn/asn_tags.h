// Identifier octets of the types the library reads and builds, compared as
// the whole octet (class, constructed bit and number together).
#ifndef ZTUTIL_SRC_ASN_ASN_TAGS_H
#define ZTUTIL_SRC_ASN_ASN_TAGS_H

namespace ztutil {
namespace tag {

constexpr int kInteger = 0x02;
constexpr int kBitString = 0x03;
constexpr int kOctetString = 0x04;
constexpr int kOid = 0x06;
constexpr int kIa5String = 0x16;
constexpr int kUtcTime = 0x17;
constexpr int kGeneralizedTime = 0x18;
constexpr int kSequence = 0x30;
constexpr int kSet = 0x31;
constexpr int kContextZero = 0xA0;  // [0] constructed: the certificate version

}  // namespace tag
}  // namespace ztutil

namespace tag = ztutil::tag;

#endif
