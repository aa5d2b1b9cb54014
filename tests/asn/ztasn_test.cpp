// The ZTAsn / ZTAsnBlock object model, called by name as a host calls it.
#include <gtest/gtest.h>

#include <QMetaMethod>
#include <QMetaObject>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>

#include "asn_test_support.h"
#include "support/capture.h"
#include "ztutil/component.h"
#include "ztutil/ztasn.h"

using asn_test::fixture;
using asn_test::hex;
using asn_test::ScopedTimeZone;
using ztutil_test::DebugCapture;
using ztutil_test::StdoutCapture;

namespace {

// Calls by name and fails the test when no method matches.
#define INVOKE(object, ...) \
    ASSERT_TRUE(QMetaObject::invokeMethod(object, __VA_ARGS__)) << "no such method"

QStringList invokableMethods(const QMetaObject* meta) {
    QStringList lines;
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        QStringList names;
        for (const QByteArray& name : method.parameterNames())
            names << QString::fromLatin1(name);
        lines << QStringLiteral("%1 %2 %3").arg(QLatin1String(method.typeName()),
                                               QLatin1String(method.methodSignature()), names.join(','));
    }
    return lines;
}

TEST(ZTAsnMeta, MethodsAreTheHostContract) {
    EXPECT_EQ(invokableMethods(&ZTAsnBlock::staticMetaObject),
              QStringList({"void dump(int) level", "void dump() ", "int type() ",
                           "bool checkTag(int) type", "ZTAsnBlock* getChild(int,int) index,checkTag",
                           "ZTAsnBlock* getChild(int) index", "int getChildCount() ",
                           "ZTAsnBlock* addSample(int) tagType", "ZTAsnBlock* addStruct(int) tagType",
                           "bool remove(int) index", "QByteArray build() ", "void update() ",
                           "bool setData(QByteArray) data", "bool addBlock(QByteArray) data",
                           "QString toString() ", "int toInt() ", "QByteArray toByteArray() ",
                           "QDateTime toDateTime() ", "QDateTime convertDateTime(QByteArray) text"}));
    EXPECT_EQ(invokableMethods(&ZTAsn::staticMetaObject),
              QStringList({"bool create(int) tagType", "bool create() ", "bool open(QByteArray) data",
                           "void close() "}));
    EXPECT_EQ(ZTAsn::staticMetaObject.methodOffset(), QObject::staticMetaObject.methodCount() + 19);

    std::unique_ptr<QObject> component(CreateComponent(QStringLiteral("ZTUTIL.ZTAsn.1"), QString()));
    ASSERT_NE(component, nullptr);
    EXPECT_STREQ(component->metaObject()->className(), "ZTAsn");
    EXPECT_TRUE(component->inherits("ZTAsnBlock"));
}

TEST(ZTAsnDocument, CreateOpenAndClose) {
    ZTAsn asn;
    bool made = false;
    INVOKE(&asn, "create", Qt::DirectConnection, Q_RETURN_ARG(bool, made));
    EXPECT_TRUE(made);
    EXPECT_EQ(asn.type(), 0x30);
    asn.close();
    INVOKE(&asn, "create", Qt::DirectConnection, Q_RETURN_ARG(bool, made), Q_ARG(int, 0xA0));
    EXPECT_TRUE(made);
    EXPECT_EQ(asn.type(), 0x30) << "only the constructed bit of the tag counts";
    asn.close();
    INVOKE(&asn, "create", Qt::DirectConnection, Q_RETURN_ARG(bool, made), Q_ARG(int, 2));
    EXPECT_FALSE(made);
    EXPECT_EQ(asn.node, nullptr);

    DebugCapture debug;
    bool opened = true;
    INVOKE(&asn, "open", Qt::DirectConnection, Q_RETURN_ARG(bool, opened), Q_ARG(QByteArray, QByteArray()));
    EXPECT_FALSE(opened);
    INVOKE(&asn, "open", Qt::DirectConnection, Q_RETURN_ARG(bool, opened), Q_ARG(QByteArray, hex("0485")));
    EXPECT_FALSE(opened);
    const QByteArray certificate = fixture("asn_sm2_cert.der");
    INVOKE(&asn, "open", Qt::DirectConnection, Q_RETURN_ARG(bool, opened), Q_ARG(QByteArray, certificate));
    EXPECT_TRUE(opened);
    EXPECT_EQ(debug.lines(), QStringList({"[ZTAsn::open]...", "[ZTAsn::open]...", "[ZTAsn::open]..."}));
    int count = 0;
    INVOKE(&asn, "getChildCount", Qt::DirectConnection, Q_RETURN_ARG(int, count));
    EXPECT_EQ(count, 3);
    QByteArray built;
    INVOKE(&asn, "build", Qt::DirectConnection, Q_RETURN_ARG(QByteArray, built));
    EXPECT_EQ(built, certificate);
    INVOKE(&asn, "close", Qt::DirectConnection);
    EXPECT_EQ(asn.node, nullptr);
    EXPECT_EQ(asn.getChildCount(), 0);
}

TEST(ZTAsnDocument, ReplacedRootsStayUntilClose) {
    // A second open appends after the first tree, whose wrappers still point
    // into it; a second create replaces the root. Under the sanitizer build
    // this also checks that close() frees every tree.
    ZTAsn asn;
    const QByteArray certificate = fixture("asn_sm2_cert.der");
    const QByteArray integer = hex("020105");
    DebugCapture quiet;
    ASSERT_TRUE(asn.open(certificate));
    ZTAsnBlock* firstTbs = asn.getChild(0, 0x30);
    ASSERT_NE(firstTbs, nullptr);
    ASSERT_TRUE(asn.open(hex("3003") + integer));
    EXPECT_EQ(asn.getChildCount(), 4);
    EXPECT_EQ(asn.getChild(0, 0), firstTbs);
    const QByteArray firstTbsBytes = firstTbs->build();  // the first tree is still alive
    ASSERT_FALSE(firstTbsBytes.isEmpty());
    EXPECT_TRUE(certificate.contains(firstTbsBytes));
    EXPECT_EQ(asn.getChild(3, 2)->toInt(), 5);
    asn.close();
    EXPECT_EQ(asn.getChildCount(), 0);

    ASSERT_TRUE(asn.create());
    ASSERT_TRUE(asn.create(0x30));
    EXPECT_EQ(asn.type(), 0x30);
    asn.close();
    EXPECT_EQ(asn.node, nullptr);
}

TEST(ZTAsnBlock, GetChildAndItsThreeMessages) {
    ZTAsn asn;
    ASSERT_TRUE(asn.open(hex("30050201050500")));
    ZTAsnBlock* child = nullptr;
    INVOKE(&asn, "getChild", Qt::DirectConnection, Q_RETURN_ARG(ZTAsnBlock*, child), Q_ARG(int, 1));
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->type(), 5);
    INVOKE(&asn, "getChild", Qt::DirectConnection, Q_RETURN_ARG(ZTAsnBlock*, child), Q_ARG(int, 0), Q_ARG(int, 2));
    EXPECT_EQ(child->type(), 2);

    StdoutCapture out;
    EXPECT_EQ(asn.getChild(5), nullptr);
    EXPECT_EQ(asn.getChild(-1), nullptr);
    EXPECT_EQ(asn.getChild(0, 0x30), nullptr);
    asn.listChild.append(nullptr);
    EXPECT_EQ(asn.getChild(2), nullptr);
    asn.listChild.removeLast();
    EXPECT_EQ(ZTAsn().getChild(0), nullptr);
    EXPECT_EQ(out.text(),
              "(!node || index < 0 || index >= listChild.count()) fail\n"
              "(!node || index < 0 || index >= listChild.count()) fail\n"
              "!block->checkTag(checkType) fail \n"
              "ZTAsnBlock* block = listChild.at(index); fail\n"
              "(!node || index < 0 || index >= listChild.count()) fail\n");
}

TEST(ZTAsnBlock, BuildingThroughTheWrappers) {
    ZTAsn asn;
    ASSERT_TRUE(asn.create());
    ZTAsnBlock* set = asn.addStruct(0x31);
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(asn.addStruct(0x02), nullptr);
    ZTAsnBlock* integer = set->addSample(0x02);
    EXPECT_EQ(integer->addSample(0x02), nullptr) << "primitive blocks take no children";
    ZTAsnBlock* refused = asn.addSample(0x30);
    ASSERT_NE(refused, nullptr) << "appended although the tag was refused";
    EXPECT_EQ(refused->node, nullptr);
    EXPECT_EQ(asn.getChildCount(), 2);
    ASSERT_TRUE(asn.remove(1));
    EXPECT_FALSE(asn.remove(1));

    struct Case {
        int tag;
        const char* data;
        const char* stored;
    } cases[] = {
        {0x02, "80", "80"},       {0x02, "81", "0081"}, {0x02, "7f", "7f"},
        {0x03, "ab", "00ab"},     {0x04, "ab", "ab"},   {0x06, "", ""},
    };
    for (const Case& c : cases) {
        ZTAsnBlock* leaf = asn.addSample(c.tag);
        bool ok = false;
        INVOKE(leaf, "setData", Qt::DirectConnection, Q_RETURN_ARG(bool, ok), Q_ARG(QByteArray, hex(c.data)));
        EXPECT_TRUE(ok);
        EXPECT_EQ(QByteArray(reinterpret_cast<char*>(leaf->node->data), static_cast<int>(leaf->node->dataLength)),
                  hex(c.stored)) << c.tag << " " << c.data;
    }
    ZTAsnBlock* oid = asn.addSample(0x06);
    EXPECT_TRUE(oid->setData("1.2.156.10197.1.301"));
    EXPECT_EQ(oid->toByteArray(), hex("2a811ccf5501822d"));
    EXPECT_EQ(oid->toString(), QStringLiteral("1.2.156.10197.1.301"));
    const char unterminated[5] = {'1', '.', '2', '.', '3'};
    EXPECT_TRUE(oid->setData(QByteArray::fromRawData(unterminated, 5)));
    EXPECT_EQ(oid->toByteArray(), hex("2a03")) << "text read within the array";
    EXPECT_TRUE(oid->setData("abc"));
    EXPECT_EQ(oid->toByteArray(), QByteArray("abc"));
    EXPECT_FALSE(set->setData("x")) << "constructed blocks hold no content";

    QByteArray stale;
    INVOKE(&asn, "build", Qt::DirectConnection, Q_RETURN_ARG(QByteArray, stale));
    EXPECT_TRUE(stale.isEmpty()) << "never updated: no length yet";
    INVOKE(&asn, "update", Qt::DirectConnection);
    const QByteArray built = asn.build();
    EXPECT_EQ(built, hex("301c" "31020200" "020180" "02020081" "02017f" "030200ab" "0401ab" "0600"
                         "0603616263"));
    // Stale lengths: the grown INTEGER's extra octet lands where the next
    // node is then written over it.
    integer->setData(hex("01"));
    EXPECT_EQ(asn.build(), built);
    asn.update();
    EXPECT_EQ(asn.build().left(8), hex("301d310302010102"));
}

TEST(ZTAsnBlock, ValueConversions) {
    ZTAsn asn;
    ASSERT_TRUE(asn.create());
    struct IntCase {
        const char* content;
        int value;
    } ints[] = {{"05", 5}, {"ff", 255}, {"0100", 1}, {"010000", 0}, {"ffffffff", -1}, {"78563412", 0x12345678}, {"", 0}};
    for (const IntCase& c : ints) {
        ZTAsnBlock* block = asn.addSample(0x02);
        ASNSetBlockData(block->node, asn_test::octets(hex(c.content)), static_cast<size_t>(hex(c.content).size()));
        int value = -99;
        INVOKE(block, "toInt", Qt::DirectConnection, Q_RETURN_ARG(int, value));
        EXPECT_EQ(value, c.value) << c.content;
    }
    ZTAsnBlock* notInteger = asn.addSample(0x04);
    notInteger->setData(hex("05"));
    EXPECT_EQ(notInteger->toInt(), 0);
    EXPECT_EQ(notInteger->toString(), QStringLiteral("\x05"));
    EXPECT_EQ(asn.toString(), QString()) << "constructed";
    EXPECT_EQ(asn.toByteArray(), QByteArray());

    ZTAsnBlock* bits = asn.addSample(0x03);
    bits->setData("AB");
    QString text;
    INVOKE(bits, "toString", Qt::DirectConnection, Q_RETURN_ARG(QString, text));
    EXPECT_EQ(text, QStringLiteral("AB"));

    // The certificate's organisation is a BMPString: the bytes come out as
    // UTF-8, and the text is those bytes read as Latin-1.
    ZTAsn certificate;
    ASSERT_TRUE(certificate.open(fixture("asn_sm2_cert.der")));
    ZTAsnBlock* organisation = certificate.getChild(0)->getChild(5)->getChild(1)->getChild(0)->getChild(1, 30);
    ASSERT_NE(organisation, nullptr);
    const QByteArray utf8 = QStringLiteral("电子印章测试单位").toUtf8();
    QByteArray bytes;
    INVOKE(organisation, "toByteArray", Qt::DirectConnection, Q_RETURN_ARG(QByteArray, bytes));
    EXPECT_EQ(bytes, utf8);
    EXPECT_EQ(organisation->toString(), QString::fromLatin1(utf8));
    ZTAsnBlock* bmp = asn.addSample(30);
    bmp->setData(QByteArray("\x00" "A" "\x00\x00" "\x00" "B", 6));
    EXPECT_EQ(bmp->toByteArray(), QByteArray("A")) << "a U+0000 code ends the text";
    bmp->setData(QByteArray());
    EXPECT_EQ(bmp->toString(), QString());
}

TEST(ZTAsnBlock, DateTimes) {
    ZTAsnBlock block;
    QDateTime when;
    INVOKE(&block, "convertDateTime", Qt::DirectConnection, Q_RETURN_ARG(QDateTime, when),
           Q_ARG(QByteArray, QByteArray("121231120000Z")));
    EXPECT_EQ(when, QDateTime(QDate(2012, 12, 31), QTime(20, 0), Qt::UTC));
    EXPECT_EQ(when.timeSpec(), Qt::UTC);
    EXPECT_EQ(block.convertDateTime("591231120000Z"), QDateTime(QDate(2059, 12, 31), QTime(20, 0), Qt::UTC))
        << "two-digit years pivot at 60";
    EXPECT_EQ(block.convertDateTime("601231120000Z"), QDateTime(QDate(1960, 12, 31), QTime(20, 0), Qt::UTC));
    EXPECT_EQ(block.convertDateTime("20501231200000Z"), QDateTime(QDate(2051, 1, 1), QTime(4, 0), Qt::UTC));
    EXPECT_FALSE(block.convertDateTime("121231120000").isValid());
    EXPECT_FALSE(block.convertDateTime("121331120000Z").isValid());

    ZTAsn asn;
    ASSERT_TRUE(asn.create());
    ZTAsnBlock* utcTime = asn.addSample(23);
    ZTAsnBlock* generalized = asn.addSample(24);
    generalized->setData("20121231235958Z");
    {
        ScopedTimeZone zone("CST-8");
        utcTime->setData("121231120000Z");
        DebugCapture debug;
        QDateTime local;
        INVOKE(utcTime, "toDateTime", Qt::DirectConnection, Q_RETURN_ARG(QDateTime, local));
        EXPECT_EQ(local, QDateTime(QDate(2012, 12, 31), QTime(20, 0), Qt::LocalTime));
        EXPECT_EQ(local.timeSpec(), Qt::LocalTime);
        EXPECT_EQ(debug.lines(), QStringList({"[ZTAsn::operator QDateTime]...", "text: 121231120000Z"}));
        utcTime->setData("121231200000Z");
        EXPECT_EQ(utcTime->toDateTime(), QDateTime(QDate(2013, 1, 1), QTime(4, 0), Qt::LocalTime));
        utcTime->setData("1212312000Z");
        EXPECT_EQ(utcTime->toDateTime(), QDateTime(QDate(2012, 12, 31), QTime(20, 0), Qt::LocalTime))
            << "other lengths keep the hour";
        EXPECT_EQ(generalized->toDateTime(), QDateTime(QDate(2012, 12, 31), QTime(23, 59, 58), Qt::LocalTime));
        EXPECT_FALSE(asn.addSample(4)->toDateTime().isValid());
    }
    {
        ScopedTimeZone zone("UTC0");
        utcTime->setData("991231235959Z");
        EXPECT_EQ(utcTime->toDateTime(), QDateTime(QDate(1999, 12, 31), QTime(23, 59, 59), Qt::LocalTime));
        utcTime->setData("550101000000Z");
        EXPECT_EQ(utcTime->toDateTime(), QDateTime(QDate(2055, 1, 1), QTime(0, 0), Qt::LocalTime));
    }
    {
        ScopedTimeZone zone("EST5");  // west of UTC: the hour goes below zero
        utcTime->setData("121231020000Z");
        EXPECT_FALSE(utcTime->toDateTime().isValid());
    }
}

TEST(ZTAsnBlock, PrintAndDump) {
    ZTAsn asn;
    ASSERT_TRUE(asn.open(hex("301c" "020105" "0500" "1703313233" "0c0461006263" "a100" "3100" "a0020400" "03020001")));
    ZTAsnBlock* integer = asn.getChild(0);
    EXPECT_EQ(integer->printData(), QStringLiteral(" { 05 }"));
    EXPECT_EQ(integer->print(), QStringLiteral("INTEGER       length =7"));
    EXPECT_EQ(asn.getChild(2)->printData(), QStringLiteral(" { 123 }"));
    EXPECT_EQ(asn.getChild(3)->printData(), QStringLiteral(" { a }")) << "up to the first zero octet";
    EXPECT_EQ(asn.getChild(6)->getChild(0)->printData(), QStringLiteral(" { }"));
    EXPECT_EQ(asn.getChild(7)->printData(), QStringLiteral(" { 00 01 }"));
    EXPECT_EQ(ZTAsnBlock().print(), QStringLiteral("None"));

    StdoutCapture out;
    INVOKE(&asn, "dump", Qt::DirectConnection);
    INVOKE(asn.getChild(0), "dump", Qt::DirectConnection, Q_ARG(int, 2));
    EXPECT_EQ(out.text(),
              "\nSEQUENCE"
              "\n    INTEGER       length =7"
              "\n    NULL"
              "\n    UTC TIME       length =8"
              "\n    UTF8 STRING       length =6"
              "\n    UNKNOWN"
              "\n    SET"
              "\n    CONTEXT SPECIFIC"
              "\n        OCTET STRING       length =4"
              "\n    BIT STRING       length =10"
              "\n        INTEGER       length =7");
}

TEST(ZTAsnBlock, AddBlockWrapsTheParentAgain) {
    ZTAsn asn;
    ASSERT_TRUE(asn.open(hex("3003020105")));
    bool ok = false;
    INVOKE(&asn, "addBlock", Qt::DirectConnection, Q_RETURN_ARG(bool, ok), Q_ARG(QByteArray, hex("0500")));
    EXPECT_TRUE(ok);
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
    ASSERT_TRUE(deep.open(asn_test::nestedSequences(1000000)));
    int levels = 1;
    for (ZTAsnBlock* block = &deep; block->getChildCount() != 0; block = block->listChild.first())
        ++levels;
    EXPECT_EQ(levels, ZT_ASN_MAX_NESTING_DEPTH);
    StdoutCapture out;
    deep.dump();
    const std::string lines = out.text();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), ZT_ASN_MAX_NESTING_DEPTH);

    auto openAndClose = [](const QByteArray& der, int children) {
        double best = 1e9;
        for (int run = 0; run < 3; ++run) {
            const auto start = std::chrono::steady_clock::now();
            ZTAsn asn;
            EXPECT_TRUE(asn.open(der));
            EXPECT_EQ(asn.getChildCount(), children);
            asn.close();
            best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
        return best;
    };
    const double ratio = openAndClose(asn_test::wideSequence(100000), 100000) /
                         openAndClose(asn_test::wideSequence(10000), 10000);
    EXPECT_LT(ratio, 40.0) << "tenfold input should cost about tenfold time";
}

}  // namespace
