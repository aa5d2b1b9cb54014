// Certificates as users hand them over: DER, PEM or bare Base64, told apart
// by their content. Text forms become DER through the library's own
// ZTCertificate::GetCertByteArray.
#ifndef ZTHOST_CERTIFICATE_INPUT_H
#define ZTHOST_CERTIFICATE_INPUT_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

class HostSession;

enum class CertificateFormat { Der, Pem, Base64 };
const char* certificateFormatName(CertificateFormat format);

struct CertificateFile {
    QString path;
    CertificateFormat format = CertificateFormat::Der;
    QByteArray der;
};

// Reads and, for text, decodes a certificate. Throws CommandFailure for
// unreadable files and for content that is no certificate encoding; whether
// the DER parses is left to the caller.
CertificateFile readCertificate(HostSession& session, const QString& path);

// Every certificate of a file that may hold several (PEM text with one
// CERTIFICATE block after another), as DER; one of any form otherwise.
std::vector<QByteArray> readCertificates(HostSession& session, const QString& path);

// The certificates of every file in `paths` (the --ca options), in order.
std::vector<QByteArray> readAuthorities(HostSession& session, const QStringList& paths);

#endif
