#include "asn/bmp_text.h"

#include <climits>
#include <cstring>
#include <vector>

// TODO(merge): include "ztutil/code_convert.h" once the character-set
// conversion sources are on this branch, and drop this declaration, the weak
// attribute and encodeUnitsUntilMerge below. The prototype is the one that
// header declares.
extern "C" int code_unicode_to_utf8_reversebyte(const unsigned int* pInput, int count,
                                                char* pOutput, int outSize)
    __attribute__((weak));

namespace ztutil {
namespace asn {
namespace {

// TODO(merge): stand-in with the same results for 16-bit codes, used only
// while code_unicode_to_utf8_reversebyte is not linked in.
int encodeUnitsUntilMerge(const unsigned int* units, int count, char* out, int size) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(units);
    if (units[0] == 0) {
        out[0] = '\0';
        return 0;
    }
    int total = 0;
    int done = 0;
    do {
        const unsigned code = (bytes[4 * done] << 8) | bytes[4 * done + 1];
        if (code < 0x80) {
            out[total++] = static_cast<char>(code);
        } else if (code < 0x800) {
            out[total++] = static_cast<char>(0xC0 | (code >> 6));
            out[total++] = static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out[total++] = static_cast<char>(0xE0 | (code >> 12));
            out[total++] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out[total++] = static_cast<char>(0x80 | (code & 0x3F));
        }
        ++done;
    } while (done < count && total <= size && units[done] != 0);
    if (total < size)
        out[total] = '\0';
    return total;
}

}  // namespace

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
    const int written = code_unicode_to_utf8_reversebyte != nullptr
                            ? code_unicode_to_utf8_reversebyte(units.data(), count, buffer.data(), size)
                            : encodeUnitsUntilMerge(units.data(), count, buffer.data(), size);
    buffer.truncate(written > 0 ? written : 0);
    return buffer;
}

}  // namespace asn
}  // namespace ztutil
