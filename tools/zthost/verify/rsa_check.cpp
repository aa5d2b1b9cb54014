#include "verify/rsa_check.h"

#include "crypto/public_key.h"
#include "crypto/rsa_strict.h"
#include "host/host_session.h"
#include "services/signature_check.h"

namespace {

const quint64 kLibraryExponent = 65537;

bool libraryReadsKeySize(int bits) {
    return bits == 1024 || bits == 2048;
}

QString acceptedWrongly(const StrictRsaCheck& strict) {
    if (strict.brokenDigest())
        return QStringLiteral("the library accepts this signature; %1").arg(strict.problem());
    if (strict.carriesDigestInfo() && strict.digestName() != QLatin1String("SHA-1"))
        return QStringLiteral("the library accepts this signature without comparing digests (it compares SHA-1 "
                              "only); the %1 digest it carries does not match the data")
            .arg(strict.digestName());
    return QStringLiteral("the library accepts this signature, which does not verify: %1").arg(strict.problem());
}

QString rejectedWrongly(EVP_PKEY* key) {
    const quint64 exponent = rsaExponent(key);
    if (exponent != kLibraryExponent)
        return QStringLiteral("the library takes the public exponent as 65537, this key's is %1, so it rejects a "
                              "signature that verifies")
            .arg(exponent);
    if (!libraryReadsKeySize(rsaBits(key)))
        return QStringLiteral("the library's RsaVerify reads 1024- and 2048-bit keys only, this one has %1 bits")
            .arg(rsaBits(key));
    return QStringLiteral("the library rejects this signature; OpenSSL's check accepts it");
}

}  // namespace

RsaCheckResult checkRsaSignature(HostSession& session, CheckScope scope, const QString& name,
                                 const QByteArray& signature, const QByteArray& certificate, const QByteArray& data) {
    const bool library = verifyRsa(session.library(), certificate, data, signature);
    EvpPkeyPtr key = certificatePublicKey(certificate);
    StrictRsaCheck strict(key.get(), signature);
    strict.update(data.constData(), data.size());
    const bool strictValid = strict.finish();
    RsaCheckResult result;
    result.digestName = strict.digestName();
    Check& check = result.check;
    check.scope = scope;
    check.name = name;
    check.library = answerOf(library);
    check.strict = answerOf(strictValid);
    check.problem = QStringLiteral("the %1 does not verify: %2").arg(name, strict.problem());
    if (library && !strictValid)
        check.disagreement = acceptedWrongly(strict);
    else if (!library && strictValid)
        check.disagreement = rejectedWrongly(key.get());
    return result;
}
