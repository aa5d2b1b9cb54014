// The explicit-alphabet Base64 codec: the alphabet travels with every call and
// decoding is lenient (unknown characters read as padding).
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

#include "ztutil/base64.h"

namespace {

const int kPadValue = 64;

// The historical buffer size, computed in single precision with a fused
// multiply-add: trunc((n / 3 + 1) * 4 + 1). It is widened to the exact need
// where float rounding would fall short on very long inputs.
long long encodeBufferSize(int valueLen) {
    const float groups = static_cast<float>(valueLen) / 3.0f + 1.0f;
    const long long legacy = static_cast<long long>(std::truncf(std::fmaf(groups, 4.0f, 1.0f)));
    if (legacy < 0)
        return legacy;
    const long long exact = valueLen > 0 ? (static_cast<long long>(valueLen) + 2) / 3 * 4 + 1 : 1;
    return std::max(legacy, exact);
}

// First position k < tableLen of `c` in the table, or 64.
int explicitIndex(const char* table, int tableLen, unsigned char c) {
    for (int k = 0; k < tableLen; ++k) {
        if (static_cast<unsigned char>(table[k]) == c)
            return k;
    }
    return kPadValue;
}

}  // namespace

char* EnCodeBase64Ex(unsigned char* lpValue, int ValueLen, char* TableBase64) {
    const long long size = encodeBufferSize(ValueLen);
    if (size < 0)
        return nullptr;  // the historical size was negative: allocation fails
    char* text = static_cast<char*>(calloc(static_cast<size_t>(size), 1));
    if (text == nullptr)
        return nullptr;
    if (lpValue == nullptr || TableBase64 == nullptr) {
        free(text);
        return nullptr;
    }
    char* out = text;
    for (int i = 0; i < ValueLen; i += 3) {
        const int remaining = ValueLen - i;
        const unsigned char b0 = lpValue[i];
        const unsigned char b1 = remaining > 1 ? lpValue[i + 1] : 0;
        const unsigned char b2 = remaining > 2 ? lpValue[i + 2] : 0;
        const int i0 = b0 >> 2;
        const int i1 = ((b0 & 3) << 4) | (b1 >> 4);
        const int i2 = remaining > 1 ? (((b1 & 15) << 2) | (b2 >> 6)) : kPadValue;
        const int i3 = remaining > 2 ? (b2 & 63) : kPadValue;
        *out++ = TableBase64[i0];
        *out++ = TableBase64[i1];
        *out++ = TableBase64[i2];
        *out++ = TableBase64[i3];
    }
    return text;
}

unsigned char* DeCodeBase64Ex(unsigned char* lpValue, int ValueLen, char* TableBase64,
                              int* outlen) {
    const size_t arraySize = ValueLen > 0 ? static_cast<size_t>(ValueLen) : 1;
    auto* bytes = new (std::nothrow) unsigned char[arraySize];
    if (bytes == nullptr)
        return nullptr;
    if (lpValue == nullptr || TableBase64 == nullptr) {
        delete[] bytes;
        return nullptr;
    }
    std::memset(bytes, 0, arraySize);
    const int tableLen = static_cast<int>(std::strlen(TableBase64));

    // Positions up to and including ValueLen are read: the terminator of
    // NUL-terminated text is not in the table and so reads as padding.
    auto valueAt = [&](long long p) {
        return p <= ValueLen ? explicitIndex(TableBase64, tableLen, lpValue[p]) : kPadValue;
    };

    int o = 0;
    for (long long g = 0; g < ValueLen; g += 4) {
        const int c0 = valueAt(g), c1 = valueAt(g + 1), c2 = valueAt(g + 2);
        bytes[o] = static_cast<unsigned char>(c0 * 4 + ((c1 >> 4) & 3));
        if (c2 == kPadValue) {
            o += 1;
            continue;
        }
        bytes[o + 1] = static_cast<unsigned char>(c1 * 16 + ((c2 >> 2) & 15));
        const int c3 = valueAt(g + 3);
        if (c3 == kPadValue) {
            o += 2;
            continue;
        }
        bytes[o + 2] = static_cast<unsigned char>(c2 * 64 + (c3 & 63));
        o += 3;
    }
    if (outlen != nullptr)
        *outlen = o;
    return bytes;
}
