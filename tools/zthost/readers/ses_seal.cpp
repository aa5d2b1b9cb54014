#include "readers/ses_seal.h"

#include "readers/der.h"
#include "readers/der_builder.h"
#include "readers/der_values.h"
#include "readers/ses_fields.h"

namespace {

const int kV1SealCount = 2;
const int kV4SealCount = 4;
const int kV1PropertyCount = 6;
const int kV4PropertyCount = 7;
const qint64 kCertificateDigests = 2;

void readHeader(const der::Element& element, SesSeal* seal) {
    der::Fields header(element, der::tag::kSequence, QStringLiteral("the seal header"));
    seal->headerId = ses::text(header.nextAny("id"), "header id");
    seal->headerVersion = ses::integer(header.next(der::tag::kInteger, "version"), "header version");
    seal->vendorId = ses::text(header.nextAny("vendor id"), "vendor id");
    header.expectEnd();
}

void readCertificateList(const der::Element& element, SesSeal* seal) {
    der::Fields list(element, der::tag::kSequence, QStringLiteral("the seal's certificate list"));
    while (!list.atEnd()) {
        if (seal->certListType == kCertificateDigests) {
            der::Fields digest(list.nextAny("certificate digest"), der::tag::kSequence,
                               QStringLiteral("a certificate digest"));
            const QString type = ses::text(digest.nextAny("type"), "digest type");
            seal->signerCertificateDigests.push_back({type, digest.next(der::tag::kOctetString, "value").content});
        } else {
            seal->signerCertificates.push_back(list.next(der::tag::kOctetString, "certificate").content);
        }
    }
}

void readProperty(const der::Element& element, SesSeal* seal) {
    der::Fields property(element, der::tag::kSequence, QStringLiteral("the seal property"));
    if (property.count() != kV1PropertyCount && property.count() != kV4PropertyCount)
        throw FormatError{QStringLiteral("the seal property at offset %1 has %2 elements, expected %3 or %4")
                              .arg(element.offset()).arg(property.count()).arg(kV1PropertyCount).arg(kV4PropertyCount)};
    seal->type = ses::integer(property.next(der::tag::kInteger, "type"), "seal type");
    seal->name = ses::text(property.nextAny("name"), "seal name");
    if (property.count() == kV4PropertyCount)
        seal->certListType = ses::integer(property.next(der::tag::kInteger, "certificate list type"),
                                          "certificate list type");
    readCertificateList(property.nextAny("certificate list"), seal);
    seal->createDate = ses::time(property.nextAny("creation date"), "creation date");
    seal->validStart = ses::time(property.nextAny("start of validity"), "start of validity");
    seal->validEnd = ses::time(property.nextAny("end of validity"), "end of validity");
}

void readPicture(const der::Element& element, SesSeal* seal) {
    der::Fields picture(element, der::tag::kSequence, QStringLiteral("the seal picture"));
    seal->pictureType = ses::text(picture.nextAny("type"), "picture type");
    seal->pictureData = picture.next(der::tag::kOctetString, "data").content;
    seal->pictureWidth = ses::integer(picture.next(der::tag::kInteger, "width"), "picture width");
    seal->pictureHeight = ses::integer(picture.next(der::tag::kInteger, "height"), "picture height");
    picture.expectEnd();
}

void readSealInfo(const der::Element& element, SesSeal* seal) {
    seal->sealInfo = element.whole;
    der::Fields info(element, der::tag::kSequence, QStringLiteral("the seal information"));
    readHeader(info.next(der::tag::kSequence, "header"), seal);
    seal->esId = ses::text(info.nextAny("seal id"), "seal id");
    readProperty(info.next(der::tag::kSequence, "property"), seal);
    readPicture(info.next(der::tag::kSequence, "picture"), seal);
    der::Element extensions;
    if (info.nextIf(der::tag::kSequence, &extensions)) {
        der::Fields list(extensions, der::tag::kSequence, QStringLiteral("the seal's extension data"));
        seal->extensionCount = list.count();
    }
    info.expectEnd();
}

// signInfo is a SEQUENCE; some producers wrap it in a BIT STRING.
der::Element signInfoSequence(const der::Element& element) {
    if (element.tag != der::tag::kBitString)
        return element;
    ByteView payload;
    if (!der::bitStringPayload(element, &payload))
        throw FormatError{QStringLiteral("the maker's signature information at offset %1 is a BIT STRING with "
                                         "unused bits").arg(element.offset())};
    return der::expectSingle(payload, der::tag::kSequence, QStringLiteral("the maker's signature information"));
}

}  // namespace

const char* sesLayoutName(SesLayout layout) {
    return layout == SesLayout::V1 ? "GM/T 0031 (v1)" : "GB/T 38540 (v4)";
}

SesSeal readSesSeal(const ByteView& der) {
    const der::Element whole = der::expectSingle(der, der::tag::kSequence, QStringLiteral("the seal"));
    der::Fields fields(whole, der::tag::kSequence, QStringLiteral("the seal"));
    SesSeal seal;
    seal.whole = whole.whole;
    if (fields.count() == kV4SealCount) {
        seal.layout = SesLayout::V4;
        readSealInfo(fields.next(der::tag::kSequence, "seal information"), &seal);
        seal.makerCertificate = fields.next(der::tag::kOctetString, "maker certificate").content;
        seal.makerAlgorithm = ses::algorithm(fields.next(der::tag::kOid, "algorithm"));
        seal.makerSignature = ses::bitString(fields.next(der::tag::kBitString, "maker signature"), "maker signature");
        seal.makerSignedBytes = seal.sealInfo.toByteArray();
    } else if (fields.count() == kV1SealCount) {
        seal.layout = SesLayout::V1;
        readSealInfo(fields.next(der::tag::kSequence, "seal information"), &seal);
        der::Fields signInfo(signInfoSequence(fields.nextAny("maker's signature information")), der::tag::kSequence,
                             QStringLiteral("the maker's signature information"));
        const der::Element cert = signInfo.next(der::tag::kOctetString, "maker certificate");
        const der::Element algorithm = signInfo.next(der::tag::kOid, "algorithm");
        seal.makerCertificate = cert.content;
        seal.makerAlgorithm = ses::algorithm(algorithm);
        seal.makerSignature = ses::bitString(signInfo.next(der::tag::kBitString, "maker signature"), "maker signature");
        signInfo.expectEnd();
        seal.makerSignedBytes = der::element(der::tag::kSequence, seal.sealInfo.toByteArray() +
                                                                      cert.whole.toByteArray() +
                                                                      algorithm.whole.toByteArray());
    } else {
        throw FormatError{QStringLiteral("the seal has %1 elements: neither GB/T 38540 (4) nor GM/T 0031 (2)")
                              .arg(fields.count())};
    }
    return seal;
}

QString pictureExtension(const QString& type) {
    const QString word = type.trimmed().toLower();
    if (word == QLatin1String("jpeg"))
        return QStringLiteral("jpg");
    if (word.isEmpty() || word.size() > 8)
        return QStringLiteral("bin");
    for (const QChar c : word) {
        if (!(c >= QLatin1Char('a') && c <= QLatin1Char('z')) && !(c >= QLatin1Char('0') && c <= QLatin1Char('9')))
            return QStringLiteral("bin");
    }
    return word;
}
