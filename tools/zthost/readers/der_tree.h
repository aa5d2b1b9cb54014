// A DER document as a tree of elements: each node a view into the input.
#ifndef ZTHOST_READERS_DER_TREE_H
#define ZTHOST_READERS_DER_TREE_H

#include <vector>

#include "readers/der.h"

struct DerNode {
    der::Element element;
    std::vector<DerNode> children;  // of a constructed element
};

// Nesting deeper than this is refused (seal structures nest about ten deep).
constexpr int kMaxDerDepth = 64;

// The first element of `bytes` with the children of every constructed
// element. Throws FormatError naming the offset of what does not parse.
DerNode readDerTree(const ByteView& bytes);

#endif
