// SM2 through the library's plain functions, in the steps its own
// verification takes (ZTVerifyTools::ZTSoftVerifyByCert): the key from the
// certificate (ZTGetPubKeyByCert) in an ECC public-key record, the digest
// e = SM3(Z || M), and SM2Verify. The digest is streamed through the
// library's SM3, so data of any size and any signer ID can be verified.
#ifndef ZTHOST_SM2_DIGEST_H
#define ZTHOST_SM2_DIGEST_H

#include <QByteArray>

#include "services/sm3_digest.h"

class ZtLibrary;

// The 132-byte ECC public-key record of the point x || y.
QByteArray eccRecord(const QByteArray& point);

// The key bits ZTGetPubKeyByCert finds in a certificate: 65 bytes 04 || x ||
// y for an SM2 key, empty when it finds none.
QByteArray libraryCertificateKey(const ZtLibrary& library, const QByteArray& certificateDer);

// e = SM3(Z || M): Z over the ID, the curve and the key x || y, then M in
// pieces, all through ztutil_sm3_starts, _update and _finish.
class Sm2DigestStream {
public:
    Sm2DigestStream(const ZtLibrary& library, const QByteArray& point, const QByteArray& id);
    void update(const char* data, int size) { stream_.update(data, size); }
    QByteArray finish() { return stream_.finish(); }

private:
    Sm3Stream stream_;
};

// ztutil_sm3_with_sm2 of `data` in one call.
QByteArray sm3WithSm2(const ZtLibrary& library, const QByteArray& data, const QByteArray& point, const QByteArray& id);

// SM2Verify(record of `point`, e, DER signature): true when it returns 0.
bool sm2VerifyDigest(const ZtLibrary& library, const QByteArray& point, const QByteArray& e, const QByteArray& der);

#endif
