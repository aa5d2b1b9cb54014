// Helpers shared by the ASN tests: owned trees, generated DER, time zones.
#ifndef ZTUTIL_TESTS_ASN_TEST_SUPPORT_H
#define ZTUTIL_TESTS_ASN_TEST_SUPPORT_H

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <memory>

#include "support/common.h"
#include "ztutil/asn.h"

namespace asn_test {

using namespace ztutil_test;

struct TreeDeleter {
    void operator()(stASN_BLOCK_HEADER* node) const { ASNDeleteBlock(node); }
};
using Tree = std::unique_ptr<stASN_BLOCK_HEADER, TreeDeleter>;

inline Tree parse(const QByteArray& der) {
    return Tree(ASNAddByData(nullptr, octets(der), static_cast<size_t>(der.size())));
}

// ASNUpdate then ASNBuildData into a buffer of exactly blockLength octets.
inline QByteArray encode(stASN_BLOCK_HEADER* node) {
    if (!ASNUpdate(node))
        return QByteArray("<update failed>");
    QByteArray out(static_cast<int>(ASNGetBlockLength(node)), '\0');
    if (!ASNBuildData(node, reinterpret_cast<unsigned char*>(out.data()), static_cast<unsigned>(out.size())))
        return QByteArray("<build failed>");
    return out;
}

inline QByteArray content(const stASN_BLOCK_HEADER* node) {
    return QByteArray(reinterpret_cast<const char*>(node->data), int(node->dataLength));
}

inline int childCount(const stASN_BLOCK_HEADER* node) {
    int count = 0;
    for (const stASN_CHILD_LINK* link = node->firstChild; link != nullptr; link = link->next)
        ++count;
    return count;
}

// `depth` SEQUENCEs nested in one another, the innermost empty; the lengths
// are computed up front so a million levels stay linear.
inline QByteArray nestedSequences(int depth) {
    std::vector<qint64> sizes(static_cast<size_t>(depth));
    qint64 inner = 0;
    for (int level = depth - 1; level >= 0; --level) {
        sizes[static_cast<size_t>(level)] = inner;
        inner += 1 + derLength(inner).size();
    }
    QByteArray out;
    out.reserve(static_cast<int>(inner));
    for (qint64 size : sizes)
        out += '\x30' + derLength(size);
    return out;
}

// A SEQUENCE of `count` INTEGERs 02 01 xx.
inline QByteArray wideSequence(int count) {
    QByteArray items;
    for (int i = 0; i < count; ++i)
        items += QByteArray("\x02\x01", 2) + static_cast<char>(i & 0x7F);
    return tlv(0x30, items);
}

// Best of three runs of `work`, in seconds.
template <typename Work>
double bestSeconds(Work work) {
    double best = 1e9;
    for (int run = 0; run < 3; ++run) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

// Sets TZ for the lifetime of the object, then restores it.
struct ScopedTimeZone {
    const bool hadValue = std::getenv("TZ") != nullptr;
    const std::string saved = hadValue ? std::getenv("TZ") : "";
    explicit ScopedTimeZone(const char* zone) { setenv("TZ", zone, 1), tzset(); }
    ~ScopedTimeZone() { hadValue ? setenv("TZ", saved.c_str(), 1) : unsetenv("TZ"), tzset(); }
};

}  // namespace asn_test

#endif
