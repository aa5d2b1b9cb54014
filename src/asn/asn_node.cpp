// Creating, linking, filling and freeing nodes.
#include <cstdlib>
#include <cstring>

#include "asn/asn_node_access.h"
#include "ztutil/asn.h"

using ztutil::asn::firstChildLink;
using ztutil::asn::isConstructed;
using ztutil::asn::isConstructedTag;

namespace {

// A zero-filled node with `tag`, appended to `parent` when one is given.
stASN_BLOCK_HEADER* newNode(unsigned char tag, stASN_BLOCK_HEADER* parent) {
    auto* node = static_cast<stASN_BLOCK_HEADER*>(std::calloc(1, sizeof(stASN_BLOCK_HEADER)));
    if (node == nullptr)
        return nullptr;
    node->tag = tag;
    if (isConstructedTag(tag))
        node->parent = parent;
    if (parent != nullptr && !ASNAppendChild(parent, node)) {
        std::free(node);
        return nullptr;
    }
    return node;
}

// The last cell of a non-empty list.
stASN_CHILD_LINK* lastLinkOf(stASN_CHILD_LINK* link) {
    while (link->next != nullptr)
        link = link->next;
    return link;
}

}  // namespace

unsigned int ASNAppendChild(stASN_BLOCK_HEADER* parent, stASN_BLOCK_HEADER* child) {
    // A primitive parent would have its content fields overwritten by the
    // list pointers that share their storage.
    if (parent == nullptr || !isConstructed(parent))
        return 0;
    auto* link = static_cast<stASN_CHILD_LINK*>(std::calloc(1, sizeof(stASN_CHILD_LINK)));
    if (link == nullptr)
        return 0;
    link->node = child;
    if (parent->firstChild == nullptr)
        parent->firstChild = link;
    else
        parent->lastChild->next = link;
    parent->lastChild = link;
    return 1;
}

stASN_BLOCK_HEADER* ASNAddStruct(unsigned char tag, stASN_BLOCK_HEADER* parent) {
    return isConstructedTag(tag) ? newNode(tag, parent) : nullptr;
}

stASN_BLOCK_HEADER* ASNAddSample(unsigned char tag, stASN_BLOCK_HEADER* parent) {
    return isConstructedTag(tag) ? nullptr : newNode(tag, parent);
}

void ASNDeleteBlock(stASN_BLOCK_HEADER* node) {
    // Iterative, without extra memory: the cells still to visit form one
    // list, and a constructed node's own cells are spliced in front of it.
    stASN_CHILD_LINK* pending = nullptr;
    while (node != nullptr || pending != nullptr) {
        if (node != nullptr) {
            if (isConstructed(node)) {
                if (node->firstChild != nullptr) {
                    lastLinkOf(node->firstChild)->next = pending;
                    pending = node->firstChild;
                }
            } else {
                std::free(node->data);
            }
            std::free(node);
            node = nullptr;
        }
        if (pending != nullptr) {
            stASN_CHILD_LINK* link = pending;
            pending = link->next;
            node = link->node;
            std::free(link);
        }
    }
}

unsigned int ASNSetBlockData(stASN_BLOCK_HEADER* node, const unsigned char* data, size_t size) {
    // A constructed node keeps its child list where the content would go.
    if (node == nullptr || isConstructed(node))
        return 0;
    unsigned char* copy = nullptr;
    if (data != nullptr && size != 0) {
        copy = static_cast<unsigned char*>(std::malloc(size));
        if (copy == nullptr)
            return 0;
        std::memcpy(copy, data, size);
    } else {
        size = 0;
    }
    std::free(node->data);
    node->data = copy;
    node->dataLength = static_cast<unsigned int>(size);
    return 1;
}

stASN_BLOCK_HEADER* ASNGetChild(stASN_BLOCK_HEADER* node, int index) {
    if (node == nullptr || index < 0)
        return nullptr;
    stASN_CHILD_LINK* link = firstChildLink(node);
    for (; link != nullptr && index > 0; --index)
        link = link->next;
    return link != nullptr ? link->node : nullptr;
}

unsigned int ASNRemoveChild(stASN_BLOCK_HEADER* node, int index) {
    if (node == nullptr || index < 0 || firstChildLink(node) == nullptr)
        return 0;
    stASN_CHILD_LINK* previous = nullptr;
    stASN_CHILD_LINK* link = node->firstChild;
    for (; link != nullptr && index > 0; --index) {
        previous = link;
        link = link->next;
    }
    if (link == nullptr)
        return 0;
    if (previous == nullptr)
        node->firstChild = link->next;
    else
        previous->next = link->next;
    if (node->lastChild == link)
        node->lastChild = previous;
    ASNDeleteBlock(link->node);
    std::free(link);
    return 1;
}
