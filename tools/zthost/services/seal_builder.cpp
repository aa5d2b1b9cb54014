#include "services/seal_builder.h"

#include <QMetaObject>
#include <memory>

#include "host/components.h"
#include "host/invoke.h"

namespace {

const char kGmSignInfo[] =
    "GetGMSignInfo(unsigned char*,int,unsigned char*,int,unsigned char*,int,unsigned char*,int,"
    "unsigned char*,int,unsigned char*,int,unsigned char*,int)";
const char kZwSignInfo[] =
    "GetZWSignInfo(unsigned char*,int,unsigned char*,int,unsigned char*,int,unsigned char*,int,"
    "unsigned char*,int,unsigned char*,int)";

// The version and method arguments are accepted and ignored by the library
// (the formats fix both); zthost passes what a host would.
const char kGmVersion[] = "\x02";
const char kZwVersion[] = "\x04";
const char kSm2WithSm3Text[] = "1.2.156.10197.1.501";

// A pointer-and-length argument pair; the library only reads the bytes.
struct ByteArgument {
    explicit ByteArgument(const QByteArray& bytes)
        : copy(bytes), data(reinterpret_cast<unsigned char*>(copy.data())), length(copy.size()) {}
    QByteArray copy;
    unsigned char* data;
    int length;
};

}  // namespace

QByteArray buildGmToBeSigned(HostSession& session, const SealFields& fields) {
    std::unique_ptr<QObject> certificate = requireComponent(session, progid::kCertificate);
    ByteArgument version{QByteArray(kGmVersion, 1)}, seal{fields.seal}, property{fields.property},
        digest{fields.digest}, cert{fields.certificate}, time{fields.time}, method{QByteArray(kSm2WithSm3Text)};
    QByteArray result;
    callBySignature(certificate.get(), kGmSignInfo, &result,
                    {&version.data, &version.length, &seal.data, &seal.length, &property.data,
                     &property.length, &digest.data, &digest.length, &cert.data, &cert.length, &time.data,
                     &time.length, &method.data, &method.length});
    return result;
}

QByteArray buildGmSignature(HostSession& session, const QByteArray& toBeSigned, const QByteArray& signature) {
    std::unique_ptr<QObject> certificate = requireComponent(session, progid::kCertificate);
    QByteArray result;
    callByName(certificate.get(), "GetGMV2ASNData", Q_RETURN_ARG(QByteArray, result),
               Q_ARG(QByteArray, toBeSigned), Q_ARG(QByteArray, signature));
    return result;
}

QByteArray buildZwToBeSigned(HostSession& session, const SealFields& fields) {
    std::unique_ptr<QObject> certificate = requireComponent(session, progid::kCertificate);
    ByteArgument version{QByteArray(kZwVersion, 1)}, seal{fields.seal}, property{fields.property},
        digest{fields.digest}, method{QByteArray(kSm2WithSm3Text)}, time{fields.time};
    QByteArray result;
    callBySignature(certificate.get(), kZwSignInfo, &result,
                    {&version.data, &version.length, &seal.data, &seal.length, &property.data,
                     &property.length, &digest.data, &digest.length, &method.data, &method.length, &time.data,
                     &time.length});
    return result;
}

QByteArray buildZwSignature(HostSession& session, const QByteArray& toBeSigned, const QByteArray& certificate,
                            const QByteArray& method, const QByteArray& signature) {
    std::unique_ptr<QObject> component = requireComponent(session, progid::kCertificate);
    QByteArray result;
    callByName(component.get(), "GetZWASNData", Q_RETURN_ARG(QByteArray, result), Q_ARG(QByteArray, toBeSigned),
               Q_ARG(QByteArray, certificate), Q_ARG(QByteArray, method), Q_ARG(QByteArray, signature));
    return result;
}
