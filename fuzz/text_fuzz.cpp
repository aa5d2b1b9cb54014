// Every code_* function and the ZTUtil text methods on arbitrary bytes.
//
// Each output buffer is allocated at exactly the worst-case size documented
// in code_convert.h and ztutil.h, so AddressSanitizer stops any write past
// it; the counts returned are checked against the same sizes. Where glibc's
// iconv reads the input as UTF-8 (and the library's narrow two-byte rule
// does not apply) the code points are iconv's and encoding them again gives
// the input back; the wide-character methods likewise.
#include <iconv.h>

#include <QByteArray>
#include <QString>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_support.h"
#include "ztutil/code_convert.h"
#include "ztutil/ztutil.h"

namespace {

using Units = std::vector<unsigned int>;

// UTF-8 to native wide characters (32-bit code points) through iconv; false
// when iconv refuses any of the input or reads a code point beyond U+10FFFF
// (glibc still takes the five- and six-byte forms of RFC 2279).
bool iconvCodePoints(const QByteArray& utf8, Units* units) {
    static const iconv_t converter = iconv_open("WCHAR_T", "UTF-8");
    FUZZ_CHECK(converter != reinterpret_cast<iconv_t>(-1));
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    units->assign(static_cast<size_t>(utf8.size()) + 1, 0);  // never empty: iconv needs a buffer
    char* in = const_cast<char*>(utf8.constData());
    size_t inLeft = static_cast<size_t>(utf8.size());
    char* out = reinterpret_cast<char*>(units->data());
    size_t outLeft = units->size() * sizeof(unsigned int);
    if (iconv(converter, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1) || inLeft != 0)
        return false;
    units->resize(units->size() - outLeft / sizeof(unsigned int));
    return std::all_of(units->begin(), units->end(), [](unsigned int unit) { return unit <= 0x10FFFF; });
}

// The library decodes two-byte sequences only with a second byte of 0x80-0x9F.
bool hasWideTwoByteForm(const QByteArray& utf8) {
    for (int i = 0; i + 1 < utf8.size(); ++i) {
        const unsigned char lead = static_cast<unsigned char>(utf8.at(i));
        if (lead >= 0xC0 && lead < 0xE0 && static_cast<unsigned char>(utf8.at(i + 1)) > 0x9F)
            return true;
    }
    return false;
}

// The text's units (at most `limit`) must sit in a buffer of limit + 1.
void utf8Functions(const QByteArray& text, int limit) {
    const int n = text.size();
    int counters[7] = {};
    code_get_utf8_length(text.constData(), counters);
    FUZZ_CHECK(counters[0] <= n &&
               counters[0] == counters[1] + counters[2] + counters[3] + counters[4] + counters[5] + counters[6]);
    long unit = 0;
    const int consumed = code_utf8_to_unicode_one(text.constData(), &unit);
    FUZZ_CHECK(consumed >= 0 && consumed <= 6 && (consumed > 0 || unit == 0));

    Units limited(static_cast<size_t>(limit) + 1);
    const int stored = code_utf8_to_unicode(text.constData(), limited.data(), limit);
    FUZZ_CHECK(stored >= 0 && stored <= limit + 1);

    std::vector<char> gbk(static_cast<size_t>(std::max(4 * n, 1)));
    const int gbkLength = code_utf8_to_gbk(text.constData(), gbk.data());
    FUZZ_CHECK(gbkLength >= 0 && gbkLength <= 4 * n);
}

void utf8MatchesIconv(const QByteArray& text) {
    Units expected;
    if (!iconvCodePoints(text, &expected) || hasWideTwoByteForm(text))
        return;
    const int n = text.size();
    Units units(static_cast<size_t>(n) + 2);
    const int count = code_utf8_to_unicode(text.constData(), units.data(), n + 1);
    FUZZ_CHECK(count == static_cast<int>(expected.size()) &&
               std::equal(expected.begin(), expected.end(), units.begin()) && units[count] == 0);
    // Back to UTF-8: the size leaves room for the terminator.
    std::vector<char> utf8(static_cast<size_t>(n) + 1 + 6);
    FUZZ_CHECK(code_unicode_to_utf8(units.data(), utf8.data(), n + 1) == n);
    FUZZ_CHECK(std::memcmp(utf8.data(), text.constData(), static_cast<size_t>(n) + 1) == 0);
}

void gbkFunctions(const QByteArray& bytes, const QByteArray& text, int outSize) {
    // The byte after the last one may be read: the copy's terminator.
    Units units(static_cast<size_t>(bytes.size()));
    const int count = code_gbk_to_unicode(bytes.constData(), units.data(), bytes.size());
    FUZZ_CHECK(count >= 0 && count <= bytes.size());

    const int n = text.size();
    std::vector<char> utf8(static_cast<size_t>(std::min(outSize + 3, 3 * n + 1)));
    const int written = code_gbk_to_utf8(text.constData(), utf8.data(), outSize);
    FUZZ_CHECK(written >= 0 && written <= std::min(outSize + 3, 3 * n));
}

// The input's bytes as 32-bit units.
void unitFunctions(const QByteArray& bytes, int outSize) {
    Units units(static_cast<size_t>(bytes.size()) / 4 + 1, 0);  // the last one stays zero
    std::memcpy(units.data(), bytes.constData(), static_cast<size_t>(bytes.size()) / 4 * 4);
    const int count = static_cast<int>(units.size()) - 1;

    std::vector<char> gbk(static_cast<size_t>(2 * count));
    FUZZ_CHECK(code_unicode_to_gbk(units.data(), gbk.data(), count) <= 2 * count);

    std::vector<char> utf8(static_cast<size_t>(outSize) + 6);
    const int written = code_unicode_to_utf8(units.data(), utf8.data(), outSize);
    FUZZ_CHECK(written >= 0 && written <= outSize + 6);

    if (count > 0) {
        const Units exactlyCount(units.begin(), units.end() - 1);
        std::vector<char> reversed(static_cast<size_t>(std::min(outSize + 3, 3 * count + 1)));
        const int length =
            code_unicode_to_utf8_reversebyte(exactlyCount.data(), count, reversed.data(), outSize);
        FUZZ_CHECK(length >= 0 && length <= std::min(outSize + 3, 3 * count));
    }
    char one[6];
    const long value = static_cast<long>(static_cast<std::int32_t>(units[0]));
    FUZZ_CHECK(code_unicode_to_utf8_one(value, one, 0) <= 6);
    ff_wtoupper(units[0]);
    ff_oem2uni(static_cast<unsigned short>(units[0]), static_cast<unsigned short>(units[0] >> 16));
    ff_uni2oem(units[0] & 0x1FFFF, static_cast<unsigned short>(units[0] >> 16));
}

// ZTUtil's conversions through Qt's codecs, UTF-8 carried one byte per character.
void utilMethods(const QByteArray& bytes, const QByteArray& text) {
    ZTUtil util;
    const int n = bytes.size();
    const QString fromGbk = util.Multi2Utf8(bytes);
    FUZZ_CHECK(fromGbk.size() <= 3 * n && fromGbk.toLatin1().size() == fromGbk.size());
    FUZZ_CHECK(util.Utf8toMulti(QString::fromLatin1(bytes)).size() <= 2 * n);
    const QString fromWide = util.Wide2Utf8(bytes);
    FUZZ_CHECK(fromWide.size() <= n + 3 && fromWide.toLatin1().size() == fromWide.size());

    const QString carried = QString::fromLatin1(text);
    const QByteArray wide = util.Utf8toWide(carried);
    FUZZ_CHECK(wide.size() % 4 == 0 && wide.size() <= 4 * text.size());
    Units expected;
    if (!iconvCodePoints(text, &expected))
        return;
    FUZZ_CHECK(wide.size() == static_cast<int>(expected.size() * sizeof(unsigned int)) &&
               std::memcmp(wide.constData(), expected.data(), static_cast<size_t>(wide.size())) == 0);
    FUZZ_CHECK(util.Wide2Utf8(wide) == carried);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::silenceLibraryOutput();
    if (size < 2 || size > fuzz::kMaxInput)
        return 0;
    // The first two bytes choose a unit limit and an output size; the rest is
    // the text. The copies are NUL-terminated.
    const int limit = 1 + data[0] % 64;
    const int outSize = 1 + data[1] % 64;
    const QByteArray bytes(reinterpret_cast<const char*>(data) + 2, static_cast<int>(size) - 2);
    const QByteArray text(bytes.constData());  // up to the first NUL
    utf8Functions(text, limit);
    utf8MatchesIconv(text);
    gbkFunctions(bytes, text, outSize);
    unitFunctions(bytes, outSize);
    utilMethods(bytes, text);
    return 0;
}
