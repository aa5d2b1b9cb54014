// The node engine: parsing, the length table, re-encoding and tree edits,
// and an edited certificate checked by OpenSSL's reading. Real certificates
// parsed and re-encoded byte for byte are the asn fuzz target's seeds.
#include <openssl/asn1.h>
#include <openssl/bn.h>
#include <openssl/x509.h>

#include "asn_test_support.h"

using namespace asn_test;

namespace {

TEST(AsnLength, EveryLengthFormAndItsLimits) {
    const std::pair<const char*, unsigned> cases[] = {  // 0: refused
        {"0400", 2}, {"047f", 0}, {"3080", 2}, {"0481", 0}, {"048105", 0}, {"04810101", 4},
        {"0482000102", 5}, {"048300000103", 6}, {"04840000000104", 7}, {"0485000000000105", 0},
        {"04ff", 0}, {"0484ffffffff", 0}, {"04", 0}};
    for (const auto& c : cases) {
        const QByteArray der = hex(c.first);
        EXPECT_EQ(ASNCalcBlockLength(octets(der), static_cast<unsigned>(der.size())), c.second) << c.first;
        EXPECT_EQ(parse(der) != nullptr, c.second != 0) << c.first;
    }
    EXPECT_EQ(ASNCalcBlockLength(nullptr, 10), 0u);
    EXPECT_EQ(ASNAddByData(nullptr, octets(hex("0400")), 0), nullptr);
    const unsigned boundaries[][2] = {{0, 1}, {127, 1}, {128, 2}, {255, 2}, {256, 3}, {65535, 3},
                                      {65536, 4}, {16777215, 4}, {16777216, 5}, {0xFFFFFFFF, 5}};
    for (const auto& b : boundaries)
        EXPECT_EQ(ASNCalcLengthBytes(b[0]), b[1]) << b[0];
}

TEST(AsnLength, UpdateWritesMinimalLengthFields) {
    const std::pair<int, const char*> cases[] = {{0, "00"}, {5, "05"}, {200, "81c8"}, {300, "82012c"},
                                                 {70000, "83011170"}, {16777216, "8401000000"}};
    for (const auto& c : cases) {
        Tree node(ASNAddSample(0x04, nullptr));
        const QByteArray data(c.first, '\x5a');
        ASSERT_EQ(ASNSetBlockData(node.get(), octets(data), static_cast<size_t>(data.size())), 1u);
        ASSERT_EQ(ASNUpdate(node.get()), 1u);
        const QByteArray field = hex(c.second);
        EXPECT_EQ(QByteArray(reinterpret_cast<char*>(node->lenBytes), node->lenByteCount), field);
        EXPECT_EQ(node->blockLength, 1u + static_cast<unsigned>(field.size() + c.first));
    }
}

TEST(AsnParse, ReencodingIsCanonicalAndBadChildrenEndTheList) {
    const std::pair<const char*, const char*> cases[] = {
        {"3000", "3000"}, {"3080020105", "3000"},  // indefinite reads as empty
        {"048105aabbccddee", "0405aabbccddee"}, {"30840000000602810105050000ff", "30050201050500"},
        {"0403010203ffff", "0403010203"},          // trailing octets
        {"300602010502050000", "3003020105"},      // a bad child ends the list quietly
        {"300c020101048500000000010203", "3003020101"}};
    for (const auto& c : cases)
        EXPECT_EQ(encode(parse(hex(c.first)).get()), hex(c.second)) << c.first;

    // Every constructed tag is descended into, primitive ones never.
    Tree tagged = parse(hex("a1050403300100"));
    ASSERT_EQ(childCount(tagged.get()), 1);
    EXPECT_EQ(tagged->firstChild->node->tag, 0x04);
    EXPECT_EQ(tagged->firstChild->node->dataLength, 3u);

    EXPECT_EQ(ASNGetDataLength(parse(hex("30050201050500")).get()), 1u);
    EXPECT_EQ(ASNGetDataLength(parse(hex("300b3006020201000400040101")).get()), 3u);
    EXPECT_EQ(ASNGetDataLength(nullptr), 0u);
}

TEST(AsnTree, BuildGetAndRemove) {
    EXPECT_EQ(ASNAddStruct(0x02, nullptr), nullptr);
    EXPECT_EQ(ASNAddSample(0x30, nullptr), nullptr);
    Tree root(ASNAddStruct(0x30, nullptr));
    stASN_BLOCK_HEADER* set = ASNAddStruct(0x31, root.get());
    EXPECT_EQ(set->parent, root.get());
    stASN_BLOCK_HEADER* integer = ASNAddSample(0x02, set);
    const unsigned char five = 5;
    EXPECT_EQ(ASNSetBlockData(integer, &five, 1), 1u);
    ASNAddSample(0x05, root.get());
    EXPECT_EQ(encode(root.get()), hex("300731030201050500"));
    // Primitive nodes take no children, constructed ones no content.
    EXPECT_EQ(ASNAppendChild(integer, set), 0u);
    EXPECT_EQ(ASNAddSample(0x02, integer), nullptr);
    EXPECT_EQ(ASNSetBlockData(set, &five, 1), 0u);
    EXPECT_EQ(ASNAppendChild(nullptr, integer), 0u);
    EXPECT_EQ(ASNSetBlockData(integer, nullptr, 4), 1u);
    EXPECT_EQ(integer->dataLength, 0u);

    Tree list = parse(hex("3009020101020102020103"));
    EXPECT_EQ(ASNGetChild(list.get(), 2)->data[0], 3);
    for (int index : {3, -1})
        EXPECT_EQ(ASNGetChild(list.get(), index), nullptr);
    EXPECT_EQ(ASNGetChild(ASNGetChild(list.get(), 0), 0), nullptr);
    EXPECT_EQ(ASNRemoveChild(list.get(), 3) + ASNRemoveChild(list.get(), -1), 0u);
    EXPECT_EQ(ASNRemoveChild(list.get(), 2), 1u);
    EXPECT_EQ(list->lastChild->node, ASNGetChild(list.get(), 1));
    EXPECT_EQ(list->lastChild->next, nullptr);
    EXPECT_EQ(ASNRemoveChild(list.get(), 0), 1u);
    EXPECT_EQ(list->firstChild, list->lastChild);
    EXPECT_EQ(ASNRemoveChild(list.get(), 0), 1u);
    EXPECT_EQ(list->lastChild, nullptr);
    EXPECT_EQ(ASNRemoveChild(list.get(), 0), 0u);
    ASNAddSample(0x05, list.get());  // appending after emptying works again
    EXPECT_EQ(encode(list.get()), hex("30020500"));
}

TEST(AsnBuild, NeverWritesOutsideTheBuffer) {
    Tree root = parse(hex("300602010502010600"));
    ASSERT_EQ(ASNUpdate(root.get()), 1u);
    QByteArray buffer(16, '\x77');
    auto* out = reinterpret_cast<unsigned char*>(buffer.data());
    EXPECT_EQ(ASNBuildData(root.get(), out, 7), 0u);
    EXPECT_EQ(buffer, QByteArray(16, '\x77')) << "one octet short writes nothing";
    EXPECT_EQ(ASNBuildData(nullptr, out, 16), 0u);

    // Content grown after the last update: the copy is cut at the buffer's end.
    const QByteArray grown(40, '\x11');
    ASNSetBlockData(ASNGetChild(root.get(), 1), octets(grown), static_cast<size_t>(grown.size()));
    EXPECT_EQ(ASNBuildData(root.get(), out, 8), 1u);
    EXPECT_EQ(buffer, hex("3006020105020111") + QByteArray(8, '\x77'));

    // A child updated on its own outgrew its stale parent: it is left out.
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
        Tree root = parse(nestedSequences(depth));
        ASSERT_NE(root, nullptr) << depth;
        EXPECT_EQ(encode(root.get()), nestedSequences(ZT_ASN_MAX_NESTING_DEPTH)) << depth;
    }
    // The engine's own walks hold no recursion: a far deeper hand-built tree
    // is updated, encoded, measured and freed.
    Tree root(ASNAddStruct(0x30, nullptr));
    stASN_BLOCK_HEADER* node = root.get();
    for (int i = 1; i < 300000; ++i)
        node = ASNAddStruct(0x30, node);
    const unsigned char octet = 1;
    ASNSetBlockData(ASNAddSample(0x04, node), &octet, 1);
    const QByteArray der = encode(root.get());
    EXPECT_EQ(ASNGetDataLength(root.get()), 1u);
    EXPECT_EQ(static_cast<unsigned>(der.size()), root->blockLength);
    EXPECT_EQ(der.right(5), hex("3003040101"));
}

TEST(AsnLimits, WideSequenceCostsLinearTime) {
    auto roundTrip = [](int count) {
        const QByteArray der = wideSequence(count);
        return bestSeconds([&] {
            Tree root = parse(der);
            EXPECT_EQ(childCount(root.get()), count);
            EXPECT_EQ(ASNGetChild(root.get(), count - 1)->data[0], (count - 1) & 0x7F);
            EXPECT_EQ(encode(root.get()), der);
        });
    };
    EXPECT_LT(roundTrip(100000) / roundTrip(10000), 40.0) << "tenfold input should cost about tenfold time";
}

// Serial number replaced and subject name grown past the short length form:
// after ASNUpdate the build is a certificate OpenSSL reads to its last octet.
TEST(AsnRoundTrip, EditedCertificateStaysValidDer) {
    Tree root = parse(fixture("asn_sm2_cert.der"));
    ASSERT_NE(root, nullptr);
    stASN_BLOCK_HEADER* tbs = ASNGetChild(root.get(), 0);
    const QByteArray serial = hex("00c0ffee0000000000000000000000000001"), name(300, 'N');
    ASNSetBlockData(ASNGetChild(tbs, 1), octets(serial), static_cast<size_t>(serial.size()));
    stASN_BLOCK_HEADER* commonName = ASNGetChild(ASNGetChild(ASNGetChild(ASNGetChild(tbs, 5), 2), 0), 1);
    ASSERT_EQ(commonName->tag, 0x13);
    ASNSetBlockData(commonName, octets(name), static_cast<size_t>(name.size()));

    const QByteArray edited = encode(root.get());
    const unsigned char* p = octets(edited);
    X509* certificate = d2i_X509(nullptr, &p, edited.size());
    ASSERT_NE(certificate, nullptr);
    EXPECT_EQ(p, octets(edited) + edited.size());
    BIGNUM* number = ASN1_INTEGER_to_BN(X509_get0_serialNumber(certificate), nullptr);
    char* text = BN_bn2hex(number);
    EXPECT_STREQ(text, "C0FFEE0000000000000000000000000001");
    char read[512] = {};
    X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, read, sizeof read);
    EXPECT_EQ(QByteArray(read), name);
    OPENSSL_free(text);
    BN_free(number);
    X509_free(certificate);
}

}  // namespace
