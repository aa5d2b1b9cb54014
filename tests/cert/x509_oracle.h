// What OpenSSL's own X.509 parser reports about a certificate, compared with
// ZTCertificate, plus a builder of self-signed SM2 certificates for odd cases.
#ifndef ZTUTIL_TESTS_CERT_X509_ORACLE_H
#define ZTUTIL_TESTS_CERT_X509_ORACLE_H

#include <QPair>

#include "support/common.h"

class ZTCertificate;

namespace cert_test {

QByteArray fixture(const char* name);  // a file under tests/data/cert

// Every field of the opened `certificate` equals OpenSSL's reading of `der`
// under the library's rules: the last value of a type wins, BMPString values
// come out as UTF-8 octets one per character, times are shifted 8 hours, the
// first OID octet is one character each side of the dot, E is always empty.
void expectMatchesOpenSsl(ZTCertificate& certificate, const QByteArray& der);

// Each name is a list of (attribute short name, UTF-8 value); validity texts
// are set raw, as given.
struct CertificateRecipe {
    QList<QPair<QString, QString>> issuer;
    QList<QPair<QString, QString>> subject = {{"CN", "x"}};
    QByteArray notBefore = "230101000000Z";
    QByteArray notAfter = "330101000000Z";
};
QByteArray buildCertificate(const CertificateRecipe& recipe);

}  // namespace cert_test

#endif
