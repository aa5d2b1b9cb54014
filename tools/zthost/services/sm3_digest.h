// SM3 and HMAC-SM3 through the library's streaming functions.
#ifndef ZTHOST_SM3_DIGEST_H
#define ZTHOST_SM3_DIGEST_H

#include <QByteArray>
#include <QString>

#include "host/library_symbols.h"

class ZtLibrary;

class Sm3Stream {
public:
    // A plain SM3 stream; throws CommandFailure when the library has no SM3.
    explicit Sm3Stream(const ZtLibrary& library);
    // An HMAC-SM3 stream keyed with `key`.
    Sm3Stream(const ZtLibrary& library, const QByteArray& key);

    void update(const char* data, int length);
    // The 32-byte digest (or MAC).
    QByteArray finish();

private:
    Sm3Context context_{};
    fn::Sm3Update update_ = nullptr;
    fn::Sm3Finish finish_ = nullptr;
};

// SM3 of `data` (ztutil_sm3).
QByteArray sm3Digest(const ZtLibrary& library, const QByteArray& data);

// SM3 of a named file through the library's own reader, ztutil_sm3_file.
// Throws CommandFailure when the file cannot be opened or read.
QByteArray sm3OfFile(const ZtLibrary& library, const QString& path);

// Feeds the content of `path` ("-" = standard input) to `stream` in chunks,
// with a progress line on a terminal for long reads. Throws CommandFailure
// when the file cannot be read.
void feedFile(Sm3Stream& stream, const QString& path);

#endif
