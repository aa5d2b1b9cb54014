#include "readers/seal_structure.h"

#include "readers/der.h"
#include "readers/der_values.h"

namespace {

const int kGmOuterCount = 2;
const int kGmInnerCount = 7;
const int kZwOuterCount = 4;
const int kZwInnerCount = 5;
const qint64 kGmVersion = 2;
const qint64 kZwVersion = 4;

ByteView bitString(der::Fields& fields, const char* what) {
    ByteView payload;
    if (!der::bitStringPayload(fields.next(der::tag::kBitString, what), &payload))
        throw FormatError{QStringLiteral("the %1 BIT STRING has unused bits").arg(QLatin1String(what))};
    return payload;
}

QString algorithm(der::Fields& fields) {
    const QString dotted = der::oidText(fields.next(der::tag::kOid, "algorithm").content);
    if (dotted.isEmpty())
        throw FormatError{QStringLiteral("the algorithm OBJECT IDENTIFIER is malformed")};
    return dotted;
}

}  // namespace

const char* sealFormatName(SealFormat format) {
    return format == SealFormat::Gm ? "GM" : "government affairs (ZW)";
}

SealSignature parseSealSignature(const ByteView& bytes) {
    der::Element whole;
    if (!der::readSingle(bytes, &whole))
        throw FormatError{QStringLiteral("not one complete DER element")};
    der::Fields outer(whole, der::tag::kSequence, QStringLiteral("the signature structure"));
    const der::Element tbs = outer.next(der::tag::kSequence, "to-be-signed part");
    der::Fields inner(tbs, der::tag::kSequence, QStringLiteral("the to-be-signed part"));
    // The version tells the formats apart; the element counts confirm it.
    qint64 version = 0;
    der::Element versionElement;
    const bool hasVersion = inner.nextIf(der::tag::kInteger, &versionElement) &&
                            der::smallInteger(versionElement.content, &version);
    SealSignature seal;
    seal.toBeSigned = tbs.whole;
    if (hasVersion && version == kGmVersion && outer.count() == kGmOuterCount && inner.count() == kGmInnerCount) {
        seal.format = SealFormat::Gm;
        seal.seal = inner.nextAny("seal").whole;
        seal.time = bitString(inner, "time");
        seal.digest = bitString(inner, "digest");
        seal.property = inner.next(der::tag::kIa5String, "property").content;
        seal.certificate = inner.next(der::tag::kOctetString, "certificate").content;
        seal.algorithm = algorithm(inner);
        seal.signature = bitString(outer, "signature");
    } else if (hasVersion && version == kZwVersion && outer.count() == kZwOuterCount &&
               inner.count() == kZwInnerCount) {
        seal.format = SealFormat::Zw;
        seal.seal = inner.nextAny("seal").whole;
        seal.time = inner.next(der::tag::kGeneralizedTime, "time").content;
        seal.digest = bitString(inner, "digest");
        seal.property = inner.next(der::tag::kIa5String, "property").content;
        seal.certificate = outer.next(der::tag::kOctetString, "certificate").content;
        seal.algorithm = algorithm(outer);
        seal.signature = bitString(outer, "signature");
    } else {
        throw FormatError{QStringLiteral("neither a GM (version 2, %1 + %2 elements) nor a government-affairs "
                                         "(version 4, %3 + %4 elements) seal signature; found %5 + %6")
                              .arg(kGmOuterCount).arg(kGmInnerCount).arg(kZwOuterCount).arg(kZwInnerCount)
                              .arg(outer.count()).arg(inner.count())};
    }
    return seal;
}
