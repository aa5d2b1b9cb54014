// What OpenSSL's own X.509 parser reports about a certificate, in the forms
// ZTCertificate uses, plus a small certificate builder for odd cases.
#ifndef ZTUTIL_TESTS_CERT_X509_ORACLE_H
#define ZTUTIL_TESTS_CERT_X509_ORACLE_H

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QPair>
#include <QString>
#include <openssl/x509.h>

namespace cert_test {

// The certificate's fields as ZTCertificate is expected to report them.
struct ExpectedFields {
    QString version;
    QString serialHex;
    QString signatureOid;
    QString issuerC, issuerO, issuerOU, issuerCN;
    QString subjectCN, subjectE, subjectO, subjectOU;
    QDateTime notBefore, notAfter;
    QString keyAlgorithmOid;
    QByteArray keyBits;
};

QByteArray readFile(const QString& path);
QByteArray fixture(const char* name);  // a file under tests/data/cert

X509* parseDer(const QByteArray& der);  // caller frees with X509_free
QByteArray toDer(X509* certificate);

// Dotted OID text as this library writes it: the first octet always as one
// character, a dot and one character.
QString libraryOidText(const ASN1_OBJECT* object);

ExpectedFields expectedFields(X509* certificate);

// Every certificate of a PEM bundle, as DER.
QList<QByteArray> pemBundle(const QString& path);

// Builds a self-signed SM2 certificate. Each name is a list of
// (attribute short name, UTF-8 value); validity texts are set as given.
struct CertificateRecipe {
    long version = 2;  // 0 for version 1
    QList<QPair<QString, QString>> issuer;
    QList<QPair<QString, QString>> subject;
    QByteArray notBefore = "230101000000Z";
    QByteArray notAfter = "330101000000Z";
    int stringType = MBSTRING_UTF8;
};
QByteArray buildCertificate(const CertificateRecipe& recipe);

}  // namespace cert_test

#endif
