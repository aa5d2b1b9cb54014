#include "readers/zip_package.h"

#include <zip.h>

#include <QSet>
#include <QStringList>

#include "readers/format_error.h"

namespace {

const int kChunkSize = 65536;

void discard(zip* archive) {
    if (archive != nullptr)
        zip_discard(archive);
}

QString zipError(zip_error_t* error) {
    return QString::fromUtf8(zip_error_strerror(error));
}

// The name as a reader lenient about paths may take it: "\" read as "/",
// empty and "." parts dropped, case folded.
QString lenientName(const char* name) {
    QString unified = QString::fromUtf8(name);
    unified.replace(QLatin1Char('\\'), QLatin1Char('/'));
    QStringList parts = unified.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    parts.removeAll(QStringLiteral("."));
    return parts.join(QLatin1Char('/')).toLower();
}

// Two entries that name the same file make the archive ambiguous: a viewer
// may show the one that was not verified.
void refuseAmbiguousNames(zip* archive, zip_int64_t entries) {
    QSet<QString> seen;
    for (zip_int64_t index = 0; index < entries; ++index) {
        const char* name = zip_get_name(archive, zip_uint64_t(index), 0);
        if (name == nullptr)
            throw FormatError{QStringLiteral("entry %1 of the archive has no readable name").arg(index)};
        const QString key = lenientName(name);
        if (seen.contains(key))
            throw FormatError{QStringLiteral("the archive holds %1 more than once").arg(QString::fromUtf8(name))};
        seen.insert(key);
    }
}

}  // namespace

ZipPackage::ZipPackage(const QByteArray& bytes) : archive_(nullptr, discard) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(bytes.constData(), zip_uint64_t(bytes.size()), 0, &error);
    zip* archive = source != nullptr ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
    if (archive == nullptr) {
        const QString message = zipError(&error);
        if (source != nullptr)
            zip_source_free(source);
        zip_error_fini(&error);
        throw FormatError{QStringLiteral("not a zip archive (%1)").arg(message)};
    }
    zip_error_fini(&error);
    archive_.reset(archive);
    entries_ = zip_get_num_entries(archive, 0);
    if (entries_ > kMaxZipEntries)
        throw FormatError{QStringLiteral("the archive has %1 entries, more than the %2 zthost reads")
                              .arg(entries_).arg(kMaxZipEntries)};
    refuseAmbiguousNames(archive, entries_);
}

ZipPackage::~ZipPackage() = default;

bool ZipPackage::contains(const QString& name) const {
    return !name.isEmpty() && zip_name_locate(archive_.get(), name.toUtf8().constData(), 0) >= 0;
}

QByteArray ZipPackage::read(const QString& name, qint64 limit) const {
    QByteArray content;
    readChunks(name, limit, [&content](const char* data, int size) { content.append(data, size); });
    return content;
}

qint64 ZipPackage::readChunks(const QString& name, qint64 limit,
                              const std::function<void(const char*, int)>& sink) const {
    const zip_int64_t index = zip_name_locate(archive_.get(), name.toUtf8().constData(), 0);
    if (name.isEmpty() || index < 0)
        throw FormatError{QStringLiteral("%1 is not in the package").arg(name)};
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat_index(archive_.get(), zip_uint64_t(index), 0, &stat) != 0 || !(stat.valid & ZIP_STAT_SIZE))
        throw FormatError{QStringLiteral("%1: the archive's directory entry is unreadable").arg(name)};
    if ((stat.valid & ZIP_STAT_ENCRYPTION_METHOD) && stat.encryption_method != ZIP_EM_NONE)
        throw FormatError{QStringLiteral("%1 is encrypted").arg(name)};
    const qint64 declared = qint64(stat.size);
    if (stat.size > zip_uint64_t(limit))
        throw FormatError{QStringLiteral("%1 declares %2 bytes, more than the %3 zthost reads").arg(name)
                              .arg(stat.size).arg(limit)};
    std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(zip_fopen_index(archive_.get(), zip_uint64_t(index), 0),
                                                            zip_fclose);
    if (!file)
        throw FormatError{QStringLiteral("%1 cannot be opened (%2)").arg(name, zipError(zip_get_error(archive_.get())))};
    char chunk[kChunkSize];
    qint64 total = 0;
    for (;;) {
        const zip_int64_t count = zip_fread(file.get(), chunk, sizeof chunk);
        if (count < 0)
            throw FormatError{QStringLiteral("%1 is damaged (%2)").arg(name, zipError(zip_file_get_error(file.get())))};
        if (count == 0)
            break;
        total += count;
        if (total > declared)
            throw FormatError{QStringLiteral("%1 inflates to more than the %2 bytes it declares").arg(name).arg(declared)};
        sink(chunk, int(count));
    }
    if (total != declared)
        throw FormatError{QStringLiteral("%1 holds %2 bytes, not the %3 it declares").arg(name).arg(total).arg(declared)};
    return total;
}
