#include "services/base64_text.h"

#include <QMetaObject>
#include <cstdlib>
#include <memory>

#include "cli/cli.h"
#include "host/components.h"
#include "host/host_session.h"
#include "host/invoke.h"
#include "host/library_symbols.h"

namespace {

void selectTable(QObject* base64, char* table) {
    callByName(base64, "setTableCode", QGenericReturnArgument(), Q_ARG(char*, table));
}

}  // namespace

QByteArray encodeBase64(HostSession& session, const QByteArray& data, char* table) {
    if (data.isEmpty())
        return QByteArray();
    std::unique_ptr<QObject> base64 = requireComponent(session, progid::kBase64);
    QByteArray input = data;
    char* text = nullptr;
    callByName(base64.get(), "encodeBase64Ex", Q_RETURN_ARG(char*, text),
               Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(input.data())),
               Q_ARG(int, input.size()), Q_ARG(char*, table));
    if (text == nullptr)
        throw CommandFailure(kExitFailed, QStringLiteral("the library could not encode the data"));
    const QByteArray encoded(text);
    std::free(text);  // calloc'ed by the library
    return encoded;
}

bool decodeBase64Strict(HostSession& session, const QByteArray& text, char* table, QByteArray* bytes) {
    auto decode = requireSymbol<fn::Base64Decode>(session.library(), Symbol::Base64Decode);
    std::unique_ptr<QObject> base64 = requireComponent(session, progid::kBase64);
    selectTable(base64.get(), table);
    long length = 0;
    unsigned char* decoded = decode(text.constData(), &length);
    selectTable(base64.get(), nullptr);
    if (decoded == nullptr)
        return false;
    *bytes = QByteArray(reinterpret_cast<const char*>(decoded), static_cast<int>(length));
    std::free(decoded);  // calloc'ed by the library
    return true;
}

QByteArray decodeBase64Lenient(HostSession& session, const QByteArray& text, char* table) {
    if (text.isEmpty())
        return QByteArray();
    std::unique_ptr<QObject> base64 = requireComponent(session, progid::kBase64);
    QByteArray input = text;  // NUL-terminated: the decoder reads one byte past the length
    int length = 0;
    unsigned char* decoded = nullptr;
    callByName(base64.get(), "decodeBase64Ex", Q_RETURN_ARG(unsigned char*, decoded),
               Q_ARG(unsigned char*, reinterpret_cast<unsigned char*>(input.data())),
               Q_ARG(int, input.size()), Q_ARG(char*, table), Q_ARG(int*, &length));
    if (decoded == nullptr)
        throw CommandFailure(kExitFailed, QStringLiteral("the library could not decode the text"));
    const QByteArray bytes(reinterpret_cast<const char*>(decoded), length);
    delete[] decoded;  // new[]'ed by the library
    return bytes;
}
