// The exported C entry points: version query, component creation, the agent.
#include <QPointer>
#include <memory>

#include "component/registry.h"
#include "support/common.h"
#include "ztutil/component.h"

namespace {

TEST(VersionQuery, SizeOnlyAndNeverTheText) {
    unsigned int length = 1234;
    EXPECT_EQ(ZT_GetVersion(nullptr, &length), 0);
    EXPECT_EQ(length, 9u);
    EXPECT_EQ(ZT_GetVersion(nullptr, nullptr), 0);
    // A buffer gets nine zero bytes and -1, whatever length came in.
    for (unsigned int incoming : {0u, 9u, 64u}) {
        unsigned char buffer[64];
        std::memset(buffer, 0xAB, sizeof buffer);
        length = incoming;
        EXPECT_EQ(ZT_GetVersion(buffer, &length), -1) << incoming;
        EXPECT_EQ(length, 9u);
        EXPECT_EQ(std::string(buffer, buffer + 10), std::string(9, '\0') + '\xAB');
        EXPECT_EQ(ZT_GetVersion(buffer, nullptr), -1);
    }
}

TEST(Registry, EachIdentifierCreatesItsClass) {
    const char* rows[][3] = {{"ZTUTIL.ZTUtil.1", "84CD4282-863B-4749-8E28-69EE326880EA", "ZTUtil"},
                             {"ZTUTIL.ZTAsn.1", "1A339BEF-F98E-4C2D-BA3D-764EE2B3C4CF", "ZTAsn"},
                             {"ZTUTIL.ZTCerificate.1", "28BE1D31-810B-490F-B02B-D1B2BC1B838F", "ZTCertificate"},
                             {"ZTUTIL.ZTBase64.1", "7D614568-C689-439E-B10A-F5A2D66624E4", "ZTBase64"}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_STREQ(ztutil::kComponentRows[i].progId, rows[i][0]);
        EXPECT_STREQ(ztutil::kComponentRows[i].clsId, rows[i][1]);
        std::unique_ptr<QObject> byProgId(CreateComponent(QLatin1String(rows[i][0]), QString()));
        std::unique_ptr<QObject> byClsId(CreateComponent(QString(), QLatin1String(rows[i][1])));
        ASSERT_TRUE(byProgId && byClsId) << rows[i][0];
        EXPECT_STREQ(byProgId->metaObject()->className(), rows[i][2]);
        EXPECT_STREQ(byClsId->metaObject()->className(), rows[i][2]);
        EXPECT_EQ(byProgId->parent(), nullptr);
    }
    // The first row matching either identifier wins: row 1 by CLSID before row 4 by ProgID.
    EXPECT_STREQ(ztutil::findComponentRow(QStringLiteral("ZTUTIL.ZTBase64.1"), QLatin1String(rows[0][1]))->progId,
                 rows[0][0]);
    EXPECT_STREQ(ztutil::findComponentRow(QStringLiteral("ZTUTIL.ZTAsn.1"), QLatin1String(rows[3][1]))->progId,
                 rows[1][0]);
    // Identifiers match exactly: no corrected spelling, case or braces.
    for (const char* progId : {"ZTUTIL.ZTCertificate.1", "ztutil.ztbase64.1", ""})
        EXPECT_EQ(CreateComponent(QLatin1String(progId), QString()), nullptr) << progId;
    for (const char* clsId : {"7d614568-c689-439e-b10a-f5a2d66624e4", "{7D614568-C689-439E-B10A-F5A2D66624E4}"})
        EXPECT_EQ(CreateComponent(QString(), QLatin1String(clsId)), nullptr) << clsId;
}

TEST(Agent, LifecycleOfTheSingleAgent) {
    ComponentDestroy();  // nothing to destroy: no effect
    EXPECT_EQ(getSignatureCore(), nullptr);
    QObject host;
    EXPECT_EQ(ComponentInit(&host), 1);
    QPointer<Q_Dispatch> first = getSignatureCore();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->objectName(), QStringLiteral("Agent"));
    EXPECT_EQ(first->parent(), nullptr);
    EXPECT_NE(dynamic_cast<ZTSignatureCoreAgent*>(first.data()), nullptr);
    // A second init replaces the agent without deleting the first; a null host is accepted.
    EXPECT_EQ(ComponentInit(nullptr), 1);
    EXPECT_NE(getSignatureCore(), first.data());
    EXPECT_EQ(createComponentObject(QStringLiteral("A"), QStringLiteral("B")), nullptr);
    ComponentDestroy();
    EXPECT_EQ(getSignatureCore(), nullptr);
    ASSERT_FALSE(first.isNull()) << "the earlier agent must stay alive";
    delete first.data();
    ComponentDestroy();
    EXPECT_EQ(getSignatureCore(), nullptr);
}

}  // namespace
