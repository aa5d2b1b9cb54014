// Parsing DER into a node tree.
#include "asn/asn_node_access.h"
#include "asn/der_cursor.h"
#include "asn/tlv_header.h"
#include "ztutil/asn.h"

using ztutil::asn::DerCursor;
using ztutil::asn::TlvHeader;

namespace {

const int kMaxDepth = ZT_ASN_MAX_NESTING_DEPTH;

// Parses the TLV at `data` as a node at nesting level `depth` below the
// caller's parent; stores the octets it spans in *consumed.
stASN_BLOCK_HEADER* parseTlv(stASN_BLOCK_HEADER* parent, const unsigned char* data,
                             std::uint64_t size, int depth, std::uint64_t* consumed);

// Parses the children of `node` from its content, in order, until the
// content ends or a child fails to parse (which ends the list quietly).
void parseChildren(stASN_BLOCK_HEADER* node, const unsigned char* content,
                   std::uint32_t contentLength, int depth) {
    const unsigned char* next = content;
    std::uint32_t remaining = contentLength;
    while (remaining != 0) {
        std::uint64_t childSize = 0;
        if (parseTlv(node, next, remaining, depth + 1, &childSize) == nullptr)
            return;
        next += childSize;
        remaining -= static_cast<std::uint32_t>(childSize);
    }
}

stASN_BLOCK_HEADER* parseTlv(stASN_BLOCK_HEADER* parent, const unsigned char* data,
                             std::uint64_t size, int depth, std::uint64_t* consumed) {
    if (data == nullptr || size == 0 || depth > kMaxDepth)
        return nullptr;
    DerCursor cursor(data, size);
    TlvHeader header;
    if (!ztutil::asn::readTlvHeader(&cursor, &header) || header.totalSize() > size)
        return nullptr;
    const unsigned char* content = cursor.position();
    const auto contentLength = static_cast<std::uint32_t>(header.contentLength);

    stASN_BLOCK_HEADER* node = nullptr;
    if (ztutil::asn::isConstructedTag(header.tag)) {
        node = ASNAddStruct(header.tag, parent);
        if (node == nullptr)
            return nullptr;
        parseChildren(node, content, contentLength, depth);
    } else {
        node = ASNAddSample(header.tag, parent);
        if (node == nullptr)
            return nullptr;
        if (!ASNSetBlockData(node, content, contentLength)) {
            // With a parent the empty node stays in its list; a root that
            // nobody will see is released.
            if (parent == nullptr)
                ASNDeleteBlock(node);
            return nullptr;
        }
    }
    *consumed = header.totalSize();
    return node;
}

}  // namespace

stASN_BLOCK_HEADER* ASNAddByData(stASN_BLOCK_HEADER* parent, const unsigned char* data,
                                 size_t size) {
    std::uint64_t consumed = 0;
    return parseTlv(parent, data, size, 1, &consumed);
}
