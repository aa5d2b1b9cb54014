#include "services/certificate_input.h"

#include <QMetaObject>

#include "cli/cli.h"
#include "host/components.h"
#include "cli/input.h"
#include "readers/der_tags.h"
#include "host/invoke.h"

namespace {

const char kPemBegin[] = "-----BEGIN CERTIFICATE-----";
const char kPemEnd[] = "-----END CERTIFICATE-----";

[[noreturn]] void fail(const QString& path, const QString& reason) {
    throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(input::displayName(path), reason));
}

bool isBase64Text(const QByteArray& compact) {
    if (compact.isEmpty())
        return false;
    for (const char c : compact) {
        const bool digit = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                           c == '+' || c == '/' || c == '=';
        if (!digit)
            return false;
    }
    return true;
}

// The certificate block of PEM text on one line: the markers, then the
// Base64 body with all white space removed. GetCertByteArray strips the
// markers but hands line breaks to the lenient Base64 decoder, which reads
// each of them as padding and so corrupts everything after the first line:
// the body must reach it without any. `from` is where to look for the block.
QByteArray compactPemBlock(const QByteArray& text, const QString& path, int from = 0) {
    const int begin = text.indexOf(kPemBegin, from);
    const int bodyStart = begin + int(sizeof kPemBegin) - 1;
    const int end = begin < 0 ? -1 : text.indexOf(kPemEnd, bodyStart);
    if (begin < 0 || end < 0)
        fail(path, QStringLiteral("PEM text without a complete CERTIFICATE block"));
    return kPemBegin + input::withoutWhitespace(text.mid(bodyStart, end - bodyStart)) + kPemEnd;
}

QByteArray derFromText(HostSession& session, const QByteArray& text, const QString& path) {
    std::unique_ptr<QObject> certificate = requireComponent(session, progid::kCertificate);
    QByteArray der;
    callByName(certificate.get(), "GetCertByteArray", Q_RETURN_ARG(QByteArray, der),
               Q_ARG(QString, QString::fromLatin1(text)));
    if (der.isEmpty())
        fail(path, QStringLiteral("the certificate text decodes to nothing"));
    return der;
}

CertificateFile certificateOf(HostSession& session, const QString& path, const QByteArray& content) {
    CertificateFile file;
    file.path = path;
    if (content.isEmpty())
        fail(path, QStringLiteral("empty file"));
    if (static_cast<unsigned char>(content.at(0)) == der::tag::kSequence) {
        file.der = content;
        return file;
    }
    if (!input::isText(content))
        fail(path, QStringLiteral("neither a DER certificate nor PEM or Base64 text"));
    if (content.contains("-----BEGIN")) {
        file.format = CertificateFormat::Pem;
        file.der = derFromText(session, compactPemBlock(content, path), path);
        return file;
    }
    const QByteArray compact = input::withoutWhitespace(content);
    if (!isBase64Text(compact))
        fail(path, QStringLiteral("text that is neither PEM nor Base64"));
    file.format = CertificateFormat::Base64;
    file.der = derFromText(session, compact, path);
    return file;
}

}  // namespace

const char* certificateFormatName(CertificateFormat format) {
    switch (format) {
    case CertificateFormat::Der: return "DER";
    case CertificateFormat::Pem: return "PEM";
    case CertificateFormat::Base64: return "Base64";
    }
    return "DER";
}

CertificateFile readCertificate(HostSession& session, const QString& path) {
    return certificateOf(session, path, input::readFile(path, input::kMaxValueSize));
}

std::vector<QByteArray> readCertificates(HostSession& session, const QString& path) {
    const QByteArray content = input::readFile(path, input::kMaxValueSize);
    if (content.count(kPemBegin) < 2)
        return {certificateOf(session, path, content).der};
    std::vector<QByteArray> certificates;
    for (int at = content.indexOf(kPemBegin); at >= 0; at = content.indexOf(kPemBegin, at + 1))
        certificates.push_back(derFromText(session, compactPemBlock(content, path, at), path));
    return certificates;
}

std::vector<QByteArray> readAuthorities(HostSession& session, const QStringList& paths) {
    std::vector<QByteArray> authorities;
    for (const QString& path : paths) {
        for (const QByteArray& der : readCertificates(session, path))
            authorities.push_back(der);
    }
    return authorities;
}
