// Readable names of the object identifiers that certificates and seal
// structures commonly carry (zthost's own table, for display only).
#ifndef ZTHOST_OID_NAMES_H
#define ZTHOST_OID_NAMES_H

#include <QString>

// The name of a dotted OID, or empty text when zthost does not know it.
QString oidName(const QString& dotted);

// "dotted (name)" or just "dotted".
QString oidWithName(const QString& dotted);

namespace oid {
constexpr char kSm2WithSm3[] = "1.2.156.10197.1.501";
constexpr char kEcPublicKey[] = "1.2.840.10045.2.1";
constexpr char kRsaEncryption[] = "1.2.840.113549.1.1.1";
}  // namespace oid

#endif
