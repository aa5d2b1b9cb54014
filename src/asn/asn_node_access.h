// Small queries on nodes shared by the engine's sources.
#ifndef ZTUTIL_SRC_ASN_ASN_NODE_ACCESS_H
#define ZTUTIL_SRC_ASN_ASN_NODE_ACCESS_H

#include "ztutil/asn.h"

namespace ztutil {
namespace asn {

const unsigned char kConstructedBit = 0x20;

inline bool isConstructedTag(unsigned char tag) {
    return (tag & kConstructedBit) != 0;
}

inline bool isConstructed(const stASN_BLOCK_HEADER* node) {
    return isConstructedTag(node->tag);
}

// The first child cell, null for a primitive node or an empty list.
inline stASN_CHILD_LINK* firstChildLink(const stASN_BLOCK_HEADER* node) {
    return isConstructed(node) ? node->firstChild : nullptr;
}

}  // namespace asn
}  // namespace ztutil

#endif
