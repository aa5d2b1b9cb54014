#include "crypto/public_key.h"

#include <openssl/core_names.h>
#include <openssl/obj_mac.h>
#include <openssl/param_build.h>
#include <openssl/pem.h>

namespace {

const int kCoordinate = 32;
const int kPointSize = 2 * kCoordinate;
const int kRecordSize = 132;
const int kRecordField = 64;
const int kRecordX = 4;
const int kRecordY = kRecordX + kRecordField;
const unsigned char kUncompressed = 0x04;

using ParamBuilderPtr = std::unique_ptr<OSSL_PARAM_BLD, OpenSslFree<OSSL_PARAM_BLD, OSSL_PARAM_BLD_free>>;
using ParamsPtr = std::unique_ptr<OSSL_PARAM, OpenSslFree<OSSL_PARAM, OSSL_PARAM_free>>;
using BioPtr = std::unique_ptr<BIO, OpenSslFree<BIO, BIO_free_all>>;

QByteArray padded(const BIGNUM* value, int size) {
    QByteArray bytes(size, '\0');
    if (BN_bn2binpad(value, reinterpret_cast<unsigned char*>(bytes.data()), size) != size)
        return QByteArray();
    return bytes;
}

bool isZero(const QByteArray& bytes) {
    return bytes.count('\0') == bytes.size();
}

EvpPkeyPtr spkiFromPem(const QByteArray& text) {
    BioPtr bio(BIO_new_mem_buf(text.constData(), text.size()));
    return EvpPkeyPtr(bio ? PEM_read_bio_PUBKEY(bio.get(), nullptr, nullptr, nullptr) : nullptr);
}

EvpPkeyPtr spkiFromDer(const QByteArray& der) {
    const unsigned char* cursor = bytesOf(der);
    EvpPkeyPtr key(d2i_PUBKEY(nullptr, &cursor, der.size()));
    if (key && cursor != bytesOf(der) + der.size())
        key.reset();
    return key;
}

// x || y of a 132-byte record: each right-aligned in a 64-byte field.
bool pointOfRecord(const QByteArray& record, QByteArray* point, QString* error) {
    const QByteArray xField = record.mid(kRecordX, kRecordField);
    const QByteArray yField = record.mid(kRecordY, kRecordField);
    if (!isZero(xField.left(kCoordinate)) || !isZero(yField.left(kCoordinate))) {
        *error = QStringLiteral("a 132-byte ECC record whose x or y does not fit 32 bytes");
        return false;
    }
    *point = xField.right(kCoordinate) + yField.right(kCoordinate);
    return true;
}

}  // namespace

KeyType keyTypeOf(EVP_PKEY* key) {
    if (key == nullptr)
        return KeyType::Other;
    if (EVP_PKEY_is_a(key, "SM2"))
        return KeyType::Sm2;
    if (EVP_PKEY_is_a(key, "RSA"))
        return KeyType::Rsa;
    char group[64] = {};
    if (EVP_PKEY_is_a(key, "EC") &&
        EVP_PKEY_get_utf8_string_param(key, OSSL_PKEY_PARAM_GROUP_NAME, group, sizeof group, nullptr) &&
        QByteArray(group) == "SM2")
        return KeyType::Sm2;
    return KeyType::Other;
}

EvpPkeyPtr certificatePublicKey(const QByteArray& der) {
    X509Ptr certificate = parseX509(der);
    return EvpPkeyPtr(certificate ? X509_get_pubkey(certificate.get()) : nullptr);
}

bool readPublicKey(const QByteArray& bytes, PublicKeyFile* out, QString* error) {
    if (bytes.contains("-----BEGIN")) {
        out->key = spkiFromPem(bytes);
        out->form = QStringLiteral("SubjectPublicKeyInfo (PEM)");
    } else if (EvpPkeyPtr key = spkiFromDer(bytes)) {
        out->key = std::move(key);
        out->form = QStringLiteral("SubjectPublicKeyInfo (DER)");
    } else {
        QByteArray point;
        if (bytes.size() == kPointSize) {
            point = bytes;
            out->form = QStringLiteral("64-byte SM2 point");
        } else if (bytes.size() == kPointSize + 1 && static_cast<unsigned char>(bytes.at(0)) == kUncompressed) {
            point = bytes.mid(1);
            out->form = QStringLiteral("65-byte SM2 point");
        } else if (bytes.size() == kRecordSize) {
            if (!pointOfRecord(bytes, &point, error))
                return false;
            out->form = QStringLiteral("132-byte ECC public-key record");
        } else {
            *error = QStringLiteral("neither a SubjectPublicKeyInfo (PEM or DER) nor an SM2 point (64 or 65 bytes) "
                                    "nor a 132-byte ECC record (%1 bytes)").arg(bytes.size());
            return false;
        }
        out->key = sm2KeyFromPoint(point, error);
        return out->key != nullptr;
    }
    if (!out->key) {
        *error = QStringLiteral("OpenSSL cannot read the public key");
        return false;
    }
    return true;
}

QByteArray sm2Point(EVP_PKEY* key) {
    if (keyTypeOf(key) != KeyType::Sm2)
        return QByteArray();
    BIGNUM* x = nullptr;
    BIGNUM* y = nullptr;
    QByteArray point;
    if (EVP_PKEY_get_bn_param(key, OSSL_PKEY_PARAM_EC_PUB_X, &x) && EVP_PKEY_get_bn_param(key, OSSL_PKEY_PARAM_EC_PUB_Y, &y))
        point = padded(x, kCoordinate) + padded(y, kCoordinate);
    BN_free(x);
    BN_free(y);
    return point.size() == kPointSize ? point : QByteArray();
}

EvpPkeyPtr sm2KeyFromPoint(const QByteArray& point, QString* error) {
    const QByteArray encoded = char(kUncompressed) + point;
    ParamBuilderPtr builder(OSSL_PARAM_BLD_new());
    EvpPkeyCtxPtr context(EVP_PKEY_CTX_new_from_name(nullptr, "SM2", nullptr));
    ParamsPtr params;
    if (builder && OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, "SM2", 0) &&
        OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, encoded.constData(),
                                         size_t(encoded.size())))
        params.reset(OSSL_PARAM_BLD_to_param(builder.get()));
    EVP_PKEY* made = nullptr;
    if (point.size() != kPointSize || !params || !context || EVP_PKEY_fromdata_init(context.get()) != 1 ||
        EVP_PKEY_fromdata(context.get(), &made, EVP_PKEY_PUBLIC_KEY, params.get()) != 1) {
        *error = QStringLiteral("the point is not on the SM2 curve");
        return nullptr;
    }
    EvpPkeyPtr key(made);
    EvpPkeyCtxPtr check(EVP_PKEY_CTX_new(key.get(), nullptr));
    if (!check || EVP_PKEY_public_check(check.get()) != 1) {
        *error = QStringLiteral("the point is not a valid SM2 public key");
        return nullptr;
    }
    return key;
}

int rsaBits(EVP_PKEY* key) {
    return keyTypeOf(key) == KeyType::Rsa ? EVP_PKEY_get_bits(key) : 0;
}

quint64 rsaExponent(EVP_PKEY* key) {
    BIGNUM* exponent = nullptr;
    quint64 value = 0;
    if (keyTypeOf(key) == KeyType::Rsa && EVP_PKEY_get_bn_param(key, OSSL_PKEY_PARAM_RSA_E, &exponent) &&
        BN_num_bits(exponent) <= 64)
        value = BN_get_word(exponent);
    BN_free(exponent);
    return value;
}

QByteArray sm2CurveBlock() {
    EcGroupPtr group(EC_GROUP_new_by_curve_name(NID_sm2));
    BignumPtr p(BN_new()), a(BN_new()), b(BN_new()), x(BN_new()), y(BN_new());
    if (!group || !p || !a || !b || !x || !y || !EC_GROUP_get_curve(group.get(), p.get(), a.get(), b.get(), nullptr) ||
        !EC_POINT_get_affine_coordinates(group.get(), EC_GROUP_get0_generator(group.get()), x.get(), y.get(), nullptr))
        return QByteArray();
    return padded(a.get(), kCoordinate) + padded(b.get(), kCoordinate) + padded(x.get(), kCoordinate) +
           padded(y.get(), kCoordinate);
}
