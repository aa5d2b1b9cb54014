// The DER form of an SM2 signature value, SEQUENCE { INTEGER r, INTEGER s },
// read without the library: for telling forms apart and for bringing r and
// s to the 64-byte form where the library would misread them.
#ifndef ZTHOST_READERS_SM2_VALUE_H
#define ZTHOST_READERS_SM2_VALUE_H

#include <QByteArray>
#include <QString>

#include "readers/der.h"

struct Sm2Integers {
    der::Element r;
    der::Element s;
};

// The two INTEGERs of a DER signature value; false for anything else.
bool readSm2Integers(const ByteView& value, Sm2Integers* integers);

// r || s, 32 bytes each, from the DER form; false when an INTEGER is
// negative or does not fit 32 bytes.
bool sm2DerTo64(const ByteView& value, QByteArray* raw);

// r || s from a signature value in any of its forms: 64 bytes; 128 bytes
// whose padding halves are zero; DER with INTEGERs of any length that fits
// 32 bytes. False, with `problem` saying why, for anything else.
bool sm2ValueToRs(const QByteArray& value, QByteArray* rs, QString* problem);

// The library reads an INTEGER content of 32 bytes, or 33 with a sign octet,
// and nothing else correctly: the index (0 r, 1 s) of the first it would
// misread, or -1.
int firstMisreadInteger(const Sm2Integers& integers);

#endif
