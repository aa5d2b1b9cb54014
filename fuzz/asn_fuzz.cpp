// Arbitrary bytes through the ASN engine and the ZTAsn object model.
//
// The first element of the input is the document; the bytes after it drive
// edits of the ZTAsn tree. Properties, with OpenSSL as the outside reader:
// - every encoding the library builds (engine or ZTAsn, before and after
//   edits) is exactly one whole DER element, and parsing it again gives the
//   same bytes;
// - DER input (within the nesting limit) comes back byte for byte;
// - ZTAsn::open builds what the engine builds;
// - OID content and text, and UTCTime / GeneralizedTime values, agree with
//   OpenSSL wherever both accept them (outside the documented quirks).
#include <fuzzer/FuzzedDataProvider.h>
#include <openssl/asn1.h>
#include <openssl/objects.h>

#include <QByteArray>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <vector>

#include "fuzz_support.h"
#include "ztutil/asn.h"
#include "ztutil/ztasn.h"

namespace {

using fuzz::octets;

QByteArray encode(stASN_BLOCK_HEADER* node) {
    FUZZ_CHECK(ASNUpdate(node) == 1);
    QByteArray out(static_cast<int>(ASNGetBlockLength(node)), '\0');
    FUZZ_CHECK(ASNBuildData(node, octets(out), static_cast<unsigned>(out.size())) == 1);
    return out;
}

stASN_BLOCK_HEADER* parse(const QByteArray& der) {
    return ASNAddByData(nullptr, octets(der), static_cast<size_t>(der.size()));
}

QByteArray reencoded(const QByteArray& der) {
    stASN_BLOCK_HEADER* root = parse(der);
    FUZZ_CHECK(root != nullptr);
    const QByteArray out = encode(root);
    ASNDeleteBlock(root);
    return out;
}

// --- OpenSSL as the reference for OIDs and times ---------------------------

void oidNameAgreesWithOpenSsl(const QByteArray& content) {
    char mine[100];
    unsigned capacity = sizeof mine;
    QByteArray theirs;
    if (ASNGetOIDName(octets(content), content.size(), mine, &capacity) && capacity < sizeof mine &&
        fuzz::comparableOidText(content, &theirs))
        FUZZ_CHECK(theirs == mine);
}

void oidTextAgreesWithOpenSsl(const QByteArray& text) {
    QByteArray theirs;
    if (!fuzz::comparableOidContent(text.constData(), &theirs))
        return;
    unsigned char mine[1024];
    unsigned capacity = sizeof mine;
    FUZZ_CHECK(ASNGetOIDData(text.constData(), mine, &capacity) == 1);
    FUZZ_CHECK(QByteArray(reinterpret_cast<const char*>(mine), static_cast<int>(capacity)) == theirs);
}

// ASNGetTime on a time node, compared with OpenSSL where both read the text
// and it carries its zone (without one the library reads local time).
void timeAgreesWithOpenSsl(stASN_BLOCK_HEADER* node) {
    unsigned error = 0;
    const long long mine = ASNGetTime(node, &error);
    FUZZ_CHECK(error <= 2);
    const QByteArray text(reinterpret_cast<const char*>(node->data), static_cast<int>(node->dataLength));
    long long theirs = 0;
    if (error != 0 || (!text.endsWith('Z') && !text.contains('+') && !text.contains('-')) ||
        !fuzz::openSslTimeSeconds(node->tag, text, &theirs))
        return;
    FUZZ_CHECK(mine == theirs);
}

// convertDateTime reads YYMMDDhhmmssZ (years below 60 in 20xx) or
// YYYYMMDDhhmmssZ at UTC-8. Where OpenSSL reads the same digits (its pivot
// is 50, so years 50-59 are left out) the instant is 8 hours later.
void convertDateTimeAgreesWithOpenSsl(const QByteArray& text) {
    ZTAsnBlock block;
    const QDateTime converted = block.convertDateTime(text);
    const bool utc = text.size() == 13, generalized = text.size() == 15;
    if (!(utc || generalized) || !text.endsWith('Z') || (utc && text.startsWith('5')))
        return;
    long long theirs = 0;
    if (!fuzz::openSslTimeSeconds(utc ? fuzz::kUtcTime : fuzz::kGeneralizedTime, text, &theirs))
        return;
    FUZZ_CHECK(converted.isValid());
    FUZZ_CHECK(converted.toSecsSinceEpoch() == theirs + 8 * 3600);
}

// --- The engine ------------------------------------------------------------

// Value helpers on every primitive node.
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
        const QByteArray content(reinterpret_cast<const char*>(node->data), static_cast<int>(node->dataLength));
        if (node->tag == fuzz::kUtcTime || node->tag == fuzz::kGeneralizedTime)
            timeAgreesWithOpenSsl(node);
        if (node->tag == fuzz::kOid && content.size() > 1)
            oidNameAgreesWithOpenSsl(content);
        stASN_BIT_STRING bits{};
        if (ASNGetBitStringData(node, &bits)) {
            FUZZ_CHECK(node->tag == fuzz::kBitString && bits.length + 1 == node->dataLength);
            FUZZ_CHECK(bits.length == 0 || std::memcmp(bits.data, node->data + 1, bits.length) == 0);
            std::free(bits.data);
        }
    }
}

// Parses the first element, returns its canonical encoding (empty when it
// does not parse) and checks the engine's properties on the way.
QByteArray engineRoundTrip(const QByteArray& input) {
    stASN_BLOCK_HEADER* root = parse(input);
    if (root == nullptr)
        return QByteArray();
    const QByteArray canonical = encode(root);
    FUZZ_CHECK(fuzz::isOneWholeElement(canonical));
    FUZZ_CHECK(canonical.size() <= input.size());
    FUZZ_CHECK(reencoded(canonical) == canonical);
    const fuzz::DerReading reading = fuzz::readDer(octets(input), input.size(), true);
    if (reading.shape == fuzz::DerReading::kWhole && reading.depth <= ZT_ASN_MAX_NESTING_DEPTH)
        FUZZ_CHECK(canonical == input.left(static_cast<int>(reading.length)));

    readValues(root);
    if (ASNRemoveChild(root, 0))
        FUZZ_CHECK(fuzz::isOneWholeElement(encode(root)));
    ASNDeleteBlock(root);
    return canonical;
}

// --- The ZTAsn object model --------------------------------------------------

// Whether the block's wrappers stand for its node's children one to one.
// addBlock (a second wrapper of the block's own node) and a refused
// addSample (a wrapper without a node) end that, by contract.
bool mirrorsChildren(ZTAsnBlock* block) {
    for (int i = 0; i < block->listChild.size(); ++i) {
        if (block->listChild.at(i)->node == nullptr ||
            block->listChild.at(i)->node != ASNGetChild(block->node, i))
            return false;
    }
    return ASNGetChild(block->node, block->listChild.size()) == nullptr;
}

// The blocks reachable through mirroring wrappers only.
std::vector<ZTAsnBlock*> mirroredBlocks(ZTAsnBlock* root) {
    std::vector<ZTAsnBlock*> blocks, pending{root};
    while (!pending.empty()) {
        ZTAsnBlock* block = pending.back();
        pending.pop_back();
        blocks.push_back(block);
        for (int i = 0; i < block->listChild.size(); ++i) {
            ZTAsnBlock* child = block->listChild.at(i);
            if (child->node != nullptr && child->node == ASNGetChild(block->node, i))
                pending.push_back(child);
        }
    }
    return blocks;
}

// Every value reader on every mirrored block.
void readBlocks(ZTAsn* document) {
    for (ZTAsnBlock* block : mirroredBlocks(document)) {
        FUZZ_CHECK(block->type() == block->node->tag);
        block->toString();
        block->toByteArray();
        block->toInt();
        block->print();
        block->printData();
        if (block->type() == fuzz::kUtcTime || block->type() == fuzz::kGeneralizedTime)
            block->toDateTime();
    }
}

void applyEdit(FuzzedDataProvider* edits, ZTAsn* document) {
    const std::vector<ZTAsnBlock*> blocks = mirroredBlocks(document);
    ZTAsnBlock* block = blocks.at(edits->ConsumeIntegralInRange<size_t>(0, blocks.size() - 1));
    const int tag = edits->ConsumeIntegral<uint8_t>();
    switch (edits->ConsumeIntegralInRange(0, 4)) {
    case 0:
        if (ZTAsnBlock* child = block->addSample(tag))
            child->setData(QByteArray::fromStdString(edits->ConsumeRandomLengthString(64)));
        break;
    case 1:
        block->addStruct(tag);
        break;
    case 2:
        block->setData(QByteArray::fromStdString(edits->ConsumeRandomLengthString(64)));
        break;
    case 3:
        block->addBlock(QByteArray::fromStdString(edits->ConsumeRandomLengthString(256)));
        break;
    default:
        if (mirrorsChildren(block) && block->getChildCount() > 0)
            FUZZ_CHECK(block->remove(tag % block->getChildCount()));
        break;
    }
}

void documentRoundTrip(const QByteArray& input, const QByteArray& canonical) {
    ZTAsn document;
    FUZZ_CHECK(document.open(input) == !canonical.isEmpty());
    if (canonical.isEmpty())
        return;
    FUZZ_CHECK(document.build() == canonical);
    readBlocks(&document);

    const unsigned first = ASNCalcBlockLength(octets(input), static_cast<unsigned>(input.size()));
    FuzzedDataProvider edits(octets(input) + first, input.size() - first);
    for (int i = 0; i < 16 && edits.remaining_bytes() > 0; ++i)
        applyEdit(&edits, &document);
    document.update();
    const QByteArray edited = document.build();
    FUZZ_CHECK(fuzz::isOneWholeElement(edited));
    ZTAsn again;
    FUZZ_CHECK(again.open(edited));
    FUZZ_CHECK(again.build() == edited);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::silenceLibraryOutput();
    if (size > fuzz::kMaxInput)
        return 0;
    const QByteArray input = fuzz::view(data, size);
    documentRoundTrip(input, engineRoundTrip(input));
    // The first bytes also as text for the text-driven helpers (a NUL-terminated copy).
    const QByteArray text(input.constData(), qMin(input.size(), 64));
    oidTextAgreesWithOpenSsl(text);
    convertDateTimeAgreesWithOpenSsl(text);
    return 0;
}
