// Q_Dispatch calling a host object by method name, and createComponentObject
// asking the host through the agent.
#include <QDateTime>

#include "support/common.h"
#include "ztutil/component.h"
#include "ztutil/ztutil_global.h"

using ztutil_test::DebugCapture;

namespace {

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

#include "dispatch_test.moc"
