#include "services/sm2_digest.h"

#include <cstring>

#include "crypto/public_key.h"
#include "host/library_symbols.h"

namespace {

const int kCoordinate = 32;
const int kRecordSize = 132;
const int kRecordX = 36;   // the last 32 bytes of the 64-byte x field
const int kRecordY = 100;  // the last 32 bytes of the 64-byte y field
const quint32 kKeyBits = 256;
const int kDigestSize = 32;

unsigned char* bytesOf(QByteArray& array) {
    return reinterpret_cast<unsigned char*>(array.data());
}

// ENTL || ID || a || b || xG || yG || xA || yA: what Z is the SM3 of.
QByteArray zPreimage(const QByteArray& point, const QByteArray& id) {
    const int bits = (id.size() * 8) & 0xFFFF;
    QByteArray preimage;
    preimage.append(char(bits >> 8)).append(char(bits & 0xFF));
    return preimage + id + sm2CurveBlock() + point;
}

}  // namespace

QByteArray eccRecord(const QByteArray& point) {
    QByteArray record(kRecordSize, '\0');
    std::memcpy(record.data(), &kKeyBits, sizeof kKeyBits);  // host byte order
    record.replace(kRecordX, kCoordinate, point.left(kCoordinate));
    record.replace(kRecordY, kCoordinate, point.mid(kCoordinate, kCoordinate));
    return record;
}

QByteArray libraryCertificateKey(const ZtLibrary& library, const QByteArray& certificateDer) {
    auto getKey = requireSymbol<fn::GetPubKeyByCert>(library, Symbol::GetPubKeyByCert);
    QByteArray certificate = certificateDer;
    unsigned int size = 0;
    if (getKey(bytesOf(certificate), unsigned(certificate.size()), nullptr, &size) != 1 || size == 0)
        return QByteArray();
    QByteArray key(int(size), '\0');
    if (getKey(bytesOf(certificate), unsigned(certificate.size()), bytesOf(key), &size) != 1)
        return QByteArray();
    key.truncate(int(size));
    return key;
}

Sm2DigestStream::Sm2DigestStream(const ZtLibrary& library, const QByteArray& point, const QByteArray& id)
    : stream_(library) {
    Sm3Stream z(library);
    const QByteArray preimage = zPreimage(point, id);
    z.update(preimage.constData(), preimage.size());
    const QByteArray zValue = z.finish();
    stream_.update(zValue.constData(), zValue.size());
}

QByteArray sm3WithSm2(const ZtLibrary& library, const QByteArray& data, const QByteArray& point, const QByteArray& id) {
    auto digest = requireSymbol<fn::Sm3WithSm2>(library, Symbol::Sm3WithSm2);
    QByteArray message = data;
    QByteArray record = eccRecord(point);
    QByteArray e(kDigestSize, '\0');
    if (digest(bytesOf(message), message.size(), bytesOf(record), record.size(), id.constData(), id.size(), bytesOf(e)) != 1)
        return QByteArray();
    return e;
}

bool sm2VerifyDigest(const ZtLibrary& library, const QByteArray& point, const QByteArray& e, const QByteArray& der) {
    auto verify = requireSymbol<fn::Sm2Verify>(library, Symbol::Sm2Verify);
    QByteArray record = eccRecord(point);
    QByteArray digest = e;
    QByteArray signature = der;
    return verify(bytesOf(record), unsigned(record.size()), bytesOf(digest), unsigned(digest.size()),
                  bytesOf(signature), unsigned(signature.size())) == 0;
}
