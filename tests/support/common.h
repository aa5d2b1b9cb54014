// What the tests share: GoogleTest, output capture, readable Qt values, and
// byte helpers (literals, random data, DER TLVs written independently of the
// library, fixture and example files, OpenSSL digests).
#ifndef ZTUTIL_TESTS_COMMON_H
#define ZTUTIL_TESTS_COMMON_H

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <QByteArray>
#include <QFile>
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
inline Bytes fromHex(const char* text) { return ztutil_test::bytesOf(hex(text)); }
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
inline Bytes tlv(unsigned char tag, const Bytes& content) {
    return ztutil_test::bytesOf(tlv(tag, qbytes(content)));
}

// A file under tests/data, and one of the example files in examples/ (both
// made with the openssl command); a file that cannot be read fails the test.
inline QByteArray readFile(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}
inline QByteArray fixture(const QString& name) { return readFile(QStringLiteral(ZTUTIL_TEST_DATA_DIR "/") + name); }
inline QByteArray example(const QString& name) {
    return readFile(QStringLiteral(ZTUTIL_TEST_DATA_DIR "/../../examples/") + name);
}

inline Bytes digest(const EVP_MD* md, const Bytes& data) {
    Bytes out(static_cast<size_t>(EVP_MD_get_size(md)));
    EVP_Digest(data.data(), data.size(), out.data(), nullptr, md, nullptr);
    return out;
}

}  // namespace ztutil_test

#endif
