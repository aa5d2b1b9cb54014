#include "readers/oid_names.h"

namespace {

struct OidName {
    const char* dotted;
    const char* name;
};

const OidName kNames[] = {
    {"1.2.156.10197.1.301", "SM2 curve"},
    {"1.2.156.10197.1.401", "SM3"},
    {"1.2.156.10197.1.501", "SM2 with SM3"},
    {"1.2.840.10045.2.1", "EC public key"},
    {"1.2.840.10045.4.3.2", "ECDSA with SHA-256"},
    {"1.2.840.113549.1.1.1", "RSA"},
    {"1.2.840.113549.1.1.5", "RSA with SHA-1"},
    {"1.2.840.113549.1.1.11", "RSA with SHA-256"},
    {"1.2.840.113549.1.9.1", "e-mail address"},
    {"1.3.14.3.2.26", "SHA-1"},
    {"2.16.840.1.101.3.4.2.1", "SHA-256"},
    {"2.5.4.3", "common name"},
    {"2.5.4.6", "country"},
    {"2.5.4.7", "locality"},
    {"2.5.4.8", "state or province"},
    {"2.5.4.10", "organization"},
    {"2.5.4.11", "organizational unit"},
    {"2.5.29.14", "subject key identifier"},
    {"2.5.29.15", "key usage"},
    {"2.5.29.17", "subject alternative name"},
    {"2.5.29.19", "basic constraints"},
    {"2.5.29.35", "authority key identifier"},
};

}  // namespace

QString oidName(const QString& dotted) {
    for (const OidName& entry : kNames) {
        if (dotted == QLatin1String(entry.dotted))
            return QString::fromLatin1(entry.name);
    }
    return QString();
}

QString oidWithName(const QString& dotted) {
    const QString name = oidName(dotted);
    return name.isEmpty() ? dotted : QStringLiteral("%1 (%2)").arg(dotted, name);
}
