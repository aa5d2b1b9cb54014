// zthost's byte view and DER reader on arbitrary bytes. Beyond not crashing:
// every element lies inside its parent's content, children follow each
// other without gaps and fill the parent, offsets are input offsets, and a
// minimal header re-encoded in front of the content gives the element back.
#include <cstdint>
#include <vector>

#include "readers/der_builder.h"
#include "readers/der_tree.h"
#include "readers/der_values.h"

namespace {

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

void checkNode(const DerNode& node, const ByteView& input) {
    const der::Element& element = node.element;
    check(input.contains(element.whole) && element.whole.contains(element.content));
    check(element.content.end() == element.whole.end());
    check(element.whole.data() - input.data() == element.offset() - input.offset());
    if (der::hasMinimalLength(element)) {
        const QByteArray rebuilt = der::element(element.tag, element.content.toByteArray());
        check(rebuilt == element.whole.toByteArray());
    }
    der::oidText(element.content);
    der::timeValue(element);
    der::decodeText(element.tag, element.content);
    int next = element.content.offset();
    for (const DerNode& child : node.children) {
        check(element.content.contains(child.element.whole));
        check(child.element.offset() == next);
        next = child.element.whole.end();
        checkNode(child, input);
    }
    if (!node.children.empty())
        check(next == element.whole.end());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const ByteView input(data, int(size), 0);
    try {
        checkNode(readDerTree(input), input);
    } catch (const FormatError& error) {
        check(!error.message.isEmpty());
    }
    // Element by element, as structure readers take them.
    ByteView rest = input;
    der::Element element;
    while (der::readElement(&rest, &element))
        check(element.whole.end() == rest.offset());
    return 0;
}
