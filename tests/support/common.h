// What the tests share: GoogleTest, output capture, readable Qt values, and
// byte helpers (literals, random data, DER TLVs written independently of the
// library, fixture files, OpenSSL digests and the system's CA bundle).
#ifndef ZTUTIL_TESTS_COMMON_H
#define ZTUTIL_TESTS_COMMON_H

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <QByteArray>
#include <QFile>
#include <QList>
#include <cstring>
#include <initializer_list>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/capture.h"
#include "support/qt_printers.h"

namespace ztutil_test {

using Bytes = std::vector<unsigned char>;

inline QByteArray hex(const char* text) { return QByteArray::fromHex(text); }
inline Bytes bytesOf(const QByteArray& data) { return Bytes(data.begin(), data.end()); }
inline Bytes fromHex(const char* text) { return bytesOf(hex(text)); }
inline QByteArray qbytes(const Bytes& data) {
    return QByteArray(reinterpret_cast<const char*>(data.data()), static_cast<int>(data.size()));
}
inline const unsigned char* octets(const QByteArray& data) {
    return reinterpret_cast<const unsigned char*>(data.constData());
}

inline Bytes randomBytes(std::mt19937& rng, size_t length) {
    Bytes data(length);
    for (unsigned char& byte : data)
        byte = static_cast<unsigned char>(rng());
    return data;
}

inline Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts)
        out.insert(out.end(), part.begin(), part.end());
    return out;
}

// Minimal DER length field.
inline QByteArray derLength(qint64 length) {
    if (length < 0x80)
        return QByteArray(1, static_cast<char>(length));
    QByteArray digits;
    for (qint64 rest = length; rest != 0; rest >>= 8)
        digits.prepend(static_cast<char>(rest & 0xFF));
    return QByteArray(1, static_cast<char>(0x80 | digits.size())) + digits;
}
inline QByteArray tlv(unsigned char tag, const QByteArray& content) {
    return QByteArray(1, static_cast<char>(tag)) + derLength(content.size()) + content;
}
inline Bytes tlv(unsigned char tag, const Bytes& content) { return bytesOf(tlv(tag, qbytes(content))); }

// A file under tests/data.
inline QByteArray fixture(const QString& name) {
    QFile file(QStringLiteral(ZTUTIL_TEST_DATA_DIR "/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline Bytes digest(const EVP_MD* md, const Bytes& data) {
    Bytes out(static_cast<size_t>(EVP_MD_get_size(md)));
    EVP_Digest(data.data(), data.size(), out.data(), nullptr, md, nullptr);
    return out;
}

// Every certificate of the system's CA bundle, as DER (empty without one).
inline QList<QByteArray> caBundle() {
    QList<QByteArray> certificates;
    BIO* bio = BIO_new_file("/etc/ssl/certs/ca-certificates.crt", "r");
    while (X509* certificate = bio ? PEM_read_bio_X509(bio, nullptr, nullptr, nullptr) : nullptr) {
        unsigned char* der = nullptr;
        const int length = i2d_X509(certificate, &der);
        certificates << QByteArray(reinterpret_cast<char*>(der), length);
        OPENSSL_free(der);
        X509_free(certificate);
    }
    BIO_free(bio);
    return certificates;
}

}  // namespace ztutil_test

#endif
