#include "verify/sm2_check.h"

#include "crypto/public_key.h"
#include "crypto/sm2_strict.h"
#include "host/host_session.h"
#include "readers/sm2_value.h"
#include "services/signature_check.h"
#include "services/sm2_digest.h"

namespace {

const int kRawSize = 64;
// OpenSSL's SM2 takes a DER signature in its one minimal encoding only.
const QString kNotCanonical = QStringLiteral("the DER signature is not minimally encoded (padded INTEGERs or long "
                                             "lengths), which OpenSSL's SM2 verification refuses");

// Why the library rejects a signature that verifies, where zthost can tell.
QString libraryRejectionReason(const QByteArray& value, SignatureForm form, bool libraryHasKey) {
    if (!libraryHasKey)
        return QStringLiteral("the library finds no SM2 public key in the certificate (it reads the key of "
                              "version-3 certificates only)");
    Sm2Integers integers;
    if (form == SignatureForm::Der && readSm2Integers(ByteView::of(value), &integers)) {
        const int misread = firstMisreadInteger(integers);
        if (misread >= 0)
            return QStringLiteral("the library reads the %1-byte INTEGER %2 of the DER signature as 32 bytes, and so "
                                  "misreads a signature that verifies")
                .arg((misread == 0 ? integers.r : integers.s).content.size())
                .arg(QLatin1String(misread == 0 ? "r" : "s"));
    }
    return QStringLiteral("the library rejects this signature; OpenSSL's SM2 verification accepts it");
}

Check sm2Check(CheckScope scope, const QString& name, bool library, bool strict, const QString& strictProblem,
               const QString& rejectionReason) {
    Check check;
    check.scope = scope;
    check.name = name;
    check.library = answerOf(library);
    check.strict = answerOf(strict);
    check.problem = QStringLiteral("the %1 does not verify").arg(name);
    if (library && !strict)
        check.disagreement = QStringLiteral("the library accepts this signature; OpenSSL's SM2 verification does "
                                            "not (%1)").arg(strictProblem);
    else if (!library && strict)
        check.disagreement = rejectionReason;
    if (!strict && !strictProblem.isEmpty())
        check.problem += QStringLiteral(": ") + strictProblem;
    return check;
}

std::unique_ptr<StrictSm2Check> strictCheck(EVP_PKEY* key, const QByteArray& id, const QByteArray& value,
                                            QString* problem) {
    QByteArray rs;
    if (key == nullptr) {
        *problem = QStringLiteral("OpenSSL cannot read the signer's public key");
        return nullptr;
    }
    if (!sm2ValueToRs(value, &rs, problem))
        return nullptr;
    if (value.size() != kRawSize && value.size() != 2 * kRawSize && sm2Der(rs) != value) {
        *problem = kNotCanonical;
        return nullptr;
    }
    return std::make_unique<StrictSm2Check>(key, id, rs);
}

bool strictFinish(std::unique_ptr<StrictSm2Check>& check, QString* problem) {
    if (!check)
        return false;
    const bool valid = check->finish();
    if (!valid)
        *problem = check->problem();
    return valid;
}

}  // namespace

Sm2SignatureCheck::Sm2SignatureCheck(HostSession& session, const QByteArray& value, SignatureForm form,
                                     const Sm2Signer& signer, const QByteArray& id)
    : session_(session), value_(value), form_(form) {
    const ZtLibrary& library = session.library();
    if (signer.certificate.isEmpty()) {
        libraryPoint_ = sm2Point(signer.key);
    } else {
        const QByteArray bits = libraryCertificateKey(library, signer.certificate);
        if (bits.size() == kRawSize + 1)
            libraryPoint_ = bits.mid(1);  // the first byte, 0x04, is not checked
    }
    libraryHasKey_ = libraryPoint_.size() == kRawSize;
    libraryDer_ = libraryVerificationDer(library, value, form);
    if (libraryHasKey_)
        libraryDigest_ = std::make_unique<Sm2DigestStream>(library, libraryPoint_, id);
    strict_ = strictCheck(signer.key, id, value, &strictProblem_);
}

Sm2SignatureCheck::~Sm2SignatureCheck() = default;

void Sm2SignatureCheck::update(const char* data, int size) {
    if (libraryDigest_)
        libraryDigest_->update(data, size);
    if (strict_)
        strict_->update(data, size);
}

Check Sm2SignatureCheck::finish(CheckScope scope, const QString& name) {
    const bool library = libraryDigest_ && !libraryDer_.isEmpty() &&
                         sm2VerifyDigest(session_.library(), libraryPoint_, libraryDigest_->finish(), libraryDer_);
    const bool strict = strictFinish(strict_, &strictProblem_);
    return sm2Check(scope, name, library, strict, strictProblem_,
                    library || !strict ? QString() : libraryRejectionReason(value_, form_, libraryHasKey_));
}

Check checkSm2Value(HostSession& session, CheckScope scope, const QString& name, const QByteArray& value,
                    const QByteArray& certificate, const QByteArray& data) {
    const SignatureForm form = value.size() == kRawSize ? SignatureForm::Bytes64 : SignatureForm::Der;
    const bool library = verifySm2(session.library(), value, form, certificate, data);
    QString strictProblem;
    EvpPkeyPtr key = certificatePublicKey(certificate);
    std::unique_ptr<StrictSm2Check> strict = strictCheck(key.get(), kDefaultSm2UserId, value, &strictProblem);
    if (strict)
        strict->update(data.constData(), data.size());
    const bool strictValid = strictFinish(strict, &strictProblem);
    QString reason;
    if (!library && strictValid)
        reason = libraryRejectionReason(value, form,
                                        libraryCertificateKey(session.library(), certificate).size() == kRawSize + 1);
    return sm2Check(scope, name, library, strictValid, strictProblem, reason);
}

Check checkSm2Der(HostSession& session, CheckScope scope, const QString& name, const QByteArray& der, EVP_PKEY* key,
                  const QByteArray& data) {
    const ZtLibrary& library = session.library();
    const QByteArray point = sm2Point(key);
    const bool libraryValid =
        point.size() == kRawSize && sm2VerifyDigest(library, point, sm3WithSm2(library, data, point, kDefaultSm2UserId), der);
    QString strictProblem;
    QByteArray rs;
    bool strictValid = false;
    if (keyTypeOf(key) != KeyType::Sm2) {
        strictProblem = QStringLiteral("the issuer's key is no SM2 key");
    } else if (!sm2DerTo64(ByteView::of(der), &rs)) {
        strictProblem = QStringLiteral("the signature is no DER SEQUENCE of two INTEGERs of up to 32 bytes");
    } else if (sm2Der(rs) != der) {
        strictProblem = kNotCanonical;
    } else {
        StrictSm2Check strict(key, kDefaultSm2UserId, rs);
        strict.update(data.constData(), data.size());
        strictValid = strict.finish();
        strictProblem = strict.problem();
    }
    return sm2Check(scope, name, libraryValid, strictValid, strictProblem,
                    QStringLiteral("the library rejects this signature; OpenSSL's SM2 verification accepts it"));
}
