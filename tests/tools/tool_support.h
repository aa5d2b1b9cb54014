// What zthost's tests share: the files they read (the examples and the OFD
// test documents), the loaded library, and OpenSSL's walk over a DER document.
#ifndef ZTHOST_TESTS_TOOL_SUPPORT_H
#define ZTHOST_TESTS_TOOL_SUPPORT_H

#include <gtest/gtest.h>
#include <openssl/asn1.h>
#include <openssl/objects.h>

#include <QByteArray>
#include <QString>
#include <vector>

#include "host/host_session.h"
#include "support/common.h"

using ztutil_test::example;
using ztutil_test::fixture;

inline QByteArray ofdData(const char* name) { return fixture(QStringLiteral("ofd/") + QLatin1String(name)); }

// Tests that call the built libZTUtil.so.1 through a host session, as zthost does.
class LoadedLibraryTest : public ::testing::Test {
protected:
    void SetUp() override {
        QString error;
        ASSERT_TRUE(session_.start(QStringLiteral(ZTUTIL_BINARY_DIR "/bin/libZTUtil.so.1"), &error))
            << error.toStdString();
    }
    HostSession session_;
};

// One DER element as a walk over a document sees it; `oid` is the dotted
// text of an OBJECT IDENTIFIER, empty otherwise.
struct DerSeen {
    int offset, tag, header, length;
    QString oid;
    bool operator==(const DerSeen& o) const {
        return offset == o.offset && tag == o.tag && header == o.header && length == o.length && oid == o.oid;
    }
};

// OpenSSL's ASN1_get_object over `der`, descending into constructed elements.
inline void openSslWalk(const unsigned char* start, const unsigned char* p, long available,
                        std::vector<DerSeen>* out) {
    const unsigned char* end = p + available;
    while (p < end) {
        const unsigned char* header = p;
        long length = 0;
        int tag = 0, xclass = 0;
        const int flags = ASN1_get_object(&p, &length, &tag, &xclass, end - p);
        ASSERT_EQ(flags & 0x80, 0) << "OpenSSL rejects the element at " << header - start;
        QString oid;
        if (header[0] == V_ASN1_OBJECT) {
            const unsigned char* objectStart = header;
            ASN1_OBJECT* object = d2i_ASN1_OBJECT(nullptr, &objectStart, p + length - header);
            char text[128];
            OBJ_obj2txt(text, sizeof text, object, 1);
            ASN1_OBJECT_free(object);
            oid = QString::fromLatin1(text);
        }
        out->push_back({int(header - start), header[0], int(p - header), int(length), oid});
        if (flags & V_ASN1_CONSTRUCTED)
            openSslWalk(start, p, length, out);
        p += length;
    }
}

inline std::vector<DerSeen> openSslWalk(const QByteArray& der) {
    std::vector<DerSeen> seen;
    const auto* bytes = reinterpret_cast<const unsigned char*>(der.constData());
    openSslWalk(bytes, bytes, der.size(), &seen);
    return seen;
}

#endif
