// The seal builders of ZTCertificate with fuzzed fields.
//
// Every result is compared with the structure written independently by
// OpenSSL's DER writer from the same fields (the seal and to-be-signed
// elements as the library's engine re-encodes them); every non-empty result
// is one whole DER element that ZTAsn parses back to the same bytes; the
// failures keep their null / empty difference; and the host's log receives
// the start line of the signature structure through the agent.
#include <fuzzer/FuzzedDataProvider.h>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <cstdint>

#include "fuzz_support.h"
#include "ztutil/component.h"
#include "ztutil/ztasn.h"
#include "ztutil/ztcertificate.h"

namespace {

using fuzz::derElement;

// The host's signature core as far as the seal builders use it.
class LogHost : public QObject {
    Q_OBJECT
public:
    Q_INVOKABLE void logDebug(QString line) { lines << line; }
    QStringList lines;
};

const QByteArray kSm2WithSm3Oid = QByteArray::fromHex("2A811CCF55018375");
const char kStartLine[] = "[ztcertificate:CreateSM2DigalStruct:813] start";

struct Fields {
    QByteArray seal, property, hash, certificate, time, method, signature, version;
    bool negativeLengths;  // lengths passed as negative numbers, which count as empty
};

Fields consumeFields(FuzzedDataProvider* provider) {
    Fields fields;
    for (QByteArray* field : {&fields.seal, &fields.property, &fields.hash, &fields.certificate,
                              &fields.time, &fields.method, &fields.signature, &fields.version})
        *field = QByteArray::fromStdString(provider->ConsumeRandomLengthString(4096));
    fields.negativeLengths = provider->ConsumeIntegralInRange(0, 15) == 0;
    return fields;
}

unsigned char* pointer(QByteArray& field) {
    return fuzz::octets(field);
}

int length(const QByteArray& field, const Fields& fields) {
    return fields.negativeLengths ? -field.size() : field.size();
}

QByteArray bitString(const QByteArray& payload) {
    return derElement(fuzz::kBitString, QByteArray(1, '\0') + payload);
}

// An r and s INTEGER with a 00 in front of a first octet above 0x80.
QByteArray integer(QByteArray value) {
    if (!value.isEmpty() && static_cast<unsigned char>(value.at(0)) > 0x80)
        value.prepend('\0');
    return derElement(fuzz::kInteger, value);
}

// The SM2 signature structure: DER (first octet 0x30, more than 65 octets)
// as it stands, anything else as r (octets 0-31) and s (octets 32-63).
QByteArray signatureStructure(const QByteArray& value) {
    if (value.size() > 65 && static_cast<unsigned char>(value.at(0)) == 0x30)
        return value;
    return derElement(fuzz::kSequence, integer(value.mid(0, 32)) + integer(value.mid(32, 32)));
}

// OID content the library stores for method text, or false when the text is
// digits and dots that the library converts by its own rules.
bool methodContent(const QByteArray& method, QByteArray* content) {
    if (method.isEmpty()) {
        *content = kSm2WithSm3Oid;
        return true;
    }
    const QByteArray text(method.constData());  // what the converter reads
    for (char c : text) {
        if ((c < '0' || c > '9') && c != '.') {
            *content = method;  // not a dotted text: stored as it stands
            return true;
        }
    }
    return text.size() == method.size() && fuzz::comparableOidContent(text.constData(), content) &&
           content->size() <= 256;
}

void isWholeAndParsesBack(const QByteArray& result) {
    if (result.isEmpty())
        return;
    FUZZ_CHECK(fuzz::isOneWholeElement(result));
    ZTAsn document;
    FUZZ_CHECK(document.open(result));
    FUZZ_CHECK(document.build() == result);
}

// Null unless seal, digest and time are present and the seal parses.
QByteArray expectedSignInfo(const Fields& fields, char version, const QByteArray& time,
                            const QByteArray& tail) {
    if (fields.negativeLengths || fields.seal.isEmpty() || fields.hash.isEmpty() || fields.time.isEmpty())
        return QByteArray();
    const QByteArray seal = fuzz::canonicalElement(fields.seal);
    if (seal.isNull())
        return QByteArray();
    return derElement(fuzz::kSequence, derElement(fuzz::kInteger, QByteArray(1, version)) + seal + time +
                                           bitString(fields.hash) +
                                           derElement(fuzz::kIa5String, fields.property) + tail);
}

QByteArray gmSignInfo(ZTCertificate& certificate, Fields& fields) {
    const QByteArray result = certificate.GetGMSignInfo(
        pointer(fields.version), length(fields.version, fields), pointer(fields.seal),
        length(fields.seal, fields), pointer(fields.property), length(fields.property, fields),
        pointer(fields.hash), length(fields.hash, fields), pointer(fields.certificate),
        length(fields.certificate, fields), pointer(fields.time), length(fields.time, fields),
        pointer(fields.method), length(fields.method, fields));
    const QByteArray expected =
        expectedSignInfo(fields, 2, bitString(fields.time),
                         derElement(fuzz::kOctetString, fields.certificate) + derElement(fuzz::kOid, kSm2WithSm3Oid));
    FUZZ_CHECK(result == expected && result.isNull() == expected.isNull());
    isWholeAndParsesBack(result);
    return result;
}

QByteArray zwSignInfo(ZTCertificate& certificate, Fields& fields) {
    const QByteArray result = certificate.GetZWSignInfo(
        pointer(fields.version), length(fields.version, fields), pointer(fields.seal),
        length(fields.seal, fields), pointer(fields.property), length(fields.property, fields),
        pointer(fields.hash), length(fields.hash, fields), pointer(fields.method),
        length(fields.method, fields), pointer(fields.time), length(fields.time, fields));
    const QByteArray expected =
        expectedSignInfo(fields, 4, derElement(fuzz::kGeneralizedTime, fields.time), QByteArray());
    FUZZ_CHECK(result == expected && result.isNull() == expected.isNull());
    isWholeAndParsesBack(result);
    return result;
}

void gmSignature(ZTCertificate& certificate, const QByteArray& signInfo, const QByteArray& signature) {
    const QByteArray result = certificate.GetGMV2ASNData(signInfo, signature);
    // A failure is an empty but not null array.
    QByteArray expected("");
    if (!signature.isEmpty())
        expected = derElement(fuzz::kSequence, fuzz::canonicalElement(signInfo) +
                                                   bitString(signatureStructure(signature)));
    FUZZ_CHECK(result == expected && !result.isNull());
    isWholeAndParsesBack(result);
}

void zwSignature(ZTCertificate& certificate, const QByteArray& signInfo, const Fields& fields) {
    const QByteArray result =
        certificate.GetZWASNData(signInfo, fields.certificate, fields.method, fields.signature);
    isWholeAndParsesBack(result);
    if (fields.certificate.isEmpty() || fields.signature.isEmpty()) {
        FUZZ_CHECK(result.isNull());
        return;
    }
    QByteArray oid;
    if (!methodContent(fields.method, &oid))
        return;
    FUZZ_CHECK(result == derElement(fuzz::kSequence, fuzz::canonicalElement(signInfo) +
                                                      derElement(fuzz::kOctetString, fields.certificate) +
                                                      derElement(fuzz::kOid, oid) +
                                                      bitString(signatureStructure(fields.signature))));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::silenceLibraryOutput();
    static LogHost* const host = [] {
        auto* created = new LogHost;
        ComponentInit(created);
        return created;
    }();
    if (size > fuzz::kMaxInput)
        return 0;
    FuzzedDataProvider provider(data, size);
    Fields fields = consumeFields(&provider);
    ZTCertificate certificate;
    const QByteArray gm = gmSignInfo(certificate, fields);
    const QByteArray zw = zwSignInfo(certificate, fields);
    // The signature structures over the builders' own output when there is
    // one, otherwise over the seal field as it came.
    host->lines.clear();
    gmSignature(certificate, gm.isEmpty() ? fields.seal : gm, fields.signature);
    zwSignature(certificate, zw.isEmpty() ? fields.seal : zw, fields);
    for (const QString& line : host->lines)
        FUZZ_CHECK(line == QLatin1String(kStartLine));
    FUZZ_CHECK(host->lines.size() == (fields.signature.isEmpty() ? 0 : 1 + !fields.certificate.isEmpty()));
    return 0;
}

#include "seal_fuzz.moc"
