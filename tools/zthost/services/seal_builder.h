// The seal signature structures built by the library's ZTCertificate
// component: GetGMSignInfo / GetGMV2ASNData (GM) and GetZWSignInfo /
// GetZWASNData (government affairs). The two SignInfo methods take 14 and 12
// arguments, more than invokeMethod carries, so they are called through
// qt_metacall with the exact signature, as a host does.
#ifndef ZTHOST_SEAL_BUILDER_H
#define ZTHOST_SEAL_BUILDER_H

#include <QByteArray>

class HostSession;

struct SealFields {
    QByteArray seal;         // one complete DER element
    QByteArray digest;       // of the document
    QByteArray time;         // GM: any bytes; ZW: GeneralizedTime text
    QByteArray property;     // IA5 text, may be empty
    QByteArray certificate;  // GM only (inside the to-be-signed part), may be empty
};

// Each returns what the library returns; empty when it refuses the inputs.
QByteArray buildGmToBeSigned(HostSession& session, const SealFields& fields);
QByteArray buildGmSignature(HostSession& session, const QByteArray& toBeSigned, const QByteArray& signature);
QByteArray buildZwToBeSigned(HostSession& session, const SealFields& fields);
QByteArray buildZwSignature(HostSession& session, const QByteArray& toBeSigned, const QByteArray& certificate,
                            const QByteArray& method, const QByteArray& signature);

#endif
