// A zip archive held in memory, read with libzip. Every read is bounded:
// an entry that declares more than the caller's limit is refused before it
// is inflated, and one that inflates to more than it declares (or than the
// limit) is cut off with an error. An archive holding one name twice (also
// when the names differ only in case, "\" for "/" or "." parts) is refused.
// Nothing is written anywhere.
#ifndef ZTHOST_READERS_ZIP_PACKAGE_H
#define ZTHOST_READERS_ZIP_PACKAGE_H

#include <QByteArray>
#include <QString>
#include <functional>
#include <memory>

#include "readers/format_error.h"

struct zip;

// Archives with more entries than this are refused.
constexpr qint64 kMaxZipEntries = 100000;

class ZipPackage {
public:
    // `bytes` must outlive the package. Throws FormatError when they are no
    // zip archive zthost can read.
    explicit ZipPackage(const QByteArray& bytes);
    ~ZipPackage();
    ZipPackage(const ZipPackage&) = delete;
    ZipPackage& operator=(const ZipPackage&) = delete;

    qint64 entryCount() const { return entries_; }
    // True when an entry of exactly this name (case as given) exists.
    bool contains(const QString& name) const;
    // The whole entry; throws FormatError when it is absent, encrypted,
    // damaged or larger than `limit`.
    QByteArray read(const QString& name, qint64 limit) const;
    // The entry in chunks handed to `sink`; the same checks. Returns the size.
    qint64 readChunks(const QString& name, qint64 limit, const std::function<void(const char*, int)>& sink) const;

private:
    std::unique_ptr<zip, void (*)(zip*)> archive_;
    qint64 entries_ = 0;
};

#endif
