#include "services/sm3_digest.h"

#include <QFile>
#include <QFileInfo>
#include <cstdio>

#include "cli/cli.h"
#include "cli/input.h"
#include "host/library.h"

namespace {

const int kDigestSize = 32;

}  // namespace

Sm3Stream::Sm3Stream(const ZtLibrary& library)
    : update_(requireSymbol<fn::Sm3Update>(library, Symbol::Sm3Update)),
      finish_(requireSymbol<fn::Sm3Finish>(library, Symbol::Sm3Finish)) {
    requireSymbol<fn::Sm3Starts>(library, Symbol::Sm3Starts)(&context_);
}

Sm3Stream::Sm3Stream(const ZtLibrary& library, const QByteArray& key)
    : update_(requireSymbol<fn::Sm3Update>(library, Symbol::Sm3HmacUpdate)),
      finish_(requireSymbol<fn::Sm3Finish>(library, Symbol::Sm3HmacFinish)) {
    QByteArray keyCopy = key;
    requireSymbol<fn::Sm3HmacStarts>(library, Symbol::Sm3HmacStarts)(
        &context_, reinterpret_cast<unsigned char*>(keyCopy.data()), keyCopy.size());
}

void Sm3Stream::update(const char* data, int length) {
    // The library takes a non-const pointer but does not write through it.
    update_(&context_, reinterpret_cast<unsigned char*>(const_cast<char*>(data)), length);
}

QByteArray Sm3Stream::finish() {
    QByteArray digest(kDigestSize, '\0');
    finish_(&context_, reinterpret_cast<unsigned char*>(digest.data()));
    return digest;
}

QByteArray sm3Digest(const ZtLibrary& library, const QByteArray& data) {
    auto digest = requireSymbol<fn::Sm3>(library, Symbol::Sm3);
    QByteArray input = data;
    QByteArray output(kDigestSize, '\0');
    digest(reinterpret_cast<unsigned char*>(input.data()), input.size(), reinterpret_cast<unsigned char*>(output.data()));
    return output;
}

QByteArray sm3OfFile(const ZtLibrary& library, const QString& path) {
    auto digestFile = requireSymbol<fn::Sm3File>(library, Symbol::Sm3File);
    QByteArray name = QFile::encodeName(path);
    QByteArray digest(kDigestSize, '\0');
    const int status = digestFile(name.data(), reinterpret_cast<unsigned char*>(digest.data()));
    if (status == 1)
        throw CommandFailure(kExitFailed, QStringLiteral("%1: cannot open").arg(path));
    if (status != 0)  // 2: the digest covers only what was read before the error
        throw CommandFailure(kExitFailed, QStringLiteral("%1: read error").arg(path));
    return digest;
}

void feedFile(Sm3Stream& stream, const QString& path) {
    input::readChunks(path, input::displayName(path), [&](const char* data, int size) { stream.update(data, size); });
}
