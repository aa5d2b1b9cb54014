// Arbitrary bytes through the ASN engine and the ZTAsn object model: parse,
// re-encode (which must be a fixed point), read every value, edit and free.
#include <QByteArray>
#include <QtGlobal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ztutil/asn.h"
#include "ztutil/ztasn.h"

namespace {

void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

QByteArray encode(stASN_BLOCK_HEADER* node) {
    check(ASNUpdate(node) == 1);
    QByteArray out(static_cast<int>(ASNGetBlockLength(node)), '\0');
    check(ASNBuildData(node, reinterpret_cast<unsigned char*>(out.data()),
                       static_cast<unsigned>(out.size())) == 1);
    return out;
}

stASN_BLOCK_HEADER* parse(const QByteArray& der) {
    return ASNAddByData(nullptr, reinterpret_cast<const unsigned char*>(der.constData()),
                        static_cast<size_t>(der.size()));
}

// Every value helper on every primitive node.
void readValues(stASN_BLOCK_HEADER* root) {
    std::vector<stASN_BLOCK_HEADER*> pending{root};
    while (!pending.empty()) {
        stASN_BLOCK_HEADER* node = pending.back();
        pending.pop_back();
        if ((node->tag & 0x20) != 0) {
            for (stASN_CHILD_LINK* link = node->firstChild; link != nullptr; link = link->next)
                pending.push_back(link->node);
            continue;
        }
        unsigned error = 0;
        ASNGetTime(node, &error);
        check(error <= 2);
        char name[100];
        unsigned capacity = sizeof name;
        ASNGetOIDName(node->data, static_cast<int>(node->dataLength), name, &capacity);
        stASN_BIT_STRING bits{};
        if (ASNGetBitStringData(node, &bits))
            std::free(bits.data);
    }
}

void readWrappers(ZTAsnBlock* block) {
    block->toString();
    block->toByteArray();
    block->toInt();
    block->print();
    block->printData();
    if (block->type() == 23 || block->type() == 24)
        block->toDateTime();
    for (int i = 0; i < block->getChildCount(); ++i)
        readWrappers(block->listChild.at(i));
}

void fuzzEngine(const QByteArray& input) {
    stASN_BLOCK_HEADER* root = parse(input);
    if (root == nullptr)
        return;
    const QByteArray canonical = encode(root);
    check(canonical.size() <= input.size());
    stASN_BLOCK_HEADER* again = parse(canonical);
    check(again != nullptr);
    check(encode(again) == canonical);
    check(ASNGetDataLength(again) == ASNGetDataLength(root));
    ASNDeleteBlock(again);
    readValues(root);
    if (ASNRemoveChild(root, 0))
        encode(root);
    ASNDeleteBlock(root);
}

void fuzzDocument(const QByteArray& input) {
    ZTAsn asn;
    if (!asn.open(input))
        return;
    readWrappers(&asn);
    const QByteArray canonical = asn.build();
    asn.addBlock(canonical);
    asn.update();
    asn.build();
    asn.remove(0);
    asn.close();
}

// The input as text for the text-driven helpers.
void fuzzText(const QByteArray& input) {
    const QByteArray text(input.constData(), qMin(input.size(), 200));  // a NUL-terminated copy
    unsigned char octets[256];
    unsigned capacity = sizeof octets;
    ASNGetOIDData(text.constData(), octets, &capacity);
    ZTAsnBlock block;
    block.convertDateTime(text);
    const char* cursor = text.constData();
    int error = 0;
    mypint(&cursor, 4, 0, 9999, &error);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    static const bool quiet = (qInstallMessageHandler(discardMessage), true);
    (void)quiet;
    if (size > (1u << 20))
        return 0;
    const QByteArray input = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    fuzzEngine(input);
    fuzzDocument(input);
    fuzzText(input);
    return 0;
}
