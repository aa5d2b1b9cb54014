// The length cache and re-encoding. The walks keep their own stack of
// frames, so the depth of a tree never reaches the thread's stack.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "asn/asn_node_access.h"
#include "ztutil/asn.h"

using ztutil::asn::firstChildLink;
using ztutil::asn::isConstructed;

namespace {

const std::size_t kTypicalDepth = 32;
const unsigned kMaxLengthBytes = sizeof(stASN_BLOCK_HEADER::lenBytes);

// Stores the minimal DER length field of `contentLength` and the total size.
void setLengthCache(stASN_BLOCK_HEADER* node, std::uint32_t contentLength) {
    const unsigned count = ASNCalcLengthBytes(contentLength);
    node->lenByteCount = static_cast<unsigned char>(count);
    node->blockLength = 1 + count + contentLength;
    if (count == 1) {
        node->lenBytes[0] = static_cast<unsigned char>(contentLength);
        return;
    }
    node->lenBytes[0] = static_cast<unsigned char>(0x80 + count - 1);
    for (unsigned i = 1; i < count; ++i)
        node->lenBytes[i] = static_cast<unsigned char>(contentLength >> (8 * (count - 1 - i)));
}

struct UpdateFrame {
    stASN_BLOCK_HEADER* node;
    stASN_CHILD_LINK* nextChild;
    std::uint32_t contentLength;  // children's blockLength so far (32-bit wrap)
};

// Writes into [begin, begin + size), dropping whatever falls outside: the
// cache of a tree edited since its last update may claim anything.
class ClippedOutput {
public:
    ClippedOutput(unsigned char* begin, std::uint32_t size) : begin_(begin), size_(size) {}

    void write(std::uint64_t offset, const unsigned char* data, std::uint64_t count) {
        if (data == nullptr || offset >= size_)
            return;
        count = std::min<std::uint64_t>(count, size_ - offset);
        std::memcpy(begin_ + offset, data, count);
    }

private:
    unsigned char* begin_;
    std::uint64_t size_;
};

struct BuildFrame {
    const stASN_BLOCK_HEADER* node;
    const stASN_CHILD_LINK* nextChild;
    std::uint64_t offset;   // where the node starts in the output
    std::uint32_t size;     // octets the node was given (32-bit, as passed down)
    std::uint32_t written;  // octets the node has accounted for (32-bit wrap)
};

// Writes the tag, the length field and, for a primitive node, the content.
// Returns the octets accounted for so far inside the node.
std::uint32_t writeNodeStart(ClippedOutput* out, const stASN_BLOCK_HEADER* node,
                             std::uint64_t offset) {
    const unsigned lengthCount = std::min<unsigned>(node->lenByteCount, kMaxLengthBytes);
    out->write(offset, &node->tag, 1);
    out->write(offset + 1, node->lenBytes, lengthCount);
    const std::uint32_t written = 1 + lengthCount;
    if (!isConstructed(node))
        out->write(offset + written, node->data, node->dataLength);
    return written;
}

}  // namespace

unsigned int ASNGetDataLength(stASN_BLOCK_HEADER* node) {
    if (node == nullptr)
        return 0;
    if (!isConstructed(node))
        return node->dataLength;
    std::uint32_t total = 0;
    try {
        std::vector<const stASN_CHILD_LINK*> pending;
        pending.reserve(kTypicalDepth);
        pending.push_back(node->firstChild);
        while (!pending.empty()) {
            const stASN_CHILD_LINK* link = pending.back();
            pending.pop_back();
            if (link == nullptr)
                continue;
            pending.push_back(link->next);
            const stASN_BLOCK_HEADER* child = link->node;
            if (child == nullptr)
                continue;
            if (isConstructed(child))
                pending.push_back(child->firstChild);
            else
                total += child->dataLength;
        }
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return total;
}

unsigned int ASNGetBlockLength(stASN_BLOCK_HEADER* node) {
    return node != nullptr ? node->blockLength : 0;
}

unsigned int ASNUpdate(stASN_BLOCK_HEADER* node) {
    if (node == nullptr)
        return 0;
    try {
        std::vector<UpdateFrame> stack;
        stack.reserve(kTypicalDepth);
        stack.push_back({node, firstChildLink(node), 0});
        while (!stack.empty()) {
            UpdateFrame& top = stack.back();
            if (top.nextChild != nullptr) {
                stASN_BLOCK_HEADER* child = top.nextChild->node;
                top.nextChild = top.nextChild->next;
                if (child == nullptr)
                    continue;
                if (isConstructed(child)) {
                    stack.push_back({child, child->firstChild, 0});
                } else {
                    setLengthCache(child, child->dataLength);
                    top.contentLength += child->blockLength;
                }
                continue;
            }
            stASN_BLOCK_HEADER* done = top.node;
            setLengthCache(done, isConstructed(done) ? top.contentLength : done->dataLength);
            stack.pop_back();
            if (!stack.empty())
                stack.back().contentLength += done->blockLength;
        }
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return 1;
}

unsigned int ASNBuildData(stASN_BLOCK_HEADER* node, unsigned char* out, unsigned int size) {
    if (node == nullptr || out == nullptr || node->blockLength > size)
        return 0;
    ClippedOutput output(out, size);
    const std::uint32_t rootWritten = writeNodeStart(&output, node, 0);
    if (!isConstructed(node))
        return 1;
    try {
        std::vector<BuildFrame> stack;
        stack.reserve(kTypicalDepth);
        stack.push_back({node, node->firstChild, 0, size, rootWritten});
        while (!stack.empty()) {
            BuildFrame& top = stack.back();
            if (top.nextChild == nullptr) {
                stack.pop_back();
                continue;
            }
            const stASN_BLOCK_HEADER* child = top.nextChild->node;
            top.nextChild = top.nextChild->next;
            if (child == nullptr)
                continue;
            // Each child is given what is left of its parent's size and its
            // blockLength is counted whether or not it fits.
            const std::uint32_t childSize = top.size - top.written;
            const std::uint64_t childOffset = top.offset + top.written;
            top.written += child->blockLength;
            if (child->blockLength > childSize)
                continue;
            const std::uint32_t written = writeNodeStart(&output, child, childOffset);
            if (isConstructed(child))
                stack.push_back({child, child->firstChild, childOffset, childSize, written});
        }
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return 1;
}
