#include "cert/x509_oracle.h"

#include <openssl/objects.h>
#include <openssl/x509.h>

#include <QDateTime>

#include "support/common.h"
#include "ztutil/ztcertificate.h"

namespace cert_test {

QByteArray fixture(const char* name) {
    return ztutil_test::fixture(QStringLiteral("cert/") + QLatin1String(name));
}

namespace {

QString libraryOidText(const ASN1_OBJECT* object) {
    char dotted[256];
    OBJ_obj2txt(dotted, sizeof dotted, object, 1);
    const QStringList arcs = QString::fromLatin1(dotted).split(QLatin1Char('.'));
    const int octet = (arcs.value(0).toInt() * 40 + arcs.value(1).toInt()) & 0xFF;
    QString text = QString(QChar('0' + octet / 40)) + QLatin1Char('.') + QChar('0' + octet % 40);
    for (int i = 2; i < arcs.size(); ++i)
        text += QLatin1Char('.') + arcs.at(i);
    return text;
}

// BMPString as UTF-8 octets read one per character, up to a U+0000;
// everything else octet by octet.
QString libraryValueText(const ASN1_STRING* value) {
    const unsigned char* data = ASN1_STRING_get0_data(value);
    const int length = ASN1_STRING_length(value);
    if (ASN1_STRING_type(value) != V_ASN1_BMPSTRING)
        return QString::fromLatin1(reinterpret_cast<const char*>(data), length);
    QByteArray utf8;
    for (int i = 0; i + 1 < length && (data[i] | data[i + 1]) != 0; i += 2) {
        const unsigned unit = (data[i] << 8) | data[i + 1];
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

// The last value of the type in the name, in DER order.
QString lastValue(X509_NAME* name, int nid) {
    QString value;
    for (int i = 0; i < X509_NAME_entry_count(name); ++i) {
        X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        if (OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry)) == nid)
            value = libraryValueText(X509_NAME_ENTRY_get_data(entry));
    }
    return value;
}

QDateTime shiftedTime(const ASN1_TIME* time) {
    struct tm parts = {};
    ASN1_TIME_to_tm(time, &parts);
    return QDateTime(QDate(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday),
                     QTime(parts.tm_hour, parts.tm_min, parts.tm_sec), Qt::UTC)
        .addSecs(8 * 3600);
}

// The INTEGER's content octets (a leading 00 kept) in hex; serial numbers
// are short enough for a one-octet length.
QString serialHex(const ASN1_INTEGER* integer) {
    unsigned char* der = nullptr;
    const int length = i2d_ASN1_INTEGER(integer, &der);
    const QByteArray content = QByteArray(reinterpret_cast<char*>(der), length).mid(2);
    OPENSSL_free(der);
    return QString::fromLatin1(content.toHex());
}

}  // namespace

void expectMatchesOpenSsl(ZTCertificate& certificate, const QByteArray& der) {
    const unsigned char* cursor = ztutil_test::octets(der);
    X509* x509 = d2i_X509(nullptr, &cursor, der.size());
    ASSERT_NE(x509, nullptr);
    const long version = X509_get_version(x509);
    EXPECT_EQ(certificate.version(), QString::number(version + 1));
    EXPECT_EQ(certificate.serialNumber(), serialHex(X509_get0_serialNumber(x509)));
    const ASN1_OBJECT* oid = nullptr;
    X509_ALGOR_get0(&oid, nullptr, nullptr, X509_get0_tbs_sigalg(x509));
    EXPECT_EQ(certificate.algName(), libraryOidText(oid));
    X509_NAME* issuer = X509_get_issuer_name(x509);
    X509_NAME* subject = X509_get_subject_name(x509);
    EXPECT_EQ(certificate.getIssuerC(), lastValue(issuer, NID_countryName));
    EXPECT_EQ(certificate.getIssuerO(), lastValue(issuer, NID_organizationName));
    EXPECT_EQ(certificate.getIssuerOU(), lastValue(issuer, NID_organizationalUnitName));
    EXPECT_EQ(certificate.getIssuerCN(), lastValue(issuer, NID_commonName));
    EXPECT_EQ(certificate.getSubjectCN(), lastValue(subject, NID_commonName));
    EXPECT_EQ(certificate.getSubjectO(), lastValue(subject, NID_organizationName));
    EXPECT_EQ(certificate.getSubjectOU(), lastValue(subject, NID_organizationalUnitName));
    EXPECT_EQ(certificate.getSubjectE(), QString());
    EXPECT_EQ(certificate.notBefore(), shiftedTime(X509_get0_notBefore(x509)));
    EXPECT_EQ(certificate.notAfter(), shiftedTime(X509_get0_notAfter(x509)));
    ASN1_OBJECT* keyOid = nullptr;
    X509_PUBKEY_get0_param(&keyOid, nullptr, nullptr, nullptr, X509_get_X509_PUBKEY(x509));
    EXPECT_EQ(certificate.pubKeyAlgOID(), libraryOidText(keyOid));
    const ASN1_BIT_STRING* bits = X509_get0_pubkey_bitstr(x509);
    QByteArray key(reinterpret_cast<const char*>(ASN1_STRING_get0_data(bits)), ASN1_STRING_length(bits));
    if (key.size() == 65 && key.at(0) == 0x04)
        key.remove(0, 1);
    EXPECT_EQ(certificate.getPublicKeyData(), key);
    EXPECT_EQ(certificate.pubkey(), QString::fromLatin1(key.toHex()));
    X509_free(x509);
}

QByteArray buildCertificate(const CertificateRecipe& recipe) {
    EVP_PKEY* key = EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2");
    X509* certificate = X509_new();
    X509_set_version(certificate, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 0x1234);
    for (const auto* names : {&recipe.issuer, &recipe.subject}) {
        X509_NAME* name = names == &recipe.issuer ? X509_get_issuer_name(certificate)
                                                  : X509_get_subject_name(certificate);
        for (const auto& entry : *names)
            X509_NAME_add_entry_by_txt(name, entry.first.toLatin1().constData(), MBSTRING_UTF8,
                                       ztutil_test::octets(entry.second.toUtf8()), -1, -1, 0);
    }
    for (ASN1_TIME* time : {X509_getm_notBefore(certificate), X509_getm_notAfter(certificate)}) {
        const QByteArray& text = time == X509_getm_notBefore(certificate) ? recipe.notBefore : recipe.notAfter;
        ASN1_STRING_set(time, text.constData(), text.size());
        time->type = text.size() >= 15 ? V_ASN1_GENERALIZEDTIME : V_ASN1_UTCTIME;
    }
    X509_set_pubkey(certificate, key);
    X509_sign(certificate, key, EVP_sm3());
    unsigned char* der = nullptr;
    const int length = i2d_X509(certificate, &der);
    const QByteArray out(reinterpret_cast<char*>(der), length);
    OPENSSL_free(der);
    X509_free(certificate);
    EVP_PKEY_free(key);
    return out;
}

}  // namespace cert_test
