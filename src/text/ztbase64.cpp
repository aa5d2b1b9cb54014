#include "ztutil/ztbase64.h"

#include "ztutil/base64_qt.h"

ZTBase64::ZTBase64(QObject* parent) : QObject(parent) {}

ZTBase64::~ZTBase64() = default;

void ZTBase64::setTableCode(char* p) {
    ZTBase64SetTableCode(p);
}

QString ZTBase64::encodeEx(QByteArray data) {
    return ZTBase64EncodeEx(data);
}

char* ZTBase64::encodeBase64Ex(unsigned char* lpValue, int ValueLen, char* TableBase64) {
    return EnCodeBase64Ex(lpValue, ValueLen, TableBase64);
}

unsigned char* ZTBase64::decodeBase64Ex(unsigned char* lpValue, int ValueLen, char* TableBase64,
                                        int* outlen) {
    return DeCodeBase64Ex(lpValue, ValueLen, TableBase64, outlen);
}
