// zthost's OFD package reader (libzip from memory, QXmlStreamReader) on
// arbitrary bytes. Beyond not crashing: every path it resolves is a plain
// package path (no "..", no leading "/", no empty part) naming an entry
// that exists, and no read hands back more than its limit.
#include <QtGlobal>
#include <cstdint>

#include "readers/ofd_package.h"

namespace {

const qint64 kReadLimit = 1 << 20;

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

void checkPath(const OfdPackage& package, const QString& path) {
    if (path.isEmpty())
        return;
    check(!path.startsWith(QLatin1Char('/')) && !path.contains(QLatin1String("//")));
    check(!path.split(QLatin1Char('/')).contains(QStringLiteral("..")));
    check(package.zip().contains(path));
}

void readSignature(const OfdPackage& package, const QString& path) {
    const QByteArray xml = package.zip().read(path, kReadLimit);
    check(xml.size() <= kReadLimit);
    const OfdSignatureFile file = package.signatureFile(path, xml);
    checkPath(package, file.signedValuePath);
    for (const OfdReference& reference : file.references) {
        checkPath(package, reference.path);
        if (!reference.path.isEmpty()) {
            qint64 seen = 0;
            const qint64 size = package.zip().readChunks(reference.path, kReadLimit, [&](const char*, int chunk) { seen += chunk; });
            check(size == seen && size <= kReadLimit);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        return true;
    }();
    Q_UNUSED(quiet)
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), int(size));
    try {
        const OfdPackage package(bytes);
        for (const OfdDocument& document : package.documents()) {
            checkPath(package, document.signaturesPath);
            for (const OfdSignatureEntry& entry : document.signatures) {
                checkPath(package, entry.path);
                try {
                    if (!entry.path.isEmpty())
                        readSignature(package, entry.path);
                } catch (const FormatError& error) {
                    check(!error.message.isEmpty());
                }
            }
        }
    } catch (const FormatError& error) {
        check(!error.message.isEmpty());
    }
    return 0;
}
