// The exported C entry points (version query, component creation, the
// agent), Q_Dispatch calling a host object by method name, and
// createComponentObject asking the host through the agent.
#include <sys/wait.h>

#include <QDateTime>
#include <QPointer>
#include <memory>

#include "component/registry.h"
#include "support/common.h"
#include "ztutil/component.h"
#include "ztutil/ztutil_global.h"

using ztutil_test::DebugCapture;

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
    // The earlier agent stays alive, unreferenced: the contract's kept leak,
    // which the sanitizer build's leak check must accept (by its own name).
    EXPECT_FALSE(first.isNull()) << "the earlier agent must stay alive";
    ComponentDestroy();
    EXPECT_EQ(getSignatureCore(), nullptr);
}

// A stand-in for the host's signature core that records every call.
class FakeHost : public QObject {
    Q_OBJECT
public:
    QStringList calls;
    QObject* componentToReturn = nullptr;

    Q_INVOKABLE QObject* createComponentObject(QString progId, QString clsId) {
        calls << QStringLiteral("createComponentObject:%1:%2").arg(progId, clsId);
        return componentToReturn;
    }
    Q_INVOKABLE void open(QByteArray data) { calls << "open(QByteArray):" + QString::fromLatin1(data); }
    Q_INVOKABLE void open(QString text) { calls << "open(QString):" + text; }
    Q_INVOKABLE void setFlag(BOOL flag) { calls << QStringLiteral("setFlag:%1").arg(flag); }
    Q_INVOKABLE int add(int a, int b) {
        calls << QStringLiteral("add:%1:%2").arg(a).arg(b);
        return a + b;
    }
    Q_INVOKABLE void fill(unsigned char* buffer, uint* length) {
        buffer[0] = 0x5A;
        *length = 1;
    }
    Q_INVOKABLE void leak() { new QString(QStringLiteral("never freed")); }
    Q_INVOKABLE QDateTime stamp(QDateTime when, qint64 offset) { return when.addSecs(offset); }
};

TEST(Dispatch, ArgumentsResultsAndOverloads) {
    FakeHost host;
    Q_Dispatch dispatch(&host);
    int a = 40, b = 2, sum = -1;
    dispatch.invokeHelper(QStringLiteral("add"), &sum, &a, &b);
    EXPECT_EQ(sum, 42);
    unsigned char buffer[4] = {};
    unsigned char* bufferPointer = buffer;
    uint length = 0;
    uint* lengthPointer = &length;
    dispatch.invokeHelper(QStringLiteral("fill"), nullptr, &bufferPointer, &lengthPointer);
    EXPECT_EQ(buffer[0] + length, 0x5Bu);
    const QDateTime when = QDateTime::fromSecsSinceEpoch(1000, Qt::UTC);
    qint64 offset = 60;
    QDateTime result;
    dispatch.invokeHelper(QStringLiteral("stamp"), &result, &when, &offset);
    EXPECT_EQ(result.toSecsSinceEpoch(), 1060);
    // The first overload in declaration order is called.
    QByteArray bytes("abc");
    dispatch.invokeHelper(QStringLiteral("open"), nullptr, &bytes);
    // The name is trimmed for the lookup.
    QString progId = "P", clsId = "C";
    QObject* created = reinterpret_cast<QObject*>(0x1);
    dispatch.invokeHelper(QStringLiteral(" createComponentObject \t"), &created, &progId, &clsId);
    EXPECT_EQ(created, nullptr);
    EXPECT_EQ(host.calls, QStringList({"add:40:2", "open(QByteArray):abc", "createComponentObject:P:C"}));
}

TEST(Dispatch, FailedLookupsListTheHostsMethods) {
    FakeHost host;
    Q_Dispatch dispatch(&host);
    DebugCapture debug;
    int untouched = 7;
    dispatch.invokeHelper(QStringLiteral(" nosuch "), &untouched);
    EXPECT_EQ(untouched, 7);
    const int count = host.metaObject()->methodCount();
    ASSERT_EQ(debug.lines().size(), count + 1);
    EXPECT_EQ(debug.lines().first(),
              QStringLiteral("ERROR: findMethodIndex fail!!!cnt: %1 methodName =  \" nosuch \"").arg(count));
    EXPECT_EQ(debug.lines().at(1), QStringLiteral("method 0 \"destroyed(QObject*)\""));
    EXPECT_EQ(debug.lines().last(), QStringLiteral("method %1 \"stamp(QDateTime,qlonglong)\"").arg(count - 1));

    // The key includes the opening parenthesis; blank names find nothing.
    QString a = "a", b = "b";
    dispatch.invokeHelper(QStringLiteral("create"), nullptr, &a, &b);
    dispatch.invokeHelper(QStringLiteral("   "), nullptr);
    dispatch.invokeHelper(QString(), nullptr);
    EXPECT_EQ(debug.lines().filter(QStringLiteral("ERROR: findMethodIndex fail!!!")).size(), 4);
    // Inherited methods are found first; an unsupported type (BOOL) is never invoked, silently.
    const int lines = debug.lines().size();
    BOOL flag = 1;
    dispatch.invokeHelper(QStringLiteral("deleteLater"), nullptr);
    dispatch.invokeHelper(QStringLiteral("setFlag"), nullptr, &flag);
    EXPECT_TRUE(host.calls.isEmpty());
    EXPECT_EQ(debug.lines().size(), lines);

    Q_Dispatch noHost(nullptr);
    int result = 5;
    noHost.invokeHelper(QStringLiteral("add"), &result);
    EXPECT_EQ(result, 5);
    EXPECT_EQ(debug.lines().size(), lines);
}

#if defined(__SANITIZE_ADDRESS__)
// The dispatcher's kept leak is suppressed by the name of the function that
// allocates it, not by the dispatcher's own frame: a leak made by a host
// method called through it is still reported.
TEST(DispatchDeathTest, HostMethodLeaksAreStillReported) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            FakeHost host;
            Q_Dispatch(&host).invokeHelper(QStringLiteral("leak"), nullptr);
            std::exit(0);
        },
        [](int status) { return WIFEXITED(status) && WEXITSTATUS(status) != 0; },
        "LeakSanitizer: detected memory leaks");
}
#endif

TEST(CreateComponentObject, AsksTheHostThroughTheAgent) {
    FakeHost host;
    QObject component;
    host.componentToReturn = &component;
    EXPECT_EQ(createComponentObject(QStringLiteral("X"), QStringLiteral("Y")), nullptr) << "no agent yet";
    ComponentInit(&host);
    EXPECT_EQ(createComponentObject(QStringLiteral("HOST.Thing.1"), QStringLiteral("1234")), &component);
    EXPECT_EQ(host.calls, QStringList{"createComponentObject:HOST.Thing.1:1234"});
    ComponentDestroy();
    QObject plain;  // a host without the method
    ComponentInit(&plain);
    DebugCapture debug;
    EXPECT_EQ(createComponentObject(QStringLiteral("X"), QStringLiteral("Y")), nullptr);
    ASSERT_FALSE(debug.lines().isEmpty());
    EXPECT_TRUE(debug.lines().first().contains(QStringLiteral("\"createComponentObject\"")));
    ComponentDestroy();
    EXPECT_EQ(createComponentObject(QStringLiteral("X"), QStringLiteral("Y")), nullptr);
}

}  // namespace

#include "component_test.moc"
