// Helpers shared by the ASN tests: hex literals, owned trees, generated DER.
#ifndef ZTUTIL_TESTS_ASN_TEST_SUPPORT_H
#define ZTUTIL_TESTS_ASN_TEST_SUPPORT_H

#include <QByteArray>
#include <QFile>
#include <QString>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "ztutil/asn.h"

namespace asn_test {

struct TreeDeleter {
    void operator()(stASN_BLOCK_HEADER* node) const { ASNDeleteBlock(node); }
};
using Tree = std::unique_ptr<stASN_BLOCK_HEADER, TreeDeleter>;

inline QByteArray hex(const char* text) {
    return QByteArray::fromHex(text);
}

inline const unsigned char* octets(const QByteArray& data) {
    return reinterpret_cast<const unsigned char*>(data.constData());
}

inline Tree parse(const QByteArray& der) {
    return Tree(ASNAddByData(nullptr, octets(der), static_cast<size_t>(der.size())));
}

// ASNUpdate then ASNBuildData into a buffer of exactly blockLength octets.
inline QByteArray encode(stASN_BLOCK_HEADER* node) {
    if (!ASNUpdate(node))
        return QByteArray("<update failed>");
    QByteArray out(static_cast<int>(ASNGetBlockLength(node)), '\0');
    if (!ASNBuildData(node, reinterpret_cast<unsigned char*>(out.data()),
                      static_cast<unsigned int>(out.size())))
        return QByteArray("<build failed>");
    return out;
}

inline int childCount(const stASN_BLOCK_HEADER* node) {
    int count = 0;
    for (const stASN_CHILD_LINK* link = node->firstChild; link != nullptr; link = link->next)
        ++count;
    return count;
}

// Minimal DER length field, written independently of the engine.
inline QByteArray derLength(qint64 length) {
    if (length < 0x80)
        return QByteArray(1, static_cast<char>(length));
    QByteArray digits;
    for (qint64 rest = length; rest != 0; rest >>= 8)
        digits.prepend(static_cast<char>(rest & 0xFF));
    return QByteArray(1, static_cast<char>(0x80 | digits.size())) + digits;
}

inline QByteArray tlv(unsigned char tag, const QByteArray& content) {
    return QByteArray(1, static_cast<char>(tag)) + derLength(content.size()) + content;
}

// `depth` SEQUENCEs nested in one another, the innermost empty.
inline QByteArray nestedSequences(int depth) {
    // Built from the inside out with the lengths computed up front, so a
    // million levels stay linear.
    QByteArray headers;
    std::vector<qint64> sizes(static_cast<size_t>(depth));
    qint64 inner = 0;
    for (int level = depth - 1; level >= 0; --level) {
        sizes[static_cast<size_t>(level)] = inner;
        inner += 1 + derLength(inner).size();
    }
    QByteArray out;
    out.reserve(static_cast<int>(inner));
    for (int level = 0; level < depth; ++level)
        out += '\x30' + derLength(sizes[static_cast<size_t>(level)]);
    return out;
}

// A SEQUENCE of `count` INTEGERs 02 01 xx.
inline QByteArray wideSequence(int count) {
    QByteArray content;
    content.reserve(count * 3);
    for (int i = 0; i < count; ++i)
        content += QByteArray("\x02\x01", 2) + static_cast<char>(i & 0x7F);
    return tlv(0x30, content);
}

inline QByteArray fixture(const char* name) {
    QFile file(QStringLiteral(ZTUTIL_TEST_DATA_DIR "/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Sets TZ (and runs tzset) for the lifetime of the object, then restores it.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* zone) {
        const char* old = std::getenv("TZ");
        hadValue_ = old != nullptr;
        saved_ = hadValue_ ? old : "";
        setenv("TZ", zone, 1);
        tzset();
    }
    ~ScopedTimeZone() {
        if (hadValue_)
            setenv("TZ", saved_.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

private:
    bool hadValue_;
    std::string saved_;
};

}  // namespace asn_test

#endif
