#include <gtest/gtest.h>

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>

#include "support/capture.h"
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
        calls << QStringLiteral("fill");
        buffer[0] = 0x5A;
        *length = 1;
    }
    Q_INVOKABLE QDateTime stamp(QDateTime when, qint64 offset) {
        return when.addSecs(offset);
    }
};

class DispatchTest : public ::testing::Test {
protected:
    FakeHost host;
    Q_Dispatch dispatch{&host};
};

TEST_F(DispatchTest, PassesArgumentsAndReturnsTheResult) {
    int a = 40, b = 2, sum = -1;
    dispatch.invokeHelper(QStringLiteral("add"), &sum, &a, &b);
    EXPECT_EQ(sum, 42);
    EXPECT_EQ(host.calls, QStringList{"add:40:2"});

    unsigned char buffer[4] = {};
    unsigned char* bufferPointer = buffer;
    uint length = 0;
    uint* lengthPointer = &length;
    dispatch.invokeHelper(QStringLiteral("fill"), nullptr, &bufferPointer, &lengthPointer);
    EXPECT_EQ(buffer[0], 0x5A);
    EXPECT_EQ(length, 1u);

    const QDateTime when = QDateTime::fromSecsSinceEpoch(1000, Qt::UTC);
    qint64 offset = 60;
    QDateTime result;
    dispatch.invokeHelper(QStringLiteral("stamp"), &result, &when, &offset);
    EXPECT_EQ(result.toSecsSinceEpoch(), 1060);
}

TEST_F(DispatchTest, FirstOverloadInDeclarationOrderIsCalled) {
    QByteArray bytes("abc");
    dispatch.invokeHelper(QStringLiteral("open"), nullptr, &bytes);
    EXPECT_EQ(host.calls, QStringList{"open(QByteArray):abc"});
}

TEST_F(DispatchTest, NameIsTrimmedForLookupButReportedAsPassed) {
    QString progId = "P", clsId = "C";
    QObject* created = reinterpret_cast<QObject*>(0x1);
    dispatch.invokeHelper(QStringLiteral(" createComponentObject \t"), &created, &progId, &clsId);
    EXPECT_EQ(created, nullptr);
    EXPECT_EQ(host.calls, QStringList{"createComponentObject:P:C"});

    DebugCapture debug;
    int untouched = 7;
    dispatch.invokeHelper(QStringLiteral(" nosuch "), &untouched);
    EXPECT_EQ(untouched, 7);
    ASSERT_FALSE(debug.lines().isEmpty());
    const int count = host.metaObject()->methodCount();
    EXPECT_EQ(debug.lines().first(),
              QStringLiteral("ERROR: findMethodIndex fail!!!cnt: %1 methodName =  \" nosuch \"")
                  .arg(count));
    ASSERT_EQ(debug.lines().size(), count + 1);
    EXPECT_EQ(debug.lines().at(1), QStringLiteral("method 0 \"destroyed(QObject*)\""));
    EXPECT_EQ(debug.lines().last(),
              QStringLiteral("method %1 \"stamp(QDateTime,qlonglong)\"").arg(count - 1));
}

TEST_F(DispatchTest, KeyIncludesTheOpeningParenthesis) {
    DebugCapture debug;
    QString a = "a", b = "b";
    dispatch.invokeHelper(QStringLiteral("create"), nullptr, &a, &b);
    EXPECT_TRUE(host.calls.isEmpty());
    EXPECT_FALSE(debug.lines().isEmpty());
}

TEST_F(DispatchTest, EmptyOrBlankNameFailsTheLookup) {
    DebugCapture debug;
    dispatch.invokeHelper(QStringLiteral("   "), nullptr);
    dispatch.invokeHelper(QString(), nullptr);
    EXPECT_TRUE(host.calls.isEmpty());
    const int failures =
        debug.lines().filter(QStringLiteral("ERROR: findMethodIndex fail!!!")).size();
    EXPECT_EQ(failures, 2);
}

TEST_F(DispatchTest, InheritedMethodsAreFoundFirst) {
    // deleteLater() is one of QObject's own invokable methods.
    dispatch.invokeHelper(QStringLiteral("deleteLater"), nullptr);
    EXPECT_TRUE(host.calls.isEmpty());
}

TEST_F(DispatchTest, UnsupportedParameterTypeIsNeverInvoked) {
    DebugCapture debug;
    BOOL flag = 1;
    dispatch.invokeHelper(QStringLiteral("setFlag"), nullptr, &flag);
    EXPECT_TRUE(host.calls.isEmpty());
    EXPECT_TRUE(debug.lines().isEmpty()) << "this failure is silent";
}

TEST(Dispatch, NullHostDoesNothing) {
    Q_Dispatch dispatch(nullptr);
    DebugCapture debug;
    int result = 5;
    dispatch.invokeHelper(QStringLiteral("add"), &result);
    EXPECT_EQ(result, 5);
    EXPECT_TRUE(debug.lines().isEmpty());
}

TEST(CreateComponentObject, AsksTheHostThroughTheAgent) {
    FakeHost host;
    QObject component;
    host.componentToReturn = &component;
    EXPECT_EQ(createComponentObject(QStringLiteral("X"), QStringLiteral("Y")), nullptr)
        << "no agent before ComponentInit";
    ComponentInit(&host);
    EXPECT_EQ(createComponentObject(QStringLiteral("HOST.Thing.1"), QStringLiteral("1234")),
              &component);
    EXPECT_EQ(host.calls, QStringList{"createComponentObject:HOST.Thing.1:1234"});
    ComponentDestroy();
    EXPECT_EQ(createComponentObject(QStringLiteral("X"), QStringLiteral("Y")), nullptr);
}

TEST(CreateComponentObject, HostWithoutTheMethodGivesNull) {
    QObject host;
    ComponentInit(&host);
    DebugCapture debug;
    EXPECT_EQ(createComponentObject(QStringLiteral("X"), QStringLiteral("Y")), nullptr);
    ASSERT_FALSE(debug.lines().isEmpty());
    EXPECT_TRUE(debug.lines().first().contains(QStringLiteral("\"createComponentObject\"")));
    ComponentDestroy();
}

}  // namespace

#include "dispatch_test.moc"
