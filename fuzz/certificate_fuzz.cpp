// Arbitrary bytes as a DER certificate: ZTCertificate::open, every accessor,
// GetCertParam and the PEM conversions on the same bytes.
//
// Properties:
// - wherever OpenSSL's X.509 parser reads the certificate, open succeeds
//   (unless a validity time is of a form the library refuses or a name has
//   an empty RDN) and every field is OpenSSL's, read under the library's
//   documented rules (last value of a type wins, times 8 hours later, ...);
//   GetCertParam and the verification tools' key agree with it too;
// - opening the same bytes again after close gives the same fields;
// - GetCertByteArray(GetCertString(der)) gives the DER back, and the PEM's
//   Base64 is OpenSSL's.
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/x509.h>

#include <QByteArray>
#include <QDateTime>
#include <QStringList>
#include <cstdint>
#include <memory>

#include "fuzz_support.h"
#include "ztutil/ztcertificate.h"

namespace {

using fuzz::octets;

QByteArray stringBytes(const ASN1_STRING* value) {
    return QByteArray(reinterpret_cast<const char*>(ASN1_STRING_get0_data(value)),
                      ASN1_STRING_length(value));
}

// A string value as the library's text conversion reads it: up to the first
// zero byte.
QByteArray textOf(const ASN1_STRING* value) {
    const QByteArray bytes = stringBytes(value);
    return bytes.left(static_cast<int>(qstrnlen(bytes.constData(), bytes.size())));
}

QByteArray oidContent(const ASN1_OBJECT* object) {
    return QByteArray(reinterpret_cast<const char*>(OBJ_get0_data(object)),
                      static_cast<int>(OBJ_length(object)));
}

// Everything the accessors report, in one list.
QStringList fields(ZTCertificate& certificate) {
    return {certificate.version(),       certificate.serialNumber(),
            certificate.algName(),       certificate.getIssuerDN(),
            certificate.getSubjectDN(),  certificate.getIssuerC(),
            certificate.getIssuerO(),    certificate.getIssuerOU(),
            certificate.getIssuerCN(),   certificate.getSubjectCN(),
            certificate.getSubjectE(),   certificate.getSubjectO(),
            certificate.getSubjectOU(),  certificate.notBefore().toString(Qt::ISODate),
            certificate.notAfter().toString(Qt::ISODate), certificate.pubkey(),
            QString::fromLatin1(certificate.getPublicKeyData().toHex()),
            certificate.pubKeyAlgOID()};
}

// The certificate's validity texts as the library accepts them: a UTCTime
// of 13 or a GeneralizedTime of 15 characters, ending in Z.
bool isAcceptedTime(const ASN1_TIME* time) {
    const QByteArray text = textOf(time);
    const int length = ASN1_STRING_type(time) == V_ASN1_UTCTIME ? 13 : 15;
    return text.size() == length && text.endsWith('Z');
}

// The library refuses a name with an empty SET; OpenSSL reads it as no entries.
bool hasEmptyRdn(const X509_NAME* name) {
    const unsigned char* der = nullptr;
    size_t size = 0;
    if (!X509_NAME_get0_der(name, &der, &size))
        return true;
    const unsigned char* cursor = der;
    long length = 0;
    int tag = 0, tagClass = 0;
    ASN1_get_object(&cursor, &length, &tag, &tagClass, static_cast<long>(size));
    for (const unsigned char* end = cursor + length; cursor < end; cursor += length) {
        if (ASN1_get_object(&cursor, &length, &tag, &tagClass, end - cursor) & 0x80 || length == 0)
            return true;
    }
    return false;
}

// OpenSSL's decoder takes a SEQUENCE or SET whose tag lacks the constructed
// bit (0x10, 0x11 instead of 0x30, 0x31); the library checks the tag bytes
// and refuses the certificate.
bool hasPrimitiveSequenceOrSet(const unsigned char* cursor, long size, int depth = 0) {
    const unsigned char* end = cursor + size;
    while (cursor < end) {
        long length = 0;
        int tag = 0, tagClass = 0;
        const int header = ASN1_get_object(&cursor, &length, &tag, &tagClass, end - cursor);
        if (header & 0x80)
            return false;
        const bool constructed = (header & V_ASN1_CONSTRUCTED) != 0;
        if (tagClass == V_ASN1_UNIVERSAL && (tag == V_ASN1_SEQUENCE || tag == V_ASN1_SET) && !constructed)
            return true;
        if (constructed && depth < 32 && hasPrimitiveSequenceOrSet(cursor, length, depth + 1))
            return true;
        cursor += length;
    }
    return false;
}

// The library's text for a name value: the content octets one per character,
// for the string types whose content it takes as it stands.
bool valueText(const ASN1_STRING* value, QString* text) {
    switch (ASN1_STRING_type(value)) {
    case V_ASN1_UTF8STRING: case V_ASN1_PRINTABLESTRING: case V_ASN1_IA5STRING:
    case V_ASN1_T61STRING: case V_ASN1_NUMERICSTRING: case V_ASN1_VISIBLESTRING:
    case V_ASN1_UNIVERSALSTRING: case V_ASN1_GENERALSTRING:
        *text = QString::fromLatin1(textOf(value));
        return true;
    default:
        return false;
    }
}

// The last value of the attribute type `oid` in the name, as the library
// reads it. False when that cannot be told (an attribute type the library
// would name differently, or a value type it converts).
bool lastValue(const X509_NAME* name, const char* oid, QString* value) {
    *value = QString();
    for (int i = 0; i < X509_NAME_entry_count(name); ++i) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        QByteArray type;
        if (!fuzz::comparableOidText(oidContent(X509_NAME_ENTRY_get_object(entry)), &type))
            return false;
        if (type == oid && !valueText(X509_NAME_ENTRY_get_data(entry), value))
            return false;
    }
    return true;
}

void nameMatches(const X509_NAME* name, const QList<QPair<const char*, QString>>& expected) {
    for (const auto& attribute : expected) {
        QString value;
        if (lastValue(name, attribute.first, &value))
            FUZZ_CHECK(attribute.second == value);
    }
}

void oidMatches(const QString& mine, const ASN1_OBJECT* object) {
    QByteArray theirs;
    if (fuzz::comparableOidText(oidContent(object), &theirs))
        FUZZ_CHECK(mine == QLatin1String(theirs));
}

void timeMatches(const QDateTime& mine, const ASN1_TIME* time) {
    long long seconds = 0;
    if (fuzz::openSslTimeSeconds(ASN1_STRING_type(time) == V_ASN1_UTCTIME ? fuzz::kUtcTime
                                                                           : fuzz::kGeneralizedTime,
                                 stringBytes(time), &seconds))
        FUZZ_CHECK(mine.toSecsSinceEpoch() == seconds + 8 * 3600);
}

// The content octets of the serial's minimal DER encoding.
QString serialHex(const ASN1_INTEGER* serial) {
    unsigned char* der = nullptr;
    const int size = i2d_ASN1_INTEGER(serial, &der);
    const unsigned char* content = der;
    long length = 0;
    int tag = 0, tagClass = 0;
    ASN1_get_object(&content, &length, &tag, &tagClass, size);
    const QString hex = QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(content), static_cast<int>(length)).toHex());
    OPENSSL_free(der);
    return hex;
}

// Whether the to-be-signed part starts with the explicit version field [0].
bool hasExplicitVersion(const QByteArray& der) {
    const unsigned char* cursor = octets(der);
    const unsigned char* end = cursor + der.size();
    long length = 0;
    int tag = 0, tagClass = 0;
    for (int level = 0; level < 2; ++level) {  // the certificate, then its to-be-signed part
        if (ASN1_get_object(&cursor, &length, &tag, &tagClass, end - cursor) & 0x80)
            return false;
    }
    return length > 0 && *cursor == 0xA0;
}

// The digits GetCertParam reports for one validity time, or empty text.
QString validityDigits(const ASN1_TIME* time) {
    const QByteArray text = textOf(time);
    if (ASN1_STRING_type(time) == V_ASN1_UTCTIME && text.size() == 13)
        return QString::fromLatin1(text.left(12));
    if (ASN1_STRING_type(time) == V_ASN1_GENERALIZEDTIME && text.size() == 15)
        return QString::fromLatin1(text.left(14));
    return QString();
}

void parameterMatches(ZTCertificate& certificate, const QByteArray& der, const X509* x509) {
    QString expected;
    const QString notBefore = validityDigits(X509_get0_notBefore(x509));
    const QString notAfter = validityDigits(X509_get0_notAfter(x509));
    if (hasExplicitVersion(der) && !notBefore.isEmpty() && !notAfter.isEmpty())
        expected = notBefore + QLatin1Char(';') + notAfter;
    FUZZ_CHECK(certificate.GetCertParam(der, 4, 0x30) == expected);
    FUZZ_CHECK(certificate.GetCertParam(der, 4, 0) == expected);
    FUZZ_CHECK(certificate.GetCertParam(der, 5, 0x30).isEmpty());
}

// The verification tools read the key of a certificate with the explicit version.
void toolKeyMatches(ZTCertificate& certificate, QByteArray der, const QByteArray& key) {
    unsigned size = 0;
    FUZZ_CHECK(certificate.ZTGetPubKeyByCert(octets(der), der.size(), nullptr, &size));
    QByteArray found(static_cast<int>(size), '\0');
    FUZZ_CHECK(certificate.ZTGetPubKeyByCert(octets(der), der.size(), octets(found), &size));
    FUZZ_CHECK(found == key);
}

void matchesOpenSsl(const QByteArray& der) {
    const unsigned char* cursor = octets(der);
    std::unique_ptr<X509, decltype(&X509_free)> x509(d2i_X509(nullptr, &cursor, der.size()), X509_free);
    if (!x509)
        return;
    const QByteArray element = der.left(static_cast<int>(cursor - octets(der)));
    ZTCertificate certificate;
    parameterMatches(certificate, element, x509.get());
    const X509_NAME* issuer = X509_get_issuer_name(x509.get());
    const X509_NAME* subject = X509_get_subject_name(x509.get());
    const bool opened = certificate.open(element);
    if (!isAcceptedTime(X509_get0_notBefore(x509.get())) ||
        !isAcceptedTime(X509_get0_notAfter(x509.get())) || hasEmptyRdn(issuer) || hasEmptyRdn(subject) ||
        hasPrimitiveSequenceOrSet(octets(element), element.size()))
        return;
    FUZZ_CHECK(opened);

    const long version = X509_get_version(x509.get());
    if (version >= 0 && version < 128)
        FUZZ_CHECK(certificate.version() == QLatin1String(version == 0 ? "1" : version == 1 ? "2" : "3"));
    FUZZ_CHECK(certificate.serialNumber() == serialHex(X509_get0_serialNumber(x509.get())));
    const ASN1_OBJECT* algorithm = nullptr;
    X509_ALGOR_get0(&algorithm, nullptr, nullptr, X509_get0_tbs_sigalg(x509.get()));
    oidMatches(certificate.algName(), algorithm);
    nameMatches(issuer, {{"2.5.4.6", certificate.getIssuerC()}, {"2.5.4.10", certificate.getIssuerO()},
                         {"2.5.4.11", certificate.getIssuerOU()}, {"2.5.4.3", certificate.getIssuerCN()}});
    nameMatches(subject, {{"2.5.4.10", certificate.getSubjectO()}, {"2.5.4.11", certificate.getSubjectOU()},
                          {"2.5.4.3", certificate.getSubjectCN()}});
    timeMatches(certificate.notBefore(), X509_get0_notBefore(x509.get()));
    timeMatches(certificate.notAfter(), X509_get0_notAfter(x509.get()));
    ASN1_OBJECT* keyAlgorithm = nullptr;
    X509_PUBKEY_get0_param(&keyAlgorithm, nullptr, nullptr, nullptr, X509_get_X509_PUBKEY(x509.get()));
    oidMatches(certificate.pubKeyAlgOID(), keyAlgorithm);

    const ASN1_BIT_STRING* bits = X509_get0_pubkey_bitstr(x509.get());
    if ((bits->flags & 0x07) != 0)
        return;  // OpenSSL clears the unused bits; the library keeps the octets as they are
    QByteArray key = stringBytes(bits);
    if (hasExplicitVersion(element))
        toolKeyMatches(certificate, element, key);
    if (key.size() == 65 && key.at(0) == 0x04)
        key.remove(0, 1);
    FUZZ_CHECK(certificate.getPublicKeyData() == key);
}

// open, every accessor, close, and the same again: the fields must not
// depend on what the object held before.
void reopenGivesTheSameFields(const QByteArray& der) {
    ZTCertificate certificate;
    const bool opened = certificate.open(der);
    const QStringList first = fields(certificate);
    certificate.dump();
    certificate.close();
    FUZZ_CHECK(certificate.open(der) == opened);
    FUZZ_CHECK(fields(certificate) == first);
}

void pemRoundTrip(const QByteArray& der) {
    ZTCertificate certificate;
    const QString pem = certificate.GetCertString(der);
    const QByteArray text = der.left(static_cast<int>(qstrnlen(der.constData(), der.size())));
    if (der.isEmpty() || text.contains("CERTIFICATE"))
        return;  // empty, or taken to be PEM already
    QByteArray base64(4 * ((der.size() + 2) / 3) + 1, '\0');
    const int length = EVP_EncodeBlock(octets(base64), octets(der), der.size());
    FUZZ_CHECK(pem == QLatin1String("-----BEGIN CERTIFICATE-----") + QLatin1String(base64.left(length)) +
                          QLatin1String("-----END CERTIFICATE-----"));
    FUZZ_CHECK(certificate.GetCertByteArray(pem) == der);
    // The bytes as text: whatever the decoder makes of it, no more than it was given.
    FUZZ_CHECK(certificate.GetCertByteArray(QString::fromLatin1(der)).size() <= der.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::silenceLibraryOutput();
    if (size > fuzz::kMaxInput)
        return 0;
    const QByteArray der = fuzz::view(data, size);
    matchesOpenSsl(der);
    reopenGivesTheSameFields(der);
    pemRoundTrip(der);
    return 0;
}
