#include <gtest/gtest.h>

#include <QMetaObject>
#include <QPointer>
#include <cstring>
#include <memory>

#include "component/registry.h"
#include "ztutil/component.h"

namespace {

TEST(VersionQuery, SizeQueryReportsNineCharacters) {
    unsigned int length = 1234;
    EXPECT_EQ(ZT_GetVersion(nullptr, &length), 0);
    EXPECT_EQ(length, 9u);
}

TEST(VersionQuery, BufferCallZeroesNineBytesAndNeverDeliversTheText) {
    for (unsigned int incoming : {0u, 9u, 10u, 64u}) {
        unsigned char buffer[64];
        std::memset(buffer, 0xAB, sizeof buffer);
        unsigned int length = incoming;
        EXPECT_EQ(ZT_GetVersion(buffer, &length), -1) << incoming;
        EXPECT_EQ(length, 9u);
        for (int i = 0; i < 9; ++i)
            EXPECT_EQ(buffer[i], 0) << i;
        for (size_t i = 9; i < sizeof buffer; ++i)
            ASSERT_EQ(buffer[i], 0xAB) << i;
    }
}

TEST(VersionQuery, NullLengthIsTolerated) {
    unsigned char buffer[16] = {};
    EXPECT_EQ(ZT_GetVersion(nullptr, nullptr), 0);
    EXPECT_EQ(ZT_GetVersion(buffer, nullptr), -1);
}

TEST(Registry, FirstRowMatchingEitherIdentifierWins) {
    // Row 1 matches by CLSID before row 4 is tried by ProgID.
    const ztutil::ComponentRow* row = ztutil::findComponentRow(
        QStringLiteral("ZTUTIL.ZTBase64.1"), QStringLiteral("84CD4282-863B-4749-8E28-69EE326880EA"));
    ASSERT_NE(row, nullptr);
    EXPECT_STREQ(row->progId, "ZTUTIL.ZTUtil.1");

    row = ztutil::findComponentRow(QStringLiteral("ZTUTIL.ZTAsn.1"),
                                   QStringLiteral("7D614568-C689-439E-B10A-F5A2D66624E4"));
    ASSERT_NE(row, nullptr);
    EXPECT_STREQ(row->progId, "ZTUTIL.ZTAsn.1");

    row = ztutil::findComponentRow(QString(), QStringLiteral("28BE1D31-810B-490F-B02B-D1B2BC1B838F"));
    ASSERT_NE(row, nullptr);
    EXPECT_STREQ(row->progId, "ZTUTIL.ZTCerificate.1");
}

TEST(Registry, RowsAreInTheirFixedOrder) {
    const char* expected[][2] = {
        {"ZTUTIL.ZTUtil.1", "84CD4282-863B-4749-8E28-69EE326880EA"},
        {"ZTUTIL.ZTAsn.1", "1A339BEF-F98E-4C2D-BA3D-764EE2B3C4CF"},
        {"ZTUTIL.ZTCerificate.1", "28BE1D31-810B-490F-B02B-D1B2BC1B838F"},
        {"ZTUTIL.ZTBase64.1", "7D614568-C689-439E-B10A-F5A2D66624E4"},
    };
    for (int i = 0; i < 4; ++i) {
        EXPECT_STREQ(ztutil::kComponentRows[i].progId, expected[i][0]);
        EXPECT_STREQ(ztutil::kComponentRows[i].clsId, expected[i][1]);
    }
}

TEST(CreateComponent, CreatesBase64ByProgIdOrClsId) {
    std::unique_ptr<QObject> byProgId(
        CreateComponent(QStringLiteral("ZTUTIL.ZTBase64.1"), QString()));
    ASSERT_NE(byProgId, nullptr);
    EXPECT_STREQ(byProgId->metaObject()->className(), "ZTBase64");
    EXPECT_EQ(byProgId->parent(), nullptr);
    EXPECT_TRUE(byProgId->objectName().isEmpty());

    std::unique_ptr<QObject> byClsId(
        CreateComponent(QString(), QStringLiteral("7D614568-C689-439E-B10A-F5A2D66624E4")));
    ASSERT_NE(byClsId, nullptr);
    EXPECT_STREQ(byClsId->metaObject()->className(), "ZTBase64");
    EXPECT_NE(byClsId.get(), byProgId.get());
}

TEST(CreateComponent, UnknownOrMisspelledIdentifiersGiveNull) {
    EXPECT_EQ(CreateComponent(QStringLiteral("ZTUTIL.ZTCertificate.1"), QString()), nullptr);
    EXPECT_EQ(CreateComponent(QStringLiteral("ztutil.ztbase64.1"), QString()), nullptr);
    EXPECT_EQ(CreateComponent(QString(), QStringLiteral("7d614568-c689-439e-b10a-f5a2d66624e4")),
              nullptr);
    EXPECT_EQ(CreateComponent(QString(), QStringLiteral("{7D614568-C689-439E-B10A-F5A2D66624E4}")),
              nullptr);
    EXPECT_EQ(CreateComponent(QString(), QString()), nullptr);
}

TEST(Agent, LifecycleOfTheSingleAgent) {
    ComponentDestroy();  // nothing to destroy: no effect
    EXPECT_EQ(getSignatureCore(), nullptr);

    QObject host;
    EXPECT_EQ(ComponentInit(&host), 1);
    Q_Dispatch* agent = getSignatureCore();
    ASSERT_NE(agent, nullptr);
    EXPECT_EQ(agent->objectName(), QStringLiteral("Agent"));
    EXPECT_EQ(agent->parent(), nullptr);
    EXPECT_NE(dynamic_cast<ZTSignatureCoreAgent*>(agent), nullptr);

    ComponentDestroy();
    EXPECT_EQ(getSignatureCore(), nullptr);
    ComponentDestroy();
    EXPECT_EQ(getSignatureCore(), nullptr);
}

TEST(Agent, SecondInitReplacesTheAgentWithoutDeletingTheFirst) {
    QObject host;
    ComponentInit(&host);
    QPointer<Q_Dispatch> first = getSignatureCore();
    ComponentInit(nullptr);
    EXPECT_NE(getSignatureCore(), first.data());
    ASSERT_FALSE(first.isNull()) << "the earlier agent must stay alive";
    ComponentDestroy();
    EXPECT_FALSE(first.isNull());
    delete first.data();
}

TEST(Agent, NullHostIsAcceptedAndLaterCallsGiveNothing) {
    EXPECT_EQ(ComponentInit(nullptr), 1);
    EXPECT_EQ(createComponentObject(QStringLiteral("A"), QStringLiteral("B")), nullptr);
    ComponentDestroy();
}

}  // namespace
