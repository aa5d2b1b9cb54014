#include "cli/input.h"

#include <QFile>
#include <QFileInfo>
#include <cstdio>

#include "cli/cli.h"
#include "output/console.h"

namespace input {
namespace {

[[noreturn]] void fail(const QString& path, const QString& reason) {
    throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(displayName(path), reason));
}

QByteArray readOpened(QFile& file, const QString& path) {
    QByteArray content;
    char chunk[65536];
    for (;;) {
        const qint64 count = file.read(chunk, sizeof chunk);
        if (count < 0)
            fail(path, file.errorString());
        if (count == 0)
            break;
        if (content.size() + count > kMaxInputSize)
            fail(path, QStringLiteral("larger than %1 bytes").arg(kMaxInputSize));
        content.append(chunk, static_cast<int>(count));
    }
    return content;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

}  // namespace

QString displayName(const QString& path) {
    return path == QLatin1String("-") ? QStringLiteral("standard input") : path;
}

QByteArray readFile(const QString& path) {
    QFile file;
    if (path == QLatin1String("-")) {
        if (!file.open(stdin, QIODevice::ReadOnly))
            fail(path, file.errorString());
        return readOpened(file, path);
    }
    if (QFileInfo(path).isDir())
        fail(path, QStringLiteral("is a directory"));
    file.setFileName(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(path, file.errorString());
    return readOpened(file, path);
}

void writeFile(const QString& path, const QByteArray& bytes) {
    if (path == QLatin1String("-")) {
        console::writeBytes(bytes);
        return;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size() ||
        !file.flush()) {
        throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(path, file.errorString()));
    }
}

QByteArray withoutWhitespace(const QByteArray& text) {
    QByteArray compact;
    compact.reserve(text.size());
    for (const char c : text) {
        if (!isBlank(c))
            compact.append(c);
    }
    return compact;
}

bool isText(const QByteArray& bytes) {
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (!isBlank(c) && (u < 0x20 || u > 0x7E))
            return false;
    }
    return true;
}

bool decodeHex(const QByteArray& text, QByteArray* bytes) {
    QByteArray decoded;
    int high = -1;
    for (const char c : text) {
        if (isBlank(c) || c == ':') {
            if (high >= 0)
                return false;  // a separator inside a byte
            continue;
        }
        const int value = hexValue(c);
        if (value < 0)
            return false;
        if (high < 0) {
            high = value;
        } else {
            decoded.append(static_cast<char>(high * 16 + value));
            high = -1;
        }
    }
    if (high >= 0)
        return false;
    *bytes = decoded;
    return true;
}

const char* encodingName(Encoding encoding) {
    switch (encoding) {
    case Encoding::Raw: return "raw";
    case Encoding::Hex: return "hex";
    case Encoding::Base64: return "base64";
    }
    return "raw";
}

QByteArray readByteValue(const QString& path, Encoding* encoding) {
    const QByteArray content = readFile(path);
    if (content.isEmpty())
        fail(path, QStringLiteral("empty file"));
    Encoding found = Encoding::Raw;
    QByteArray value = content;
    if (isText(content)) {
        if (decodeHex(content, &value)) {
            found = Encoding::Hex;
        } else {
            const auto decoded = QByteArray::fromBase64Encoding(withoutWhitespace(content),
                                                                QByteArray::AbortOnBase64DecodingErrors);
            if (!decoded)
                fail(path, QStringLiteral("text that is neither hex nor Base64"));
            value = *decoded;
            found = Encoding::Base64;
        }
        if (value.isEmpty())
            fail(path, QStringLiteral("no bytes in the text"));
    }
    if (encoding != nullptr)
        *encoding = found;
    return value;
}

}  // namespace input
