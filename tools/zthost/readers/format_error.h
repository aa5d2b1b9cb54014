// What every structure reader throws when its input does not have the
// expected shape.
#ifndef ZTHOST_READERS_FORMAT_ERROR_H
#define ZTHOST_READERS_FORMAT_ERROR_H

#include <QString>

// `message` says what and where ("the seal at offset 12 has tag 0x04,
// expected 0x30").
struct FormatError {
    QString message;
};

#endif
