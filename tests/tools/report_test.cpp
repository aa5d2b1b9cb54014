// zthost's result records: JSON checked by Qt's JSON reader, and the text form.
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "output/report.h"
#include "support/qt_printers.h"

namespace {

Report sample() {
    Report inner = Report::object();
    inner.set("name", QString::fromUtf8("电子印章 😀 \"quoted\" back\\slash\ttab\x01"));
    Report list = Report::array();
    list.append(Report::number(-7)).append(Report::boolean(false)).append(Report());
    Report report = Report::object();
    report.set("zeta", 1).set("alpha", true).set("inner", inner).set("list", list).set("empty", Report::array());
    return report;
}

TEST(Report, JsonIsValidAndKeepsTheOrder) {
    const QByteArray json = sample().toJson();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    ASSERT_EQ(error.error, QJsonParseError::NoError) << json.constData();
    const QJsonObject object = document.object();
    EXPECT_EQ(object.value("inner").toObject().value("name").toString(),
              QString::fromUtf8("电子印章 😀 \"quoted\" back\\slash\ttab\x01"));
    // Outside the Basic Multilingual Plane: one character, four UTF-8 bytes.
    EXPECT_TRUE(json.contains("\xf0\x9f\x98\x80"));
    EXPECT_EQ(object.value("list").toArray().at(0).toInt(), -7);
    EXPECT_TRUE(object.value("list").toArray().at(2).isNull());
    EXPECT_TRUE(object.value("empty").toArray().isEmpty());
    // Members come out in the order they were set (zeta before alpha).
    EXPECT_LT(json.indexOf("\"zeta\""), json.indexOf("\"alpha\""));
    EXPECT_TRUE(json.endsWith("}\n"));
}

TEST(Report, LoneSurrogatesAreEscaped) {
    Report report = Report::object();
    report.set("s", QString(QChar(0xD83D)) + QLatin1Char('x'));
    EXPECT_EQ(report.toJson(), QByteArray("{\n  \"s\": \"\\ud83dx\"\n}\n"));
}

TEST(Report, SettingAKeyAgainReplacesItInPlace) {
    Report report = Report::object();
    report.set("a", 1).set("b", 2).set("a", 3);
    ASSERT_EQ(report.members().size(), 2u);
    EXPECT_EQ(report.toJson(), QByteArray("{\n  \"a\": 3,\n  \"b\": 2\n}\n"));
}

TEST(Report, TextAlignsLabelsAndLeavesNoTrailingBlank) {
    Report report = Report::object();
    report.set("subject_cn", "Demo").set("e", "").set("valid_now", false);
    EXPECT_EQ(report.toText(), QStringLiteral("subject cn: Demo\ne:\nvalid now:  no\n"));
}

TEST(Report, TextIndentsNestedRecords) {
    Report child = Report::object();
    child.set("tag", 48);
    Report report = Report::object();
    report.set("tree", child);
    EXPECT_EQ(report.toText(), QStringLiteral("tree:\n  tag: 48\n"));
}

}  // namespace
