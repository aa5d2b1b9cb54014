#include "services/certificate_view.h"

#include "cli/cli.h"
#include "host/components.h"
#include "host/invoke.h"
#include "readers/der_tags.h"
#include "readers/der_values.h"
#include "readers/oid_names.h"

namespace {

const int kValidityParam = 4;

struct NameAccessor {
    const char* accessor;
    bool issuer;
    const char* type;
};

const NameAccessor kNameAccessors[] = {
    {"getIssuerC", true, "2.5.4.6"},    {"getIssuerO", true, "2.5.4.10"},   {"getIssuerOU", true, "2.5.4.11"},
    {"getIssuerCN", true, "2.5.4.3"},   {"getSubjectCN", false, "2.5.4.3"}, {"getSubjectO", false, "2.5.4.10"},
    {"getSubjectOU", false, "2.5.4.11"},
};

const NameAccessor* nameAccessor(const char* accessor) {
    for (const NameAccessor& entry : kNameAccessors) {
        if (qstrcmp(entry.accessor, accessor) == 0)
            return &entry;
    }
    return nullptr;
}

// The library's octets of a name of `tag`, decoded.
QString decodeLibraryName(const QString& carried, unsigned char tag) {
    for (const QChar c : carried) {
        if (c.unicode() > 0xFF)
            return carried;  // not octets
    }
    const QByteArray octets = carried.toLatin1();
    // BMP names come back converted to UTF-8.
    const unsigned char octetsTag = tag == der::tag::kBmpString ? der::tag::kUtf8String : tag;
    const QString decoded = der::decodeText(octetsTag, ByteView::of(octets));
    return decoded.isNull() ? textFromLibrary(carried) : decoded;
}

}  // namespace

QString timeText(const QDateTime& time) {
    return time.isValid() ? time.toUTC().toString(Qt::ISODate) : QStringLiteral("invalid");
}

CertificateView::CertificateView(HostSession& session, const QByteArray& der, const QString& source)
    : component_(requireComponent(session, progid::kCertificate)), der_(der) {
    bool opened = false;
    callByName(component_.get(), "open", Q_RETURN_ARG(bool, opened), Q_ARG(QByteArray, der_));
    if (!opened) {
        throw CommandFailure(kExitFailed,
                             QStringLiteral("%1: the library cannot parse this certificate").arg(source));
    }
    try {
        const CertificateFields fields = readCertificateFields(ByteView::of(der_));
        issuer_ = fields.issuerAttributes;
        subject_ = fields.subjectAttributes;
    } catch (const FormatError&) {
        // names are then shown as the library returns them
    }
}

QString CertificateView::name(const char* accessor) const {
    const QString carried = text(accessor);
    const NameAccessor* entry = nameAccessor(accessor);
    const NameAttribute* attribute = entry == nullptr ? nullptr : lastAttribute(entry->issuer ? issuer_ : subject_, entry->type);
    return attribute == nullptr ? textFromLibrary(carried) : decodeLibraryName(carried, attribute->tag);
}

QString CertificateView::text(const char* accessor) const {
    QString value;
    callByName(component_.get(), accessor, Q_RETURN_ARG(QString, value));
    return value;
}

QDateTime CertificateView::time(const char* accessor) const {
    QDateTime value;
    callByName(component_.get(), accessor, Q_RETURN_ARG(QDateTime, value));
    return value;
}

QByteArray CertificateView::bytes(const char* accessor) const {
    QByteArray value;
    callByName(component_.get(), accessor, Q_RETURN_ARG(QByteArray, value));
    return value;
}

QString CertificateView::validityDigits() const {
    QString value;
    callByName(component_.get(), "GetCertParam", Q_RETURN_ARG(QString, value), Q_ARG(QByteArray, der_),
               Q_ARG(int, kValidityParam), Q_ARG(int, int(der::tag::kSequence)));
    return value;
}

namespace {

// "getIssuerCN" -> "issuer_cn"
QByteArray snakeCase(const char* accessor) {
    QByteArray key(accessor + 3);  // without "get"
    const int split = key.startsWith("Issuer") ? 6 : 7;
    return (key.left(split) + '_' + key.mid(split)).toLower();
}

}  // namespace

Report CertificateView::fields() const {
    Report report = Report::object();
    report.set("version", text("version"));
    report.set("serial_number", text("serialNumber"));
    const QString algorithm = text("algName");
    report.set("signature_algorithm", algorithm);
    report.set("signature_algorithm_name", oidName(algorithm));
    // The library's DN texts with their parts decoded.
    report.set("issuer", QStringLiteral("C=%1,O=%2,OU=%3,CN=%4")
                             .arg(name("getIssuerC"), name("getIssuerO"), name("getIssuerOU"), name("getIssuerCN")));
    report.set("subject", QStringLiteral("CN=%1,E=%2,O=%3,OU=%4")
                              .arg(name("getSubjectCN"), name("getSubjectE"), name("getSubjectO"), name("getSubjectOU")));
    for (const char* accessor : {"getIssuerC", "getIssuerO", "getIssuerOU", "getIssuerCN", "getSubjectCN", "getSubjectE",
                                 "getSubjectO", "getSubjectOU"})
        report.set(snakeCase(accessor).constData(), name(accessor));
    report.set("not_before", timeText(time("notBefore")));
    report.set("not_after", timeText(time("notAfter")));
    report.set("validity_digits", validityDigits());
    const QString keyAlgorithm = text("pubKeyAlgOID");
    report.set("public_key_algorithm", keyAlgorithm);
    report.set("public_key_algorithm_name", oidName(keyAlgorithm));
    report.set("public_key_bytes", bytes("getPublicKeyData").size());
    report.set("public_key", text("pubkey"));
    return report;
}
