// zthost demo: a short tour of the library as a host drives it.
#include <QByteArray>
#include <QMetaObject>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "commands.h"
#include "host_session.h"

namespace {

QByteArray hex(const QByteArray& bytes) {
    return bytes.toHex(' ');
}

void printVersionQuery(ZtLibrary& library) {
    unsigned int length = 0;
    const int sizeResult = library.getVersion(nullptr, &length);
    std::printf("ZT_GetVersion(null, &len) = %d, len = %u\n", sizeResult, length);
    unsigned char buffer[16];
    std::memset(buffer, '?', sizeof buffer);
    length = sizeof buffer;
    const int textResult = library.getVersion(buffer, &length);
    std::printf("ZT_GetVersion(buf[16], &len) = %d, len = %u, buf = %s\n", textResult, length,
                hex(QByteArray(reinterpret_cast<char*>(buffer), sizeof buffer)).constData());
    std::printf("  (the version text is never copied out: hosts rely on this)\n");
}

// Encodes and decodes `data` through the component with the given alphabet.
bool roundTrip(QObject* base64, const char* label, char* table, const QByteArray& data) {
    QByteArray input = data;
    char* text = nullptr;
    QMetaObject::invokeMethod(base64, "encodeBase64Ex", Qt::DirectConnection,
                              Q_RETURN_ARG(char*, text),
                              Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(input.data())),
                              Q_ARG(int, input.size()), Q_ARG(char*, table));
    if (text == nullptr) {
        std::printf("%s: encodeBase64Ex failed\n", label);
        return false;
    }
    QByteArray encoded(text);  // copied: the terminator follows in the buffer
    std::free(text);
    unsigned char* decoded = nullptr;
    int decodedLength = 0;
    QMetaObject::invokeMethod(
        base64, "decodeBase64Ex", Qt::DirectConnection, Q_RETURN_ARG(unsigned char*, decoded),
        Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(encoded.data())),
        Q_ARG(int, encoded.size()), Q_ARG(char*, table), Q_ARG(int*, &decodedLength));
    const QByteArray back(reinterpret_cast<char*>(decoded), decoded ? decodedLength : 0);
    delete[] decoded;
    const bool same = back == data;
    std::printf("%-18s %s -> %s\n", label, encoded.constData(), same ? "round trip ok" : "MISMATCH");
    return same;
}

QString encodeEx(QObject* base64, const QByteArray& data) {
    QString text;
    QMetaObject::invokeMethod(base64, "encodeEx", Qt::DirectConnection,
                              Q_RETURN_ARG(QString, text), Q_ARG(QByteArray, data));
    return text;
}

void setTableCode(QObject* base64, char* table) {
    QMetaObject::invokeMethod(base64, "setTableCode", Qt::DirectConnection, Q_ARG(char*, table));
}

}  // namespace

int runDemo(HostSession& session, const QStringList&) {
    std::printf("== library\n");
    printVersionQuery(session.library());

    std::printf("\n== components\n");
    std::unique_ptr<QObject> base64 = session.create("ZTUTIL.ZTBase64.1");
    if (!base64) {
        std::fprintf(stderr, "zthost: CreateComponent(\"ZTUTIL.ZTBase64.1\") gave null\n");
        return kExitFailed;
    }
    std::printf("CreateComponent(\"ZTUTIL.ZTBase64.1\") -> %s\n",
                base64->metaObject()->className());
    std::unique_ptr<QObject> unknown = session.create("ZTUTIL.ZTCertificate.1");
    std::printf("CreateComponent(\"ZTUTIL.ZTCertificate.1\") -> %s (only \"Cerificate\" is registered)\n",
                unknown ? unknown->metaObject()->className() : "null");

    std::printf("\n== Base64\n");
    auto* normalTable = static_cast<char**>(session.library().symbol("strNormalTable"));
    auto* sm2Table = static_cast<char**>(session.library().symbol("strSM2Table"));
    if (normalTable == nullptr || sm2Table == nullptr) {
        std::fprintf(stderr, "zthost: the alphabets are not exported\n");
        return kExitFailed;
    }
    const QByteArray sample("Seal \x00\xff\x10 data", 13);
    std::printf("data: %s\n", hex(sample).constData());
    bool ok = roundTrip(base64.get(), "standard alphabet", *normalTable, sample);
    ok = roundTrip(base64.get(), "SM2 alphabet", *sm2Table, sample) && ok;
    std::printf("%-18s %s\n", "encodeEx", encodeEx(base64.get(), sample).toLatin1().constData());
    setTableCode(base64.get(), *sm2Table);
    std::printf("%-18s %s\n", "encodeEx (SM2)", encodeEx(base64.get(), sample).toLatin1().constData());
    setTableCode(base64.get(), nullptr);

    std::printf("\n== shutdown\n");
    base64.reset();
    std::printf("components deleted by the host; ComponentDestroy() deletes the agent\n");
    return ok ? kExitOk : kExitFailed;
}
