// The ZTBase64 component: the Base64 functions as invokable methods.
#ifndef ZTUTIL_ZTBASE64_H
#define ZTUTIL_ZTBASE64_H

#include <QByteArray>
#include <QObject>
#include <QString>

#include "ztutil_global.h"

class ZTUTIL_EXPORT ZTBase64 : public QObject {
    Q_OBJECT
public:
    explicit ZTBase64(QObject* parent = nullptr);
    ~ZTBase64() override;

    Q_INVOKABLE void setTableCode(char* p);
    Q_INVOKABLE QString encodeEx(QByteArray data);
    Q_INVOKABLE char* encodeBase64Ex(unsigned char* lpValue, int ValueLen, char* TableBase64);
    Q_INVOKABLE unsigned char* decodeBase64Ex(unsigned char* lpValue, int ValueLen,
                                              char* TableBase64, int* outlen);
};

#endif
