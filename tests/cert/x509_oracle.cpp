#include "cert/x509_oracle.h"

#include <QFile>
#include <openssl/asn1.h>
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/pem.h>

#include <memory>

namespace cert_test {

QByteArray readFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

QByteArray fixture(const char* name) {
    return readFile(QStringLiteral(ZTUTIL_TEST_DATA_DIR "/cert/") + QLatin1String(name));
}

X509* parseDer(const QByteArray& der) {
    const unsigned char* cursor = reinterpret_cast<const unsigned char*>(der.constData());
    return d2i_X509(nullptr, &cursor, der.size());
}

QByteArray toDer(X509* certificate) {
    unsigned char* out = nullptr;
    const int length = i2d_X509(certificate, &out);
    QByteArray der(reinterpret_cast<char*>(out), length);
    OPENSSL_free(out);
    return der;
}

QString libraryOidText(const ASN1_OBJECT* object) {
    char dotted[256];
    OBJ_obj2txt(dotted, sizeof dotted, object, 1);
    const QStringList arcs = QString::fromLatin1(dotted).split(QLatin1Char('.'));
    const int first = arcs.value(0).toInt();
    const int second = arcs.value(1).toInt();
    const int octet = (first * 40 + second) & 0xFF;
    QString text = QString(QChar('0' + octet / 40)) + QLatin1Char('.') + QChar('0' + octet % 40);
    for (int i = 2; i < arcs.size(); ++i)
        text += QLatin1Char('.') + arcs.at(i);
    return text;
}

namespace {

// An attribute value as the library's text conversion gives it: BMPString as
// UTF-8 octets read one per character, everything else octet by octet.
QString libraryValueText(const ASN1_STRING* value) {
    const unsigned char* data = ASN1_STRING_get0_data(value);
    const int length = ASN1_STRING_length(value);
    if (ASN1_STRING_type(value) != V_ASN1_BMPSTRING)
        return QString::fromLatin1(reinterpret_cast<const char*>(data), length);
    QByteArray utf8;
    for (int i = 0; i + 1 < length; i += 2) {
        const unsigned unit = (data[i] << 8) | data[i + 1];
        if (unit == 0)
            break;
        if (unit < 0x80) {
            utf8 += char(unit);
        } else if (unit < 0x800) {
            utf8 += char(0xC0 | (unit >> 6));
            utf8 += char(0x80 | (unit & 0x3F));
        } else {
            utf8 += char(0xE0 | (unit >> 12));
            utf8 += char(0x80 | ((unit >> 6) & 0x3F));
            utf8 += char(0x80 | (unit & 0x3F));
        }
    }
    return QString::fromLatin1(utf8);
}

// The last value of each wanted type, in DER order.
void collectName(X509_NAME* name, const QList<QPair<int, QString*>>& wanted) {
    for (int i = 0; i < X509_NAME_entry_count(name); ++i) {
        X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        const int nid = OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry));
        for (const auto& field : wanted) {
            if (field.first == nid)
                *field.second = libraryValueText(X509_NAME_ENTRY_get_data(entry));
        }
    }
}

// The instant of a certificate time, moved 8 hours later.
QDateTime shiftedTime(const ASN1_TIME* time) {
    struct tm parts = {};
    ASN1_TIME_to_tm(time, &parts);
    const QDateTime utc(QDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday),
                        QTime(parts.tm_hour, parts.tm_min, parts.tm_sec), Qt::UTC);
    return utc.addSecs(8 * 3600);
}

QString contentHex(const ASN1_INTEGER* integer) {
    unsigned char* der = nullptr;
    const int length = i2d_ASN1_INTEGER(const_cast<ASN1_INTEGER*>(integer), &der);
    const unsigned char* cursor = der;
    long contentLength = 0;
    int tag = 0, objectClass = 0;
    ASN1_get_object(&cursor, &contentLength, &tag, &objectClass, length);
    const QString hex = QString::fromLatin1(
        QByteArray(reinterpret_cast<const char*>(cursor), static_cast<int>(contentLength)).toHex());
    OPENSSL_free(der);
    return hex;
}

}  // namespace

ExpectedFields expectedFields(X509* certificate) {
    ExpectedFields fields;
    const long version = X509_get_version(certificate);
    fields.version = version == 0 ? "1" : version == 1 ? "2" : "3";
    fields.serialHex = contentHex(X509_get0_serialNumber(certificate));
    const X509_ALGOR* signature = X509_get0_tbs_sigalg(certificate);
    const ASN1_OBJECT* signatureOid = nullptr;
    X509_ALGOR_get0(&signatureOid, nullptr, nullptr, signature);
    fields.signatureOid = libraryOidText(signatureOid);
    collectName(X509_get_issuer_name(certificate), {{NID_countryName, &fields.issuerC},
                                                    {NID_organizationName, &fields.issuerO},
                                                    {NID_organizationalUnitName, &fields.issuerOU},
                                                    {NID_commonName, &fields.issuerCN}});
    collectName(X509_get_subject_name(certificate), {{NID_commonName, &fields.subjectCN},
                                                     {NID_organizationName, &fields.subjectO},
                                                     {NID_organizationalUnitName, &fields.subjectOU}});
    fields.notBefore = shiftedTime(X509_get0_notBefore(certificate));
    fields.notAfter = shiftedTime(X509_get0_notAfter(certificate));
    X509_PUBKEY* key = X509_get_X509_PUBKEY(certificate);
    ASN1_OBJECT* keyOid = nullptr;
    X509_PUBKEY_get0_param(&keyOid, nullptr, nullptr, nullptr, key);
    fields.keyAlgorithmOid = libraryOidText(keyOid);
    const ASN1_BIT_STRING* bits = X509_get0_pubkey_bitstr(certificate);
    fields.keyBits = QByteArray(reinterpret_cast<const char*>(ASN1_STRING_get0_data(bits)),
                                ASN1_STRING_length(bits));
    if (fields.keyBits.size() == 65 && fields.keyBits.at(0) == 0x04)
        fields.keyBits.remove(0, 1);
    return fields;
}

QList<QByteArray> pemBundle(const QString& path) {
    QList<QByteArray> certificates;
    BIO* bio = BIO_new_file(path.toLocal8Bit().constData(), "r");
    if (bio == nullptr)
        return certificates;
    while (X509* certificate = PEM_read_bio_X509(bio, nullptr, nullptr, nullptr)) {
        certificates.append(toDer(certificate));
        X509_free(certificate);
    }
    BIO_free(bio);
    return certificates;
}

namespace {

void addName(X509_NAME* name, const QList<QPair<QString, QString>>& entries, int stringType) {
    for (const auto& entry : entries) {
        const QByteArray value = entry.second.toUtf8();
        X509_NAME_add_entry_by_txt(name, entry.first.toLatin1().constData(), stringType,
                                   reinterpret_cast<const unsigned char*>(value.constData()),
                                   value.size(), -1, 0);
    }
}

void setTime(ASN1_TIME* time, const QByteArray& text) {
    // Set the text raw so that odd forms survive unvalidated.
    const int type = text.size() >= 15 ? V_ASN1_GENERALIZEDTIME : V_ASN1_UTCTIME;
    ASN1_STRING_set(time, text.constData(), text.size());
    time->type = type;
}

}  // namespace

QByteArray buildCertificate(const CertificateRecipe& recipe) {
    EVP_PKEY* key = EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2");
    X509* certificate = X509_new();
    X509_set_version(certificate, recipe.version);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 0x1234);
    addName(X509_get_issuer_name(certificate), recipe.issuer, recipe.stringType);
    addName(X509_get_subject_name(certificate), recipe.subject, recipe.stringType);
    setTime(X509_getm_notBefore(certificate), recipe.notBefore);
    setTime(X509_getm_notAfter(certificate), recipe.notAfter);
    X509_set_pubkey(certificate, key);
    X509_sign(certificate, key, EVP_sm3());
    const QByteArray der = toDer(certificate);
    X509_free(certificate);
    EVP_PKEY_free(key);
    return der;
}

}  // namespace cert_test
