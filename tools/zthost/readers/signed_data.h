// A signedData structure (GM/T 0010, or PKCS #7 where producers use its
// object identifiers) with its first signer:
//
//   ContentInfo { contentType OID, [0] EXPLICIT SignedData }
//   SignedData  { version, digestAlgorithms SET, contentInfo { contentType,
//                 [0] EXPLICIT OCTET STRING OPTIONAL }, certificates [0]
//                 IMPLICIT OPTIONAL, crls [1] OPTIONAL, signerInfos SET }
//   SignerInfo  { version, issuerAndSerialNumber, digestAlgorithm,
//                 authenticatedAttributes [0] IMPLICIT OPTIONAL,
//                 digestEncryptionAlgorithm, encryptedDigest OCTET STRING, ... }
//
// With signed attributes the signature covers their DER as a SET (tag 0x31
// in place of [0]), and the messageDigest attribute holds the digest of the
// content; without them it covers the content itself.
#ifndef ZTHOST_READERS_SIGNED_DATA_H
#define ZTHOST_READERS_SIGNED_DATA_H

#include <QByteArray>
#include <QString>
#include <vector>

#include "readers/byte_view.h"
#include "readers/format_error.h"

namespace oid {
constexpr char kGmSignedData[] = "1.2.156.10197.6.1.4.2.2";
constexpr char kGmData[] = "1.2.156.10197.6.1.4.2.1";
constexpr char kPkcs7SignedData[] = "1.2.840.113549.1.7.2";
constexpr char kPkcs7Data[] = "1.2.840.113549.1.7.1";
constexpr char kMessageDigest[] = "1.2.840.113549.1.9.4";
}  // namespace oid

struct SignedData {
    QString contentType;       // of the outer ContentInfo
    bool hasContent = false;   // false: detached
    ByteView content;          // the OCTET STRING's content
    std::vector<ByteView> certificates;  // whole elements
    int signerCount = 0;
    // The first signer.
    ByteView issuer;           // the Name, tag to end (empty with a key identifier)
    ByteView serialNumber;     // INTEGER content
    QString digestAlgorithm;
    QString signatureAlgorithm;
    bool hasSignedAttributes = false;
    QByteArray signedAttributes;  // as signed: the SET's DER
    bool hasMessageDigest = false;
    ByteView messageDigest;
    ByteView signature;        // encryptedDigest content
};

// True for the two signedData content types.
bool isSignedDataType(const QString& dotted);

// Throws FormatError saying what does not fit.
SignedData readSignedData(const ByteView& der);

// The certificate of `data` that names the first signer, or an empty view.
// A lone certificate is taken for a signer named by key identifier.
ByteView signerCertificate(const SignedData& data);

#endif
