// 64-byte SM2 signature value to DER through the object model (the
// conversion behind ZTUtil::convSignDataToP1).
#ifndef ZTUTIL_SRC_VERIFY_SIGN_DATA_P1_H
#define ZTUTIL_SRC_VERIFY_SIGN_DATA_P1_H

#include <QByteArray>

// SEQUENCE { INTEGER r, INTEGER s } with ZTAsnBlock's INTEGER rule (a 00 in
// front only of a first byte above 0x80). Any size but 64 comes back
// unchanged; an empty array when the document cannot be made.
QByteArray convSignDataToP1(QByteArray data);

#endif
