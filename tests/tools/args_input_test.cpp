// zthost's argument parser and input decoding.
#include <gtest/gtest.h>

#include <QTemporaryFile>

#include "cli/args.h"
#include "cli/cli.h"
#include "cli/input.h"
#include "support/qt_printers.h"

namespace {

const char kUsage[] = "usage: test\n";

Args parse(const QStringList& args) {
    return Args(args, kUsage, {{"--key", true}, {"-o", true}, {"--json", false}});
}

QString writeTemporary(QTemporaryFile& file, const QByteArray& content) {
    EXPECT_TRUE(file.open());
    file.write(content);
    file.flush();
    return file.fileName();
}

TEST(Args, OptionsValuesAndPositionals) {
    const Args args = parse({"a", "--key", "K", "-", "--json", "-o", "x", "--", "--json", "b"});
    EXPECT_EQ(args.value("--key"), QStringLiteral("K"));
    EXPECT_EQ(args.value("-o"), QStringLiteral("x"));
    EXPECT_TRUE(args.has("--json"));
    // "-" is standard input, and after "--" nothing is an option.
    EXPECT_EQ(args.positionals(), QStringList({"a", "-", "--json", "b"}));
}

TEST(Args, LongOptionWithEquals) {
    const Args args = parse({"--key=a=b", "--key="});
    EXPECT_EQ(args.value("--key"), QString());  // the last one wins
    EXPECT_EQ(parse({"--key=a=b"}).value("--key"), QStringLiteral("a=b"));
}

TEST(Args, Errors) {
    EXPECT_THROW(parse({"--nope"}), UsageError);
    EXPECT_THROW(parse({"--key"}), UsageError);
    EXPECT_THROW(parse({"--json=1"}), UsageError);
    EXPECT_THROW(parse({"-o=x"}), UsageError);  // only long options take "="
    EXPECT_THROW(parse({"x", "--help"}), HelpRequest);
    EXPECT_THROW(parse({"-h"}), HelpRequest);
    EXPECT_THROW(parse({}).required("--key"), UsageError);
    EXPECT_THROW(parse({"a", "b"}).expectPositionals(1, "file"), UsageError);
    EXPECT_THROW(parse({}).expectPositionalsBetween(1, 2, "file"), UsageError);
    EXPECT_NO_THROW(parse({"a", "b"}).expectPositionalsBetween(1, 2, "file"));
}

TEST(Input, Hex) {
    QByteArray bytes;
    ASSERT_TRUE(input::decodeHex("00 ff:A1\n0b", &bytes));
    EXPECT_EQ(bytes, QByteArray::fromHex("00ffa10b"));
    EXPECT_FALSE(input::decodeHex("0", &bytes));     // odd count
    EXPECT_FALSE(input::decodeHex("0 0", &bytes));   // a separator inside a byte
    EXPECT_FALSE(input::decodeHex("0g", &bytes));
    ASSERT_TRUE(input::decodeHex("", &bytes));
    EXPECT_TRUE(bytes.isEmpty());
}

TEST(Input, ByteValuesInEveryEncoding) {
    const QByteArray value = QByteArray::fromHex("30440220aabbccdd");
    QTemporaryFile raw, hex, base64, text;
    input::Encoding encoding;
    EXPECT_EQ(input::readByteValue(writeTemporary(raw, value), &encoding), value);
    EXPECT_EQ(encoding, input::Encoding::Raw);
    EXPECT_EQ(input::readByteValue(writeTemporary(hex, value.toHex() + "\n"), &encoding), value);
    EXPECT_EQ(encoding, input::Encoding::Hex);
    EXPECT_EQ(input::readByteValue(writeTemporary(base64, "MEQC\nIKq7zN0=\n"), &encoding), value);
    EXPECT_EQ(encoding, input::Encoding::Base64);
    EXPECT_THROW(input::readByteValue(writeTemporary(text, "not a value!\n")), CommandFailure);
    EXPECT_THROW(input::readByteValue(QStringLiteral("/nonexistent/value")), CommandFailure);
}

TEST(Input, TextAndWhitespace) {
    EXPECT_TRUE(input::isText("ab c\r\n\t"));
    EXPECT_FALSE(input::isText(QByteArray("a\0b", 3)));
    EXPECT_FALSE(input::isText("caf\xc3\xa9"));
    EXPECT_EQ(input::withoutWhitespace(" a\tb\r\nc\f"), QByteArray("abc"));
}

}  // namespace
