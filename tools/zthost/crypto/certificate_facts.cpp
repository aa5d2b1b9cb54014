#include "crypto/certificate_facts.h"

#include <openssl/x509v3.h>

namespace {

using BioPtr = std::unique_ptr<BIO, OpenSslFree<BIO, BIO_free_all>>;

struct UsageName {
    uint32_t bit;
    const char* name;
};

const UsageName kUsageNames[] = {
    {KU_DIGITAL_SIGNATURE, "Digital Signature"}, {KU_NON_REPUDIATION, "Non Repudiation"},
    {KU_KEY_ENCIPHERMENT, "Key Encipherment"},   {KU_DATA_ENCIPHERMENT, "Data Encipherment"},
    {KU_KEY_AGREEMENT, "Key Agreement"},         {KU_KEY_CERT_SIGN, "Certificate Sign"},
    {KU_CRL_SIGN, "CRL Sign"},                   {KU_ENCIPHER_ONLY, "Encipher Only"},
    {KU_DECIPHER_ONLY, "Decipher Only"},
};

QByteArray octets(const ASN1_OCTET_STRING* string) {
    if (string == nullptr)
        return QByteArray();
    return QByteArray(reinterpret_cast<const char*>(ASN1_STRING_get0_data(string)), ASN1_STRING_length(string));
}

// OpenSSL's own rendering of a name ("DNS:example.cn", "IP Address:10.0.0.1").
QString generalNameText(GENERAL_NAME* name) {
    BioPtr bio(BIO_new(BIO_s_mem()));
    if (!bio || GENERAL_NAME_print(bio.get(), name) != 1)
        return QString();
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return QString::fromUtf8(data, int(size));
}

QStringList alternativeNames(X509* certificate) {
    QStringList names;
    auto* list = static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
    for (int i = 0; i < sk_GENERAL_NAME_num(list); ++i)
        names << generalNameText(sk_GENERAL_NAME_value(list, i));
    GENERAL_NAMES_free(list);
    return names;
}

}  // namespace

CertificateFacts certificateFacts(X509* certificate) {
    CertificateFacts facts;
    const uint32_t flags = X509_get_extension_flags(certificate);
    facts.extensionsReadable = (flags & EXFLAG_INVALID) == 0;
    facts.hasBasicConstraints = X509_get_ext_by_NID(certificate, NID_basic_constraints, -1) >= 0;
    facts.certificateAuthority = (flags & EXFLAG_BCONS) != 0 && (flags & EXFLAG_CA) != 0;
    facts.pathLength = facts.certificateAuthority ? X509_get_pathlen(certificate) : -1;
    facts.hasKeyUsage = (flags & EXFLAG_KUSAGE) != 0;
    if (facts.hasKeyUsage) {
        const uint32_t usage = X509_get_key_usage(certificate);
        for (const UsageName& entry : kUsageNames) {
            if (usage & entry.bit)
                facts.keyUsage << QLatin1String(entry.name);
        }
        facts.mayCertSign = (usage & KU_KEY_CERT_SIGN) != 0;
    }
    facts.alternativeNames = alternativeNames(certificate);
    facts.subjectKeyId = octets(X509_get0_subject_key_id(certificate));
    facts.authorityKeyId = octets(X509_get0_authority_key_id(certificate));
    return facts;
}

QString basicConstraintsText(const CertificateFacts& facts) {
    if (!facts.hasBasicConstraints)
        return QString();
    if (!facts.certificateAuthority)
        return QStringLiteral("CA:FALSE");
    return facts.pathLength < 0 ? QStringLiteral("CA:TRUE") : QStringLiteral("CA:TRUE, pathlen:%1").arg(facts.pathLength);
}

QString colonHex(const QByteArray& bytes) {
    QString text = QString::fromLatin1(bytes.toHex(':').toUpper());
    return text;
}
