#include "crypto/rsa_strict.h"

#include <openssl/objects.h>
#include <openssl/rsa.h>

#include <cstring>

#include "crypto/public_key.h"

namespace {

using X509SigPtr = std::unique_ptr<X509_SIG, OpenSslFree<X509_SIG, X509_SIG_free>>;

const int kSha1Size = 20;

// Names as people write them; others as OpenSSL's short name.
QString digestDisplayName(int nid) {
    switch (nid) {
    case NID_sha1: return QStringLiteral("SHA-1");
    case NID_sha224: return QStringLiteral("SHA-224");
    case NID_sha256: return QStringLiteral("SHA-256");
    case NID_sha384: return QStringLiteral("SHA-384");
    case NID_sha512: return QStringLiteral("SHA-512");
    case NID_sm3: return QStringLiteral("SM3");
    case NID_md5: return QStringLiteral("MD5");
    default: return QString::fromLatin1(OBJ_nid2sn(nid));
    }
}

}  // namespace

StrictRsaCheck::StrictRsaCheck(EVP_PKEY* key, const QByteArray& signature) {
    if (keyTypeOf(key) != KeyType::Rsa) {
        problem_ = QStringLiteral("the key is no RSA key");
        return;
    }
    open(key, signature);
}

void StrictRsaCheck::open(EVP_PKEY* key, const QByteArray& signature) {
    if (signature.size() != EVP_PKEY_get_size(key)) {
        problem_ = QStringLiteral("the signature has %1 bytes, the key's modulus %2").arg(signature.size()).arg(EVP_PKEY_get_size(key));
        return;
    }
    EvpPkeyCtxPtr context(EVP_PKEY_CTX_new(key, nullptr));
    QByteArray recovered(signature.size(), '\0');
    size_t recoveredSize = size_t(recovered.size());
    if (!context || EVP_PKEY_verify_recover_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) != 1 ||
        EVP_PKEY_verify_recover(context.get(), reinterpret_cast<unsigned char*>(recovered.data()), &recoveredSize,
                                bytesOf(signature), size_t(signature.size())) != 1) {
        problem_ = QStringLiteral("the signature does not open to a PKCS#1 v1.5 block with this key");
        return;
    }
    recovered.truncate(int(recoveredSize));
    if (!readDigestInfo(recovered) && recovered.size() == kSha1Size) {
        // A bare SHA-1 value, as the library also takes it.
        signedDigest_ = recovered;
        digestName_ = QStringLiteral("SHA-1");
        digest_.reset(EVP_MD_CTX_new());
        EVP_DigestInit_ex(digest_.get(), EVP_sha1(), nullptr);
    }
    if (!digest_ && problem_.isEmpty())
        problem_ = QStringLiteral("the signature carries no DigestInfo (%1 bytes recovered)").arg(recovered.size());
}

// A DigestInfo in exact DER, of a digest OpenSSL knows, with a value of the
// digest's size.
bool StrictRsaCheck::readDigestInfo(const QByteArray& recovered) {
    const unsigned char* cursor = bytesOf(recovered);
    X509SigPtr info(d2i_X509_SIG(nullptr, &cursor, recovered.size()));
    if (!info || cursor != bytesOf(recovered) + recovered.size())
        return false;
    unsigned char* reencoded = nullptr;
    const int reencodedSize = i2d_X509_SIG(info.get(), &reencoded);
    const bool exact = reencodedSize == recovered.size() && memcmp(reencoded, recovered.constData(), size_t(reencodedSize)) == 0;
    OPENSSL_free(reencoded);
    if (!exact)
        return false;
    digestInfo_ = true;
    const X509_ALGOR* algorithm = nullptr;
    const ASN1_OCTET_STRING* value = nullptr;
    X509_SIG_get0(info.get(), &algorithm, &value);
    const ASN1_OBJECT* oid = nullptr;
    X509_ALGOR_get0(&oid, nullptr, nullptr, algorithm);
    const int nid = OBJ_obj2nid(oid);
    const EVP_MD* md = EVP_get_digestbynid(nid);
    char dotted[80] = {};
    OBJ_obj2txt(dotted, sizeof dotted, oid, 1);
    digestName_ = nid == NID_undef ? QString::fromLatin1(dotted) : digestDisplayName(nid);
    if (nid == NID_md5 || nid == NID_md4) {
        // Colliding inputs are made at will: the signature could cover other data as well.
        brokenDigest_ = true;
        problem_ = QStringLiteral("the signature carries an %1 digest, which is broken (collisions are made at will)")
                       .arg(digestName_);
        return true;
    }
    if (md == nullptr) {
        problem_ = QStringLiteral("the signature carries a digest zthost cannot compute (%1)").arg(digestName_);
        return true;
    }
    signedDigest_ = QByteArray(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)), ASN1_STRING_length(value));
    if (signedDigest_.size() != EVP_MD_get_size(md)) {
        problem_ = QStringLiteral("the signed %1 digest has %2 bytes").arg(digestName_).arg(signedDigest_.size());
        return true;
    }
    digest_.reset(EVP_MD_CTX_new());
    if (!digest_ || EVP_DigestInit_ex(digest_.get(), md, nullptr) != 1) {
        digest_.reset();
        problem_ = QStringLiteral("OpenSSL cannot compute %1").arg(digestName_);
    }
    return true;
}

void StrictRsaCheck::update(const char* data, int size) {
    if (digest_)
        EVP_DigestUpdate(digest_.get(), data, size_t(size));
}

bool StrictRsaCheck::finish() {
    if (!digest_)
        return false;
    QByteArray computed(EVP_MAX_MD_SIZE, '\0');
    unsigned int computedSize = 0;
    EVP_DigestFinal_ex(digest_.get(), reinterpret_cast<unsigned char*>(computed.data()), &computedSize);
    digest_.reset();
    computed.truncate(int(computedSize));
    if (computed == signedDigest_)
        return true;
    problem_ = QStringLiteral("the signed %1 digest is not the %1 of the data").arg(digestName_);
    return false;
}
