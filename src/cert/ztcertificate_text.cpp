// ZTCertificate: a certificate's validity by parameter number, and the
// conversions between DER bytes and PEM text.
#include <cstdlib>
#include <memory>

#include "ztutil/base64.h"
#include "ztutil/ztasn.h"
#include "ztutil/ztbase64.h"
#include "ztutil/ztcertificate.h"
#include "asn/asn_tags.h"

namespace {

const int kValidityParameter = 4;
// Child 4 of the to-be-signed part is the validity only when the explicit
// version field is present; other certificates yield their subject here.
const int kValidityIndex = 4;

}  // namespace

QString ZTCertificate::GetCertParam(QByteArray qCert, int iParamID, int iParamStruct) {
    QString result;
    if (qCert.isEmpty())
        return result;
    std::unique_ptr<ZTAsn> document(new ZTAsn(nullptr));
    if (!document->open(qCert))
        return result;
    if (iParamID == kValidityParameter && document->checkTag(tag::kSequence)) {
        ZTAsnBlock* tbs = document->getChild(0, tag::kSequence);
        ZTAsnBlock* node = tbs != nullptr ? tbs->getChild(kValidityIndex, iParamStruct) : nullptr;
        if (node != nullptr) {
            const QString notBefore = GetValidityTime(node, 0);
            const QString notAfter = GetValidityTime(node, 1);
            if (!notBefore.isEmpty() && !notAfter.isEmpty())
                result = notBefore + QLatin1Char(';') + notAfter;
        }
    }
    document->close();
    return result;
}

QString ZTCertificate::GetCertString(QByteArray qbCert) {
    // Text up to the first zero byte, or all of it: the array need not be
    // terminated (a host may pass raw data).
    const QString text =
        QString::fromLatin1(qbCert.constData(), static_cast<int>(qstrnlen(qbCert.constData(), qbCert.size())));
    if (qbCert.isEmpty())
        return QString();
    if (text.contains(QLatin1String("CERTIFICATE")))
        return text;  // PEM already
    ZTBase64 base64;
    char* encoded = base64.encodeBase64Ex(reinterpret_cast<unsigned char*>(qbCert.data()),
                                          qbCert.size(), strNormalTable);
    const QString pem = QLatin1String("-----BEGIN CERTIFICATE-----") +
                        QString::fromLatin1(encoded) + QLatin1String("-----END CERTIFICATE-----");
    std::free(encoded);
    return pem;
}

QByteArray ZTCertificate::GetCertByteArray(QString qStrCert) {
    QByteArray result;
    if (qStrCert.isEmpty())
        return result;
    QString text = qStrCert;
    if (text.contains(QLatin1String("BEGIN CERTIFICATE")) &&
        text.contains(QLatin1String("END CERTIFICATE"))) {
        text.remove(QLatin1Char('-'));
        text.remove(QLatin1String("BEGIN CERTIFICATE"));
        text.remove(QLatin1String("END CERTIFICATE"));
    }
    // Line breaks and any other characters go to the decoder as they are,
    // which reads them as padding.
    QByteArray bytes = text.toLatin1();
    int decodedLength = 0;
    ZTBase64 base64;
    unsigned char* decoded = base64.decodeBase64Ex(reinterpret_cast<unsigned char*>(bytes.data()),
                                                   text.length(), strNormalTable, &decodedLength);
    if (decoded != nullptr && decodedLength > 0)
        result = QByteArray(reinterpret_cast<char*>(decoded), decodedLength);
    delete[] decoded;
    return result;
}
