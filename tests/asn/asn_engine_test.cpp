// The node engine: parsing, the length table, re-encoding and tree edits.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>

#include "asn_test_support.h"
#include "support/qt_printers.h"

using namespace asn_test;

namespace {

TEST(AsnLength, EveryLengthFormAndItsLimits) {
    struct Case {
        const char* der;
        unsigned total;  // 0: refused
    } cases[] = {
        {"0400", 2},
        {"047f", 0},  // claims 127 octets, has none
        {"3080", 2},  // indefinite: empty content
        {"0481", 0},  // header cut short
        {"048105", 0},
        {"04810101", 4},
        {"0482000102", 5},
        {"048300000103", 6},
        {"04840000000104", 7},
        {"0485000000000105", 0},
        {"04ff", 0},
        {"0484ffffffff", 0},  // would wrap a 32-bit total
        {"04", 0},
    };
    for (const Case& c : cases) {
        const QByteArray der = hex(c.der);
        EXPECT_EQ(ASNCalcBlockLength(octets(der), static_cast<unsigned>(der.size())), c.total) << c.der;
        Tree node = parse(der);
        EXPECT_EQ(node != nullptr, c.total != 0) << c.der;
    }
    EXPECT_EQ(ASNCalcBlockLength(nullptr, 10), 0u);
    EXPECT_EQ(ASNAddByData(nullptr, octets(hex("0400")), 0), nullptr);

    const unsigned boundaries[][2] = {{0, 1}, {127, 1}, {128, 2}, {255, 2}, {256, 3},
                                      {65535, 3}, {65536, 4}, {16777215, 4}, {16777216, 5},
                                      {0xFFFFFFFF, 5}};
    for (const auto& b : boundaries)
        EXPECT_EQ(ASNCalcLengthBytes(b[0]), b[1]) << b[0];
}

TEST(AsnLength, UpdateWritesMinimalLengthFields) {
    struct Case {
        int contentLength;
        const char* lengthField;
    } cases[] = {{0, "00"}, {5, "05"}, {200, "81c8"}, {300, "82012c"}, {70000, "83011170"},
                 {16777216, "8401000000"}};
    for (const Case& c : cases) {
        Tree node(ASNAddSample(0x04, nullptr));
        const QByteArray content(c.contentLength, '\x5a');
        ASSERT_EQ(ASNSetBlockData(node.get(), octets(content), static_cast<size_t>(content.size())), 1u);
        ASSERT_EQ(ASNUpdate(node.get()), 1u);
        const QByteArray field = hex(c.lengthField);
        EXPECT_EQ(QByteArray(reinterpret_cast<char*>(node->lenBytes), node->lenByteCount), field);
        EXPECT_EQ(node->blockLength, 1u + static_cast<unsigned>(field.size() + c.contentLength));
    }
}

TEST(AsnParse, ReencodingIsCanonical) {
    EXPECT_EQ(encode(parse(hex("3000")).get()), hex("3000"));
    EXPECT_EQ(encode(parse(hex("3080020105")).get()), hex("3000")) << "indefinite reads as empty";
    EXPECT_EQ(encode(parse(hex("048105aabbccddee")).get()), hex("0405aabbccddee"));
    EXPECT_EQ(encode(parse(hex("30840000000602810105050000ff")).get()), hex("30050201050500"));
    EXPECT_EQ(encode(parse(hex("0403010203ffff")).get()), hex("0403010203")) << "trailing octets";
}

TEST(AsnParse, BadChildEndsTheListQuietly) {
    Tree node = parse(hex("300602010502050000"));
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(childCount(node.get()), 1);
    EXPECT_EQ(encode(node.get()), hex("3003020105"));

    Tree unsupported = parse(hex("300c020101048500000000010203"));
    ASSERT_NE(unsupported, nullptr);
    EXPECT_EQ(childCount(unsupported.get()), 1);

    // Every constructed tag is descended into, primitive ones never.
    Tree tagged = parse(hex("a1050403300100"));
    ASSERT_NE(tagged, nullptr);
    ASSERT_EQ(childCount(tagged.get()), 1);
    EXPECT_EQ(tagged->firstChild->node->tag, 0x04);
    EXPECT_EQ(tagged->firstChild->node->dataLength, 3u);
}

TEST(AsnParse, DataLengthCountsOnlyPrimitiveContent) {
    Tree node = parse(hex("30050201050500"));
    EXPECT_EQ(ASNGetDataLength(node.get()), 1u);
    Tree nested = parse(hex("300b3006020201000400040101"));
    EXPECT_EQ(ASNGetDataLength(nested.get()), 3u);
    EXPECT_EQ(ASNGetDataLength(parse(hex("3000")).get()), 0u);
    EXPECT_EQ(ASNGetDataLength(nullptr), 0u);
}

TEST(AsnTree, BuildingTopDown) {
    EXPECT_EQ(ASNAddStruct(0x02, nullptr), nullptr);
    EXPECT_EQ(ASNAddSample(0x30, nullptr), nullptr);
    Tree root(ASNAddStruct(0x30, nullptr));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->parent, nullptr);
    stASN_BLOCK_HEADER* set = ASNAddStruct(0x31, root.get());
    EXPECT_EQ(set->parent, root.get());
    stASN_BLOCK_HEADER* integer = ASNAddSample(0x02, set);
    const unsigned char five = 5;
    EXPECT_EQ(ASNSetBlockData(integer, &five, 1), 1u);
    ASNAddSample(0x05, root.get());
    EXPECT_EQ(encode(root.get()), hex("300731030201050500"));

    // Primitive nodes take neither children nor list pointers as content.
    EXPECT_EQ(ASNAppendChild(integer, set), 0u);
    EXPECT_EQ(ASNAddSample(0x02, integer), nullptr);
    EXPECT_EQ(ASNSetBlockData(set, &five, 1), 0u);
    EXPECT_EQ(ASNAppendChild(nullptr, integer), 0u);

    EXPECT_EQ(ASNSetBlockData(integer, nullptr, 4), 1u);
    EXPECT_EQ(integer->data, nullptr);
    EXPECT_EQ(integer->dataLength, 0u);
}

TEST(AsnTree, GetAndRemoveChildren) {
    Tree root = parse(hex("3009020101020102020103"));
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(ASNGetChild(root.get(), 2)->data[0], 3);
    EXPECT_EQ(ASNGetChild(root.get(), 3), nullptr);
    EXPECT_EQ(ASNGetChild(root.get(), -1), nullptr);
    EXPECT_EQ(ASNGetChild(ASNGetChild(root.get(), 0), 0), nullptr);

    EXPECT_EQ(ASNRemoveChild(root.get(), 3), 0u);
    EXPECT_EQ(ASNRemoveChild(root.get(), -1), 0u);
    EXPECT_EQ(ASNRemoveChild(root.get(), 2), 1u);
    EXPECT_EQ(root->lastChild->node, ASNGetChild(root.get(), 1));
    EXPECT_EQ(root->lastChild->next, nullptr);
    EXPECT_EQ(ASNRemoveChild(root.get(), 0), 1u);
    EXPECT_EQ(root->firstChild, root->lastChild);
    EXPECT_EQ(ASNRemoveChild(root.get(), 0), 1u);
    EXPECT_EQ(root->firstChild, nullptr);
    EXPECT_EQ(root->lastChild, nullptr);
    EXPECT_EQ(ASNRemoveChild(root.get(), 0), 0u);
    ASNAddSample(0x05, root.get());  // appending after emptying works again
    EXPECT_EQ(encode(root.get()), hex("30020500"));
}

TEST(AsnBuild, NeverWritesOutsideTheBuffer) {
    Tree root = parse(hex("300602010502010600"));
    ASSERT_EQ(ASNUpdate(root.get()), 1u);
    QByteArray buffer(16, '\x77');
    auto* out = reinterpret_cast<unsigned char*>(buffer.data());
    EXPECT_EQ(ASNBuildData(root.get(), out, 7), 0u);
    EXPECT_EQ(buffer, QByteArray(16, '\x77')) << "one octet short writes nothing";
    EXPECT_EQ(ASNBuildData(nullptr, out, 16), 0u);

    // Content grown after the last update: lengths are stale and the copy is
    // cut at the end of the buffer the caller gave.
    stASN_BLOCK_HEADER* second = ASNGetChild(root.get(), 1);
    const QByteArray grown(40, '\x11');
    ASNSetBlockData(second, octets(grown), static_cast<size_t>(grown.size()));
    EXPECT_EQ(ASNBuildData(root.get(), out, 8), 1u);
    EXPECT_EQ(buffer, hex("3006020105020111") + QByteArray(8, '\x77'));

    // A child updated on its own outgrew what its stale parent gives it: the
    // child is left out, its room keeps whatever the buffer held.
    Tree outgrown = parse(hex("3003020105"));
    ASNUpdate(outgrown.get());
    stASN_BLOCK_HEADER* integer = ASNGetChild(outgrown.get(), 0);
    ASNSetBlockData(integer, octets(hex("0a0b0c")), 3);
    ASNUpdate(integer);
    buffer.fill('\x77');
    EXPECT_EQ(ASNBuildData(outgrown.get(), out, 5), 1u);
    EXPECT_EQ(buffer.left(6), hex("300377777777"));

    // A fresh node has no lengths yet: nothing fits in no room.
    Tree fresh(ASNAddStruct(0x30, nullptr));
    ASNAddSample(0x04, fresh.get());
    EXPECT_EQ(ASNBuildData(fresh.get(), out, 0), 1u);
    EXPECT_EQ(buffer.right(8), QByteArray(8, '\x77'));
}

TEST(AsnLimits, NestingBeyondTheBoundIsCutQuietly) {
    for (int depth : {ZT_ASN_MAX_NESTING_DEPTH, ZT_ASN_MAX_NESTING_DEPTH + 1, 1000000}) {
        const QByteArray der = nestedSequences(depth);
        Tree root = parse(der);
        ASSERT_NE(root, nullptr) << depth;
        int levels = 1;
        for (stASN_BLOCK_HEADER* node = root.get(); node->firstChild != nullptr; ++levels)
            node = node->firstChild->node;
        EXPECT_EQ(levels, ZT_ASN_MAX_NESTING_DEPTH) << depth;
        const QByteArray canonical = encode(root.get());
        EXPECT_EQ(canonical, nestedSequences(ZT_ASN_MAX_NESTING_DEPTH)) << depth;
    }
}

// The engine's own walks hold no recursion: a tree built by hand far deeper
// than any parse is updated, encoded, measured and freed.
TEST(AsnLimits, HandBuiltDeepTreeNeedsNoStack) {
    const int depth = 300000;
    Tree root(ASNAddStruct(0x30, nullptr));
    stASN_BLOCK_HEADER* node = root.get();
    for (int i = 1; i < depth; ++i)
        node = ASNAddStruct(0x30, node);
    const unsigned char octet = 1;
    ASNSetBlockData(ASNAddSample(0x04, node), &octet, 1);
    const QByteArray der = encode(root.get());
    EXPECT_EQ(ASNGetDataLength(root.get()), 1u);
    EXPECT_EQ(static_cast<unsigned>(der.size()), root->blockLength);
    EXPECT_EQ(der.right(5), hex("3003040101"));
}

double secondsToParseAndEncode(const QByteArray& der) {
    double best = 1e9;
    for (int run = 0; run < 3; ++run) {
        const auto start = std::chrono::steady_clock::now();
        Tree root = parse(der);
        const QByteArray again = encode(root.get());
        EXPECT_EQ(again, der);
        root.reset();
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
        best = std::min(best, spent.count());
    }
    return best;
}

TEST(AsnLimits, WideSequenceCostsLinearTime) {
    const QByteArray small = wideSequence(10000);
    const QByteArray large = wideSequence(100000);
    Tree root = parse(large);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(childCount(root.get()), 100000);
    EXPECT_EQ(ASNGetChild(root.get(), 99999)->data[0], 99999 & 0x7F);
    const double ratio = secondsToParseAndEncode(large) / secondsToParseAndEncode(small);
    EXPECT_LT(ratio, 40.0) << "tenfold input should cost about tenfold time";
}

}  // namespace
