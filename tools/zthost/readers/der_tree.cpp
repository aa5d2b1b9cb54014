#include "readers/der_tree.h"

namespace {

DerNode readNode(const der::Element& element, int depth) {
    if (depth > kMaxDerDepth)
        throw FormatError{QStringLiteral("the element at offset %1 nests more than %2 levels deep")
                              .arg(element.offset())
                              .arg(kMaxDerDepth)};
    DerNode node{element, {}};
    if (!element.constructed())
        return node;
    ByteView rest = element.content;
    der::Element child;
    while (!rest.empty()) {
        if (!der::readElement(&rest, &child))
            throw FormatError{QStringLiteral("no complete DER element at offset %1").arg(rest.offset())};
        node.children.push_back(readNode(child, depth + 1));
    }
    return node;
}

}  // namespace

DerNode readDerTree(const ByteView& bytes) {
    ByteView rest = bytes;
    der::Element root;
    if (!der::readElement(&rest, &root))
        throw FormatError{QStringLiteral("no complete DER element at offset %1").arg(bytes.offset())};
    return readNode(root, 1);
}
