#include "readers/sm2_value.h"

#include <vector>

namespace {

const int kHalf = 32;

// The unsigned value of INTEGER content, right-aligned in 32 bytes.
bool alignedValue(const ByteView& content, QByteArray* out) {
    if (content.empty() || (content[0] & 0x80) != 0)
        return false;  // empty or negative
    ByteView value = content;
    while (value.size() > 1 && value[0] == 0)
        value.skip(1);
    if (value.size() > kHalf)
        return false;
    *out += QByteArray(kHalf - value.size(), '\0') + value.toByteArray();
    return true;
}

}  // namespace

bool readSm2Integers(const ByteView& value, Sm2Integers* integers) {
    der::Element sequence;
    std::vector<der::Element> children;
    if (!der::readSingle(value, &sequence) || sequence.tag != der::tag::kSequence ||
        !der::readChildren(sequence, &children) || children.size() != 2)
        return false;
    for (const der::Element& integer : children) {
        if (integer.tag != der::tag::kInteger || integer.content.empty())
            return false;
    }
    *integers = Sm2Integers{children[0], children[1]};
    return true;
}

bool sm2DerTo64(const ByteView& value, QByteArray* raw) {
    Sm2Integers integers;
    QByteArray out;
    if (!readSm2Integers(value, &integers) || !alignedValue(integers.r.content, &out) ||
        !alignedValue(integers.s.content, &out))
        return false;
    *raw = out;
    return true;
}

bool sm2ValueToRs(const QByteArray& value, QByteArray* rs, QString* problem) {
    const int kRawSize = 2 * kHalf;
    const int kWideSize = 4 * kHalf;
    if (value.size() == kRawSize) {
        *rs = value;
        return true;
    }
    if (value.size() == kWideSize) {
        if (value.left(kHalf).count('\0') != kHalf || value.mid(2 * kHalf, kHalf).count('\0') != kHalf) {
            *problem = QStringLiteral("the 128-byte signature's padding is not zero");
            return false;
        }
        *rs = value.mid(kHalf, kHalf) + value.right(kHalf);
        return true;
    }
    if (!sm2DerTo64(ByteView::of(value), rs)) {
        *problem = QStringLiteral("the signature is neither r || s nor DER with two INTEGERs of up to 32 bytes");
        return false;
    }
    return true;
}

int firstMisreadInteger(const Sm2Integers& integers) {
    const int sizes[] = {integers.r.content.size(), integers.s.content.size()};
    for (int i = 0; i < 2; ++i) {
        if (sizes[i] != kHalf && sizes[i] != kHalf + 1)
            return i;
    }
    return -1;
}
