// An SM2 signature answered twice: by the library, and strictly by
// OpenSSL's own SM2 verification (SM3 with the Z value of the same ID, r and
// s read from the signature value by zthost). Where the two differ the
// check says why in one sentence, and the strict answer decides.
#ifndef ZTHOST_VERIFY_SM2_CHECK_H
#define ZTHOST_VERIFY_SM2_CHECK_H

#include <QByteArray>
#include <memory>

#include "crypto/openssl_handles.h"
#include "services/sm2_signature.h"
#include "verify/verdict.h"

class HostSession;
class Sm2DigestStream;
class StrictSm2Check;

// The signer: a certificate, or a public key alone (then `certificate` is
// empty).
struct Sm2Signer {
    QByteArray certificate;
    EVP_PKEY* key = nullptr;  // the strict check's key; owned by the caller
};

// Over data given in pieces. The library's answer takes the steps of its
// own verification (ZTSoftVerifyByCert): the key through ZTGetPubKeyByCert
// (or the given key), the signature through its conversions to DER, e =
// SM3(Z || data) streamed through its SM3, and SM2Verify.
class Sm2SignatureCheck {
public:
    Sm2SignatureCheck(HostSession& session, const QByteArray& value, SignatureForm form, const Sm2Signer& signer,
                      const QByteArray& id);
    ~Sm2SignatureCheck();

    void update(const char* data, int size);
    Check finish(CheckScope scope, const QString& name);

private:
    HostSession& session_;
    QByteArray value_;
    SignatureForm form_;
    bool libraryHasKey_ = false;
    QByteArray libraryPoint_;
    QByteArray libraryDer_;
    std::unique_ptr<Sm2DigestStream> libraryDigest_;
    QString strictProblem_;
    std::unique_ptr<StrictSm2Check> strict_;
};

// A value from a seal or signedData (64-byte r || s, or DER) over `data` in
// memory, with the signer's certificate and the default ID; the library's
// answer is VerifySignatureValue's, as a host gets it.
Check checkSm2Value(HostSession& session, CheckScope scope, const QString& name, const QByteArray& value,
                    const QByteArray& certificate, const QByteArray& data);

// The DER signature `der` on `data` by `key` with the default ID (as a
// certificate carries one): the library's answer from ztutil_sm3_with_sm2
// and SM2Verify, which read the DER as it stands.
Check checkSm2Der(HostSession& session, CheckScope scope, const QString& name, const QByteArray& der, EVP_PKEY* key,
                  const QByteArray& data);

#endif
