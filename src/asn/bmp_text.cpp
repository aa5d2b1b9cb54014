#include "asn/bmp_text.h"

#include <climits>
#include <cstring>
#include <vector>

#include "ztutil/code_convert.h"

namespace ztutil {
namespace asn {

QByteArray bmpToUtf8(const unsigned char* content, unsigned int length) {
    const unsigned int codeCount = length / 2;
    if (content == nullptr || codeCount == 0 || length > (INT_MAX - 1) / 2)
        return QByteArray();
    // One 32-bit unit per code, the code's two octets first in memory, and a
    // zero unit after the last.
    std::vector<unsigned int> units(codeCount + 1, 0);
    for (unsigned int i = 0; i < codeCount; ++i)
        std::memcpy(&units[i], content + 2 * i, 2);
    const int size = static_cast<int>(2 * length + 1);
    // Room for the loop's overshoot: it may pass `size` by one character.
    QByteArray buffer(size + 6, '\0');
    const int count = static_cast<int>(codeCount);
    const int written = code_unicode_to_utf8_reversebyte(units.data(), count, buffer.data(), size);
    buffer.truncate(written > 0 ? written : 0);
    return buffer;
}

}  // namespace asn
}  // namespace ztutil
