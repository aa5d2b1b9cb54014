// Public keys for zthost's strict checks, taken with OpenSSL from the forms
// users hold them in: a certificate, a SubjectPublicKeyInfo (PEM or DER), an
// SM2 point (64 bytes x || y, or 65 with the 0x04 prefix) or the 132-byte ECC
// public-key record of GM/T 0018.
#ifndef ZTHOST_CRYPTO_PUBLIC_KEY_H
#define ZTHOST_CRYPTO_PUBLIC_KEY_H

#include <QByteArray>
#include <QString>

#include "crypto/openssl_handles.h"

enum class KeyType { Sm2, Rsa, Other };
KeyType keyTypeOf(EVP_PKEY* key);

// The certificate's key; null when OpenSSL cannot read the certificate.
EvpPkeyPtr certificatePublicKey(const QByteArray& der);

struct PublicKeyFile {
    EvpPkeyPtr key;
    QString form;  // "SubjectPublicKeyInfo (PEM)", "64-byte SM2 point", ...
};

// One of the forms above; false with `error` saying why not.
bool readPublicKey(const QByteArray& bytes, PublicKeyFile* out, QString* error);

// An SM2 key as x || y (32 bytes each); empty for a key of another type.
QByteArray sm2Point(EVP_PKEY* key);

// The SM2 key at the point x || y; null, with `error`, when it is not on
// the curve.
EvpPkeyPtr sm2KeyFromPoint(const QByteArray& point, QString* error);

// The modulus size in bits and the public exponent of an RSA key (0 when
// the key is no RSA key or the exponent does not fit 64 bits).
int rsaBits(EVP_PKEY* key);
quint64 rsaExponent(EVP_PKEY* key);

// a || b || xG || yG of the SM2 curve, 32 bytes each, as OpenSSL knows it:
// the curve part of the SM2 Z value.
QByteArray sm2CurveBlock();

#endif
