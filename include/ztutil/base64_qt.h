// The Qt-typed member of the Base64 family (see base64.h).
#ifndef ZTUTIL_BASE64_QT_H
#define ZTUTIL_BASE64_QT_H

#include <QByteArray>
#include <QString>

#include "base64.h"

// ZTBase64Encode of the array as a QString; an empty array gives a null string.
ZTUTIL_C_API QString ZTBase64EncodeEx(QByteArray data);

#endif
