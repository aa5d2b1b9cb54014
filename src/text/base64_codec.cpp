// The process-wide Base64 codec: one current alphabet for the whole process,
// strict decoding.
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ztutil/base64_qt.h"

char* const strNormalTable =
    const_cast<char*>("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=");
char* const strSM2Table =
    const_cast<char*>("=ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");

namespace {

const int kAlphabetSize = 65;  // 64 digits and the padding character
const int kPadPosition = 64;
const unsigned char kNotInAlphabet = 255;

char base[66] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
char* pTableCode = base;

// First position of `c` in the current alphabet, or 255.
unsigned char GetTableIndex(char c) {
    for (int i = 0; i < kAlphabetSize && pTableCode[i] != '\0'; ++i) {
        if (pTableCode[i] == c)
            return static_cast<unsigned char>(i);
    }
    return kNotInAlphabet;
}

// Size of the encoded text with its terminator. The group count is taken as
// a 32-bit signed number; a text that does not fit counts as out of memory.
bool encodedSize(unsigned long len, size_t* size) {
    const unsigned long groups = len / 3 + (len % 3 != 0 ? 1 : 0);
    if (groups > static_cast<unsigned long>(INT_MAX / 4))
        return false;
    *size = static_cast<size_t>(groups) * 4 + 1;
    return true;
}

}  // namespace

char* ZTBase64SetTableCode(char* table) {
    pTableCode = table != nullptr ? table : base;
    return pTableCode;
}

char* ZTBase64Encode(unsigned char* pbtdata, unsigned long len) {
    if (pbtdata == nullptr) {
        printf("argument error...... pbtdata is null.\n");
        return nullptr;
    }
    if (len == 0)
        return nullptr;
    size_t size = 0;
    char* text = encodedSize(len, &size) ? static_cast<char*>(calloc(size, 1)) : nullptr;
    if (text == nullptr) {
        printf("memory not enough...........\n");
        return nullptr;
    }
    const char* table = pTableCode;
    char* out = text;
    unsigned long i = 0;
    for (; i + 3 <= len; i += 3) {
        const unsigned char b0 = pbtdata[i], b1 = pbtdata[i + 1], b2 = pbtdata[i + 2];
        *out++ = table[b0 >> 2];
        *out++ = table[((b0 & 3) << 4) | (b1 >> 4)];
        *out++ = table[((b1 & 15) << 2) | (b2 >> 6)];
        *out++ = table[b2 & 63];
    }
    if (len - i == 2) {
        const unsigned char b0 = pbtdata[i], b1 = pbtdata[i + 1];
        *out++ = table[b0 >> 2];
        *out++ = table[((b0 & 3) << 4) | (b1 >> 4)];
        *out++ = table[(b1 & 15) << 2];
        *out++ = table[kPadPosition];
    } else if (len - i == 1) {
        const unsigned char b0 = pbtdata[i];
        *out++ = table[b0 >> 2];
        *out++ = table[(b0 & 3) << 4];
        *out++ = table[kPadPosition];
        *out++ = table[kPadPosition];
    }
    return text;
}

unsigned char* ZTBase64Decode(const char* pszBase64Code, long* len) {
    if (pszBase64Code == nullptr) {
        printf("[ZTBase64Decode] pszBase64Code == NULL.\n");
        return nullptr;
    }
    const size_t n = strlen(pszBase64Code);
    if (n % 4 != 0) {
        printf("[ZTBase64Decode] nBase64Len = [%d]\n", static_cast<int>(n));
        return nullptr;
    }
    auto* bytes = static_cast<unsigned char*>(calloc(n / 4 * 3 + 1, 1));
    if (bytes == nullptr) {
        printf("[ZTBase64Decode] malloc error.\n");
        return nullptr;
    }
    if (n == 0) {
        if (len != nullptr)
            *len = 0;
        return bytes;
    }
    unsigned char last2 = 0, last3 = 0;
    unsigned char* out = bytes;
    for (size_t g = 0; g < n; g += 4) {
        const unsigned char i0 = GetTableIndex(pszBase64Code[g]);
        const unsigned char i1 = GetTableIndex(pszBase64Code[g + 1]);
        const unsigned char i2 = GetTableIndex(pszBase64Code[g + 2]);
        const unsigned char i3 = GetTableIndex(pszBase64Code[g + 3]);
        if (i0 == kNotInAlphabet || i1 == kNotInAlphabet || i2 == kNotInAlphabet ||
            i3 == kNotInAlphabet) {
            free(bytes);
            printf("[ZTBase64Decode] btValue[0] == 0xFF.\n");
            return nullptr;
        }
        // The padding position (64) contributes zero bits wherever it stands.
        *out++ = static_cast<unsigned char>((i0 * 4) | ((i1 >> 4) & 3));
        *out++ = static_cast<unsigned char>((i1 * 16) | ((i2 >> 2) & 15));
        *out++ = static_cast<unsigned char>((i2 * 64) | (i3 & 63));
        last2 = i2;
        last3 = i3;
    }
    long decoded = static_cast<long>(n / 4 * 3);
    if (last2 == kPadPosition)
        decoded -= 2;
    else if (last3 == kPadPosition)
        decoded -= 1;
    if (len != nullptr)
        *len = decoded;
    return bytes;
}

QString ZTBase64EncodeEx(QByteArray data) {
    // The encoded buffer is not released here; callers of this function have
    // always lived with that, and it stays so.
    const char* text = ZTBase64Encode(reinterpret_cast<unsigned char*>(data.data()),
                                      static_cast<unsigned long>(data.size()));
    return QString::fromLatin1(text);
}
