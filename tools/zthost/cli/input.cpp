#include "cli/input.h"

#include <QFile>
#include <QFileInfo>
#include <cstdio>
#include <limits>
#include <vector>

#include "cli/cli.h"
#include "output/console.h"
#include "output/progress.h"

namespace input {
namespace {

[[noreturn]] void fail(const QString& path, const QString& reason) {
    throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(displayName(path), reason));
}

const int kChunkSize = 65536;

[[noreturn]] void failTooLarge(const QString& path, qint64 limit) {
    fail(path, QStringLiteral("larger than %1 bytes").arg(limit));
}

// Opens `path` ("-": standard input) for reading; a regular file larger
// than `limit` is refused before anything is read. The size is -1 when it
// is not known in advance.
void openInput(QFile& file, const QString& path, qint64 limit, qint64* size) {
    *size = -1;
    if (path == QLatin1String("-")) {
        if (!file.open(stdin, QIODevice::ReadOnly))
            fail(path, file.errorString());
        return;
    }
    const QFileInfo info(path);
    if (info.isDir())
        fail(path, QStringLiteral("is a directory"));
    if (info.isFile()) {
        *size = info.size();
        if (*size > limit)
            failTooLarge(path, limit);
    }
    file.setFileName(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(path, file.errorString());
}

qint64 readChunk(QFile& file, const QString& path, char* chunk) {
    const qint64 count = file.read(chunk, kChunkSize);
    if (count < 0)
        fail(path, file.errorString());
    return count;
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

QByteArray readFile(const QString& path, qint64 limit) {
    QFile file;
    qint64 size = -1;
    openInput(file, path, limit, &size);
    QByteArray content;
    if (size > 0)
        content.reserve(int(size));
    std::vector<char> chunk(kChunkSize);
    while (const qint64 count = readChunk(file, path, chunk.data())) {
        if (content.size() + count > limit)
            failTooLarge(path, limit);
        content.append(chunk.data(), int(count));
    }
    return content;
}

void readChunksWith(const QString& path, const QString& label, ChunkConsumer consumer, void* state) {
    QFile file;
    qint64 size = -1;
    openInput(file, path, std::numeric_limits<qint64>::max(), &size);
    Progress progress(label, size);
    std::vector<char> chunk(kChunkSize);
    while (const qint64 count = readChunk(file, path, chunk.data())) {
        consumer(state, chunk.data(), int(count));
        progress.advance(count);
    }
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
    return decodeByteValue(readFile(path, kMaxValueSize), path, encoding);
}

QByteArray decodeByteValue(const QByteArray& content, const QString& path, Encoding* encoding) {
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
