// The ZTAsn / ZTAsnBlock object model as a host uses it.
#include "asn_test_support.h"
#include "ztutil/ztasn.h"

using namespace asn_test;

namespace {

TEST(ZTAsnDocument, CreateOpenAndClose) {
    ZTAsn asn;
    EXPECT_TRUE(asn.create());
    EXPECT_EQ(asn.type(), 0x30);
    EXPECT_TRUE(asn.create(0xA0));
    EXPECT_EQ(asn.type(), 0x30) << "only the constructed bit of the tag counts";
    asn.close();
    EXPECT_FALSE(asn.create(2));
    EXPECT_EQ(asn.node, nullptr);

    DebugCapture debug;
    EXPECT_FALSE(asn.open(QByteArray()));
    EXPECT_FALSE(asn.open(hex("0485")));
    const QByteArray certificate = fixture("asn_sm2_cert.der");
    ASSERT_TRUE(asn.open(certificate));
    EXPECT_EQ(debug.lines(), QStringList({"[ZTAsn::open]...", "[ZTAsn::open]...", "[ZTAsn::open]..."}));
    EXPECT_EQ(asn.getChildCount(), 3);
    EXPECT_EQ(asn.build(), certificate);

    // A second open appends after the first tree, whose wrappers stay valid
    // until close (the sanitizer build checks close frees every tree).
    ZTAsnBlock* firstTbs = asn.getChild(0, 0x30);
    ASSERT_TRUE(asn.open(hex("3003020105")));
    EXPECT_EQ(asn.getChildCount(), 4);
    EXPECT_EQ(asn.getChild(0, 0), firstTbs);
    EXPECT_TRUE(certificate.contains(firstTbs->build()));
    EXPECT_EQ(asn.getChild(3, 2)->toInt(), 5);
    asn.close();
    EXPECT_EQ(asn.node, nullptr);
    EXPECT_EQ(asn.getChildCount(), 0);
}

TEST(ZTAsnBlock, GetChildAndItsThreeMessages) {
    ZTAsn asn;
    ASSERT_TRUE(asn.open(hex("30050201050500")));
    EXPECT_EQ(asn.getChild(1)->type(), 5);
    EXPECT_EQ(asn.getChild(0, 2)->type(), 2);
    StdoutCapture out;
    EXPECT_EQ(asn.getChild(5), nullptr);
    EXPECT_EQ(asn.getChild(-1), nullptr);
    EXPECT_EQ(asn.getChild(0, 0x30), nullptr);
    asn.listChild.append(nullptr);
    EXPECT_EQ(asn.getChild(2), nullptr);
    asn.listChild.removeLast();
    EXPECT_EQ(ZTAsn().getChild(0), nullptr);
    const std::string range = "(!node || index < 0 || index >= listChild.count()) fail\n";
    EXPECT_EQ(out.text(), range + range + "!block->checkTag(checkType) fail \n"
                                          "ZTAsnBlock* block = listChild.at(index); fail\n" + range);
}

TEST(ZTAsnBlock, BuildingThroughTheWrappers) {
    ZTAsn asn;
    ASSERT_TRUE(asn.create());
    ZTAsnBlock* set = asn.addStruct(0x31);
    EXPECT_EQ(asn.addStruct(0x02), nullptr);
    ZTAsnBlock* integer = set->addSample(0x02);
    EXPECT_EQ(integer->addSample(0x02), nullptr) << "primitive blocks take no children";
    ZTAsnBlock* refused = asn.addSample(0x30);
    ASSERT_NE(refused, nullptr) << "appended although the tag was refused";
    EXPECT_EQ(refused->node, nullptr);
    EXPECT_TRUE(asn.remove(1));
    EXPECT_FALSE(asn.remove(1));

    // INTEGER gets a 00 only above 0x80, BIT STRING always its unused-bits octet.
    const std::tuple<int, const char*, const char*> cases[] = {
        {0x02, "80", "80"}, {0x02, "81", "0081"}, {0x02, "7f", "7f"},
        {0x03, "ab", "00ab"}, {0x04, "ab", "ab"}, {0x06, "", ""}};
    for (const auto& c : cases) {
        ZTAsnBlock* leaf = asn.addSample(std::get<0>(c));
        EXPECT_TRUE(leaf->setData(hex(std::get<1>(c))));
        EXPECT_EQ(content(leaf->node), hex(std::get<2>(c))) << std::get<0>(c) << " " << std::get<1>(c);
    }
    ZTAsnBlock* oid = asn.addSample(0x06);
    EXPECT_TRUE(oid->setData("1.2.156.10197.1.301"));
    EXPECT_EQ(oid->toByteArray(), hex("2a811ccf5501822d"));
    EXPECT_EQ(oid->toString(), QStringLiteral("1.2.156.10197.1.301"));
    EXPECT_TRUE(oid->setData(QByteArray::fromRawData("1.2.3", 5)));
    EXPECT_EQ(oid->toByteArray(), hex("2a03")) << "text read within the array";
    EXPECT_TRUE(oid->setData("abc"));
    EXPECT_EQ(oid->toByteArray(), QByteArray("abc"));
    EXPECT_FALSE(set->setData("x")) << "constructed blocks hold no content";

    EXPECT_TRUE(asn.build().isEmpty()) << "never updated: no length yet";
    asn.update();
    const QByteArray built = asn.build();
    EXPECT_EQ(built, hex("301c31020200020180020200810201" "7f030200ab0401ab06000603616263"));
    // Stale lengths: the grown INTEGER's extra octet is written over by the next node.
    integer->setData(hex("01"));
    EXPECT_EQ(asn.build(), built);
    asn.update();
    EXPECT_EQ(asn.build().left(8), hex("301d310302010102"));
}

TEST(ZTAsnBlock, ValueConversions) {
    ZTAsn asn;
    ASSERT_TRUE(asn.create());
    const std::pair<const char*, int> ints[] = {{"05", 5}, {"ff", 255}, {"0100", 1}, {"010000", 0},
                                                {"ffffffff", -1}, {"78563412", 0x12345678}, {"", 0}};
    for (const auto& c : ints) {
        ZTAsnBlock* block = asn.addSample(0x02);
        ASNSetBlockData(block->node, octets(hex(c.first)), static_cast<size_t>(hex(c.first).size()));
        EXPECT_EQ(block->toInt(), c.second) << c.first;
    }
    ZTAsnBlock* notInteger = asn.addSample(0x04);
    notInteger->setData(hex("05"));
    EXPECT_EQ(notInteger->toInt(), 0);
    EXPECT_EQ(notInteger->toString(), QStringLiteral("\x05"));
    EXPECT_EQ(asn.toString(), QString()) << "constructed";
    EXPECT_EQ(asn.toByteArray(), QByteArray());
    ZTAsnBlock* bits = asn.addSample(0x03);
    bits->setData("AB");
    EXPECT_EQ(bits->toString(), QStringLiteral("AB"));

    // A BMPString comes out as UTF-8 bytes; the text is those bytes as Latin-1.
    ZTAsn certificate;
    ASSERT_TRUE(certificate.open(fixture("asn_sm2_cert.der")));
    ZTAsnBlock* organisation = certificate.getChild(0)->getChild(5)->getChild(1)->getChild(0)->getChild(1, 30);
    ASSERT_NE(organisation, nullptr);
    const QByteArray utf8 = QStringLiteral("电子印章测试单位").toUtf8();
    EXPECT_EQ(organisation->toByteArray(), utf8);
    EXPECT_EQ(organisation->toString(), QString::fromLatin1(utf8));
    ZTAsnBlock* bmp = asn.addSample(30);
    bmp->setData(QByteArray("\x00" "A" "\x00\x00" "\x00" "B", 6));
    EXPECT_EQ(bmp->toByteArray(), QByteArray("A")) << "a U+0000 code ends the text";
    bmp->setData(QByteArray());
    EXPECT_EQ(bmp->toString(), QString());
}

TEST(ZTAsnBlock, DateTimes) {
    // convertDateTime: UTC plus 8 hours, two-digit years pivoting at 60.
    ZTAsnBlock block;
    const std::pair<const char*, QDateTime> converted[] = {
        {"121231120000Z", QDateTime(QDate(2012, 12, 31), QTime(20, 0), Qt::UTC)},
        {"591231120000Z", QDateTime(QDate(2059, 12, 31), QTime(20, 0), Qt::UTC)},
        {"601231120000Z", QDateTime(QDate(1960, 12, 31), QTime(20, 0), Qt::UTC)},
        {"20501231200000Z", QDateTime(QDate(2051, 1, 1), QTime(4, 0), Qt::UTC)}};
    for (const auto& c : converted) {
        EXPECT_EQ(block.convertDateTime(c.first), c.second) << c.first;
        EXPECT_EQ(block.convertDateTime(c.first).timeSpec(), Qt::UTC);
    }
    EXPECT_FALSE(block.convertDateTime("121231120000").isValid());
    EXPECT_FALSE(block.convertDateTime("121331120000Z").isValid());

    // toDateTime: local time, UTCTime's hour moved by the zone offset.
    ZTAsn asn;
    ASSERT_TRUE(asn.create());
    ZTAsnBlock* utcTime = asn.addSample(23);
    ZTAsnBlock* generalized = asn.addSample(24);
    generalized->setData("20121231235958Z");
    auto local = [&](const char* zone, const char* text) {
        ScopedTimeZone scoped(zone);
        utcTime->setData(text);
        return utcTime->toDateTime();
    };
    {
        DebugCapture debug;
        EXPECT_EQ(local("CST-8", "121231120000Z"), QDateTime(QDate(2012, 12, 31), QTime(20, 0), Qt::LocalTime));
        EXPECT_EQ(debug.lines(), QStringList({"[ZTAsn::operator QDateTime]...", "text: 121231120000Z"}));
    }
    EXPECT_EQ(local("CST-8", "121231200000Z"), QDateTime(QDate(2013, 1, 1), QTime(4, 0), Qt::LocalTime));
    EXPECT_EQ(local("CST-8", "1212312000Z"), QDateTime(QDate(2012, 12, 31), QTime(20, 0), Qt::LocalTime))
        << "other lengths keep the hour";
    EXPECT_EQ(local("UTC0", "991231235959Z"), QDateTime(QDate(1999, 12, 31), QTime(23, 59, 59), Qt::LocalTime));
    EXPECT_EQ(local("UTC0", "550101000000Z"), QDateTime(QDate(2055, 1, 1), QTime(0, 0), Qt::LocalTime));
    EXPECT_FALSE(local("EST5", "121231020000Z").isValid()) << "west of UTC the hour goes below zero";
    ScopedTimeZone zone("CST-8");
    EXPECT_EQ(generalized->toDateTime(), QDateTime(QDate(2012, 12, 31), QTime(23, 59, 58), Qt::LocalTime));
    EXPECT_FALSE(asn.addSample(4)->toDateTime().isValid());
}

TEST(ZTAsnBlock, PrintAndDump) {
    ZTAsn asn;
    ASSERT_TRUE(asn.open(hex("301c020105050017033132330c0461006263a1003100a002040003020001")));
    EXPECT_EQ(asn.getChild(0)->printData(), QStringLiteral(" { 05 }"));
    EXPECT_EQ(asn.getChild(0)->print(), QStringLiteral("INTEGER       length =7"));
    EXPECT_EQ(asn.getChild(2)->printData(), QStringLiteral(" { 123 }"));
    EXPECT_EQ(asn.getChild(3)->printData(), QStringLiteral(" { a }")) << "up to the first zero octet";
    EXPECT_EQ(asn.getChild(6)->getChild(0)->printData(), QStringLiteral(" { }"));
    EXPECT_EQ(asn.getChild(7)->printData(), QStringLiteral(" { 00 01 }"));
    EXPECT_EQ(ZTAsnBlock().print(), QStringLiteral("None"));
    StdoutCapture out;
    asn.dump();
    asn.getChild(0)->dump(2);
    EXPECT_EQ(out.text(), "\nSEQUENCE\n    INTEGER       length =7\n    NULL\n    UTC TIME       length =8"
                          "\n    UTF8 STRING       length =6\n    UNKNOWN\n    SET\n    CONTEXT SPECIFIC"
                          "\n        OCTET STRING       length =4\n    BIT STRING       length =10"
                          "\n        INTEGER       length =7");
}

TEST(ZTAsnBlock, AddBlockWrapsTheParentAgain) {
    ZTAsn asn;
    ASSERT_TRUE(asn.open(hex("3003020105")));
    EXPECT_TRUE(asn.addBlock(hex("0500")));
    ASSERT_EQ(asn.getChildCount(), 2);
    ZTAsnBlock* added = asn.getChild(1);
    EXPECT_EQ(added->node, asn.node) << "a second wrapper of this node";
    EXPECT_EQ(added->getChildCount(), 2);
    EXPECT_EQ(added->getChild(1)->type(), 5);
    asn.update();
    EXPECT_EQ(asn.build(), hex("30050201050500"));
    EXPECT_FALSE(asn.addBlock(hex("0485")));
    EXPECT_EQ(asn.getChildCount(), 2);
    EXPECT_FALSE(asn.getChild(0)->addBlock(hex("0500"))) << "primitive blocks take no children";
}

TEST(ZTAsnLimits, DeepAndWideDocuments) {
    ZTAsn deep;
    ASSERT_TRUE(deep.open(nestedSequences(1000000)));
    int levels = 1;
    for (ZTAsnBlock* block = &deep; block->getChildCount() != 0; block = block->listChild.first())
        ++levels;
    EXPECT_EQ(levels, ZT_ASN_MAX_NESTING_DEPTH);
    StdoutCapture out;
    deep.dump();
    const std::string lines = out.text();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), ZT_ASN_MAX_NESTING_DEPTH);

    auto openAndClose = [](int children) {
        const QByteArray der = wideSequence(children);
        return bestSeconds([&] {
            ZTAsn asn;
            EXPECT_TRUE(asn.open(der));
            EXPECT_EQ(asn.getChildCount(), children);
            asn.close();
        });
    };
    EXPECT_LT(openAndClose(100000) / openAndClose(10000), 40.0) << "tenfold input should cost about tenfold time";
}

}  // namespace
