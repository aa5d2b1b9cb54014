// BIT STRING content to and from its unused-bits octet and payload.
#include <cstdlib>
#include <cstring>

#include "ztutil/asn.h"
#include "asn/asn_tags.h"

namespace {

bool isBitString(const stASN_BLOCK_HEADER* node) {
    return node != nullptr && node->tag == tag::kBitString;
}

}  // namespace

unsigned int ASNGetBitStringData(stASN_BLOCK_HEADER* node, stASN_BIT_STRING* value) {
    // Without content there is no unused-bits octet to read.
    if (!isBitString(node) || value == nullptr || node->dataLength == 0 || node->data == nullptr)
        return 0;
    const unsigned int payloadLength = node->dataLength - 1;
    auto* payload = static_cast<unsigned char*>(std::malloc(payloadLength != 0 ? payloadLength : 1));
    if (payload == nullptr)
        return 0;
    std::memcpy(payload, node->data + 1, payloadLength);
    value->unusedBits = node->data[0];
    value->length = payloadLength;
    value->data = payload;
    return 1;
}

unsigned int ASNSetBitStringDataEx(stASN_BLOCK_HEADER* node, const stASN_BIT_STRING* value) {
    if (!isBitString(node) || value == nullptr || (value->data == nullptr && value->length != 0))
        return 0;
    const size_t contentLength = size_t{value->length} + 1;
    auto* content = static_cast<unsigned char*>(std::malloc(contentLength));
    if (content == nullptr)
        return 0;
    content[0] = value->unusedBits;
    if (value->length != 0)
        std::memcpy(content + 1, value->data, value->length);
    const unsigned int result = ASNSetBlockData(node, content, contentLength);
    std::free(content);
    return result;
}

unsigned int ASNSetBitStringData(stASN_BLOCK_HEADER* node, const unsigned char* data,
                                 unsigned int length, unsigned char unusedBits) {
    stASN_BIT_STRING value;
    value.unusedBits = unusedBits;
    value.length = length;
    value.data = const_cast<unsigned char*>(data);
    return ASNSetBitStringDataEx(node, &value);
}
