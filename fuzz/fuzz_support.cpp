#include "fuzz_support.h"

#include "ztutil/asn.h"

#include <fcntl.h>
#include <openssl/asn1.h>
#include <openssl/objects.h>
#include <unistd.h>

#include <QtGlobal>
#include <cstdio>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

namespace fuzz {

namespace {

void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

}  // namespace

void silenceLibraryOutput() {
    static const bool silenced = [] {
        std::fflush(stdout);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        close(null);
        qInstallMessageHandler(discardMessage);
        return true;
    }();
    (void)silenced;
}

void fail(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "\nproperty failed: %s\n  at %s:%d\n", condition, file, line);
    std::abort();
}

DerReading readDer(const unsigned char* der, std::size_t size, bool trailingAllowed) {
    const DerReading broken{DerReading::kBroken, 0, 0};
    if (size == 0)
        return broken;
    // Content ranges still to walk, each with its nesting level; the first
    // range is the input, where only one element is read.
    struct Range {
        const unsigned char* cursor;
        const unsigned char* end;
        int level;
    };
    std::vector<Range> pending{{der, der + size, 0}};
    long firstLength = 0;
    int depth = 0;
    bool first = true;
    while (!pending.empty()) {
        Range range = pending.back();
        pending.pop_back();
        while (range.cursor < range.end) {
            if ((*range.cursor & 0x1F) == 0x1F)
                return DerReading{DerReading::kUncheckable, 0, 0};
            const unsigned char* content = range.cursor;
            long length = 0;
            int tag = 0, tagClass = 0;
            const int result = ASN1_get_object(&content, &length, &tag, &tagClass,
                                               range.end - range.cursor);
            if ((result & 0x80) != 0 || result == (V_ASN1_CONSTRUCTED | 1))
                return broken;  // too long, bad header, or indefinite length
            const bool constructed = (result & V_ASN1_CONSTRUCTED) != 0;
            const long whole = (content - range.cursor) + length;
            if (ASN1_object_size(constructed ? 1 : 0, length, tag) != whole)
                return broken;  // a length field longer than needed
            const int level = range.level + 1;
            depth = level > depth ? level : depth;
            if (constructed)
                pending.push_back({content, content + length, level});
            range.cursor = content + length;
            if (first) {
                first = false;
                firstLength = whole;
                if (range.cursor != range.end && !trailingAllowed)
                    return broken;
                break;
            }
        }
    }
    return DerReading{DerReading::kWhole, firstLength, depth};
}

QByteArray derElement(unsigned char identifier, const QByteArray& content) {
    const int constructed = (identifier & 0x20) != 0 ? 1 : 0;
    const int tag = identifier & 0x1F;
    const int size = ASN1_object_size(constructed, content.size(), tag);
    QByteArray out(size, '\0');
    unsigned char* cursor = octets(out);
    ASN1_put_object(&cursor, constructed, content.size(), tag, identifier & 0xC0);
    std::copy(content.begin(), content.end(), cursor);
    return out;
}

QByteArray canonicalElement(const QByteArray& der) {
    stASN_BLOCK_HEADER* root = ASNAddByData(nullptr, octets(der), static_cast<size_t>(der.size()));
    if (root == nullptr)
        return QByteArray();
    ASNUpdate(root);
    QByteArray out(static_cast<int>(ASNGetBlockLength(root)), '\0');
    const bool built = ASNBuildData(root, octets(out), static_cast<unsigned>(out.size())) == 1;
    ASNDeleteBlock(root);
    if (!built)
        fail("ASNBuildData of an updated tree", __FILE__, __LINE__);
    return out;
}

bool comparableOidText(const QByteArray& content, QByteArray* text) {
    if (content.size() < 2)
        return false;
    const unsigned char first = static_cast<unsigned char>(content.at(0));
    if (first >= 120 || first % 40 >= 10)
        return false;
    const QByteArray der = derElement(kOid, content);
    const unsigned char* cursor = octets(der);
    std::unique_ptr<ASN1_OBJECT, decltype(&ASN1_OBJECT_free)> object(
        d2i_ASN1_OBJECT(nullptr, &cursor, der.size()), ASN1_OBJECT_free);
    if (!object)
        return false;
    char dotted[512];
    const int length = OBJ_obj2txt(dotted, sizeof dotted, object.get(), 1);
    if (length <= 0 || length >= static_cast<int>(sizeof dotted))
        return false;
    for (const char* arc = dotted; arc != nullptr; arc = std::strchr(arc + 1, '.')) {
        if (std::strtoull(*arc == '.' ? arc + 1 : arc, nullptr, 10) > 0x7FFFFFFFull)
            return false;
    }
    *text = QByteArray(dotted, length);
    return true;
}

bool comparableOidContent(const char* text, QByteArray* content) {
    std::vector<unsigned long long> arcs;
    for (const char* cursor = text;;) {
        const char* end = cursor;
        while (*end >= '0' && *end <= '9')
            ++end;
        if (end == cursor || end - cursor > 10)
            return false;
        arcs.push_back(std::strtoull(cursor, nullptr, 10));
        if (*end == '\0')
            break;
        if (*end != '.')
            return false;
        cursor = end + 1;
    }
    if (arcs.size() < 2 || arcs[0] > 2 || arcs[0] * 40 + arcs[1] >= 128)
        return false;
    for (size_t i = 2; i < arcs.size(); ++i) {
        if (arcs[i] == 0 || arcs[i] > 0xFFFFFFFFull)
            return false;
    }
    unsigned char encoded[1024];
    const int length = a2d_ASN1_OBJECT(encoded, sizeof encoded, text, -1);
    if (length <= 0)
        return false;
    *content = QByteArray(reinterpret_cast<const char*>(encoded), length);
    return true;
}

bool openSslTimeSeconds(unsigned char identifier, const QByteArray& text, long long* seconds) {
    std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> time(
        ASN1_STRING_type_new(identifier == kUtcTime ? V_ASN1_UTCTIME : V_ASN1_GENERALIZEDTIME),
        ASN1_TIME_free);
    if (!time || !ASN1_STRING_set(time.get(), text.constData(), text.size()))
        return false;
    std::tm parts{};
    if (!ASN1_TIME_to_tm(time.get(), &parts))
        return false;
    *seconds = static_cast<long long>(timegm(&parts));
    return true;
}

}  // namespace fuzz
