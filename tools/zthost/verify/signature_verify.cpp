#include "verify/signature_verify.h"

#include "crypto/openssl_digest.h"
#include "host/host_session.h"
#include "readers/der_values.h"
#include "readers/oid_names.h"
#include "services/sm3_digest.h"
#include "verify/chain_check.h"
#include "verify/signer_checks.h"

namespace {

const char kSm3Oid[] = "1.2.156.10197.1.401";
// SM2 signature identifiers producers put into signedData.
const char* const kSm2Algorithms[] = {oid::kSm2WithSm3, "1.2.156.10197.1.301.1", "1.2.156.10197.1.301",
                                      oid::kEcPublicKey};

bool isSm2(const QString& algorithm) {
    for (const char* known : kSm2Algorithms) {
        if (algorithm == QLatin1String(known))
            return true;
    }
    return false;
}

void checkDataHash(HostSession& session, const QByteArray& expected, const SignedBytes& signedBytes,
                   SignatureVerdict* verdict) {
    verdict->add(sm3Check(CheckScope::Signature, QStringLiteral("data hash"),
                          sm3Digest(session.library(), signedBytes.bytes) == expected,
                          openSslSm3(signedBytes.bytes) == expected,
                          QStringLiteral("the signed data hash is not the SM3 of %1 (changed after signing, or signed "
                                         "for another file)").arg(signedBytes.name)));
}

// The content a signedData carries must be the signed file or its SM3.
void checkSignedContent(HostSession& session, const SignedData& data, const SignedBytes& signedBytes,
                        SignatureVerdict* verdict) {
    if (!data.hasContent)
        return;
    const QByteArray content = data.content.toByteArray();
    const bool whole = content == signedBytes.bytes;
    verdict->add(sm3Check(CheckScope::Signature, QStringLiteral("signed content"),
                          whole || content == sm3Digest(session.library(), signedBytes.bytes),
                          whole || content == openSslSm3(signedBytes.bytes),
                          QStringLiteral("the signed content is neither %1 nor its SM3 digest").arg(signedBytes.name)));
}

}  // namespace

void verifySesSignature(HostSession& session, const SesSignature& signature, const SignedBytes* signedBytes,
                        const QByteArray& certificate, const Authorities& authorities, SignatureVerdict* verdict) {
    verdict->format = QStringLiteral("%1, version %2").arg(QLatin1String(sesLayoutName(signature.layout))).arg(signature.version);
    verdict->time = signature.time.isValid() ? isoTime(signature.time) : QString::fromLatin1(signature.timeText);
    if (signature.extensionCount > 0)
        verdict->notes << QStringLiteral("%1 extension data item(s)").arg(signature.extensionCount);
    if (!signature.timeStamp.empty())
        verdict->notes << QStringLiteral("a time stamp of %1 bytes (not checked)").arg(signature.timeStamp.size());
    if (signedBytes != nullptr)
        checkDataHash(session, signature.dataHash.toByteArray(), *signedBytes, verdict);
    else
        verdict->notes << QStringLiteral("the data hash was not compared with any document (no --doc given)");
    const QByteArray signer = certificate.isEmpty() ? signature.certificate.toByteArray() : certificate;
    if (signer.isEmpty()) {
        verdict->fail(CheckScope::Signature, QStringLiteral("signature"), QStringLiteral("the structure carries no signer certificate"));
    } else if (signature.algorithm != QLatin1String(oid::kSm2WithSm3)) {
        verdict->fail(CheckScope::Signature, QStringLiteral("signature"),
                      QStringLiteral("the algorithm %1 is not SM2 with SM3").arg(oidWithName(signature.algorithm)));
    } else {
        checkSm2Signature(session, CheckScope::Signature, QStringLiteral("signature"), signature.signature.toByteArray(),
                          signer, signature.toBeSigned.toByteArray(), verdict);
        checkSignerCertificate(session, signer, signature.time, verdict);
        addChainCheck(session, signer, authorities, signature.time, ChainOwner::Signer, verdict);
    }
    checkEmbeddedSeal(session, signature.seal, signature.time, signer, authorities, verdict);
}

void verifySignedData(HostSession& session, const SignedData& data, const SignedBytes& signedBytes,
                      const QDateTime& at, const Authorities& authorities, SignatureVerdict* verdict) {
    const bool gm = data.contentType == QLatin1String(oid::kGmSignedData);
    verdict->format = QStringLiteral("%1 signedData%2")
                          .arg(QLatin1String(gm ? "GM/T 0010" : "PKCS #7"))
                          .arg(data.hasSignedAttributes ? QStringLiteral(", signed attributes") : QString());
    if (at.isValid())
        verdict->time = isoTime(at);
    if (data.signerCount > 1)
        verdict->notes << QStringLiteral("%1 signers; the first is verified").arg(data.signerCount);
    checkSignedContent(session, data, signedBytes, verdict);
    const QByteArray signed_ = data.hasContent ? data.content.toByteArray() : signedBytes.bytes;
    if (data.hasSignedAttributes) {
        const QByteArray digest = data.messageDigest.toByteArray();
        verdict->add(sm3Check(CheckScope::Signature, QStringLiteral("message digest"),
                              data.hasMessageDigest && digest == sm3Digest(session.library(), signed_),
                              data.hasMessageDigest && digest == openSslSm3(signed_),
                              data.hasMessageDigest
                                  ? QStringLiteral("the messageDigest attribute is not the SM3 of the signed content")
                                  : QStringLiteral("the signed attributes hold no messageDigest")));
    }
    const QByteArray certificate = signerCertificate(data).toByteArray();
    if (certificate.isEmpty()) {
        verdict->fail(CheckScope::Signature, QStringLiteral("signature"),
                      QStringLiteral("no certificate in the signedData names its signer"));
    } else if (data.digestAlgorithm != QLatin1String(kSm3Oid) || !isSm2(data.signatureAlgorithm)) {
        verdict->fail(CheckScope::Signature, QStringLiteral("signature"),
                      QStringLiteral("%1 with %2 is not SM2 with SM3")
                          .arg(oidWithName(data.signatureAlgorithm), oidWithName(data.digestAlgorithm)));
    } else {
        checkSm2Signature(session, CheckScope::Signature, QStringLiteral("signature"), data.signature.toByteArray(),
                          certificate, data.hasSignedAttributes ? data.signedAttributes : signed_, verdict);
        checkSignerCertificate(session, certificate, at, verdict);
        addChainCheck(session, certificate, authorities, at, ChainOwner::Signer, verdict);
    }
}
