#include "readers/ses_signature.h"

#include "readers/der.h"
#include "readers/der_values.h"
#include "readers/ses_fields.h"

namespace {

const int kV1OuterCount = 2;
const int kV1InnerCount = 7;
const int kV4InnerCount = 5;

// The v1 time: text or a DER time inside a BIT STRING or OCTET STRING, or
// the time element itself.
void readV1Time(const der::Element& element, SesSignature* signature) {
    ByteView payload = element.content;
    if (element.tag == der::tag::kBitString)
        payload = ses::bitString(element, "signing time");
    else if (element.tag != der::tag::kOctetString && element.tag != der::tag::kUtcTime &&
             element.tag != der::tag::kGeneralizedTime)
        throw FormatError{QStringLiteral("the signing time at offset %1 has tag 0x%2, expected a BIT STRING or a time")
                              .arg(element.offset()).arg(element.tag, 2, 16, QLatin1Char('0'))};
    der::Element inner;
    if ((element.tag == der::tag::kUtcTime || element.tag == der::tag::kGeneralizedTime)) {
        signature->time = der::timeValue(element);
    } else if (der::readSingle(payload, &inner) && der::timeValue(inner).isValid()) {
        signature->time = der::timeValue(inner);
        payload = inner.content;
    } else {
        signature->time = der::timeFromText(payload.toByteArray());
    }
    signature->timeText = payload.toByteArray();
}

ByteView readDataHash(const der::Element& element) {
    if (element.tag == der::tag::kOctetString)
        return element.content;
    return ses::bitString(element, "data hash");
}

void readV1(der::Fields& outer, der::Fields& toSign, SesSignature* signature) {
    signature->layout = SesLayout::V1;
    signature->seal = toSign.nextAny("seal").whole;
    readV1Time(toSign.nextAny("signing time"), signature);
    signature->dataHash = readDataHash(toSign.nextAny("data hash"));
    signature->property = toSign.next(der::tag::kIa5String, "property").content;
    signature->certificate = toSign.next(der::tag::kOctetString, "certificate").content;
    signature->algorithm = ses::algorithm(toSign.next(der::tag::kOid, "algorithm"));
    signature->signature = ses::bitString(outer.next(der::tag::kBitString, "signature"), "signature");
}

void readV4(der::Fields& outer, der::Fields& toSign, SesSignature* signature) {
    signature->layout = SesLayout::V4;
    signature->seal = toSign.nextAny("seal").whole;
    const der::Element time = toSign.nextAny("signing time");
    signature->timeText = time.content.toByteArray();
    signature->time = ses::time(time, "signing time");
    signature->dataHash = ses::bitString(toSign.next(der::tag::kBitString, "data hash"), "data hash");
    signature->property = toSign.next(der::tag::kIa5String, "property").content;
    der::Element extensions;
    if (toSign.nextIf(der::tag::contextConstructed(0), &extensions)) {
        const der::Element list = der::expectSingle(extensions.content, der::tag::kSequence,
                                                    QStringLiteral("the extension data"));
        signature->extensionCount = der::Fields(list, der::tag::kSequence, QStringLiteral("the extension data")).count();
    }
    toSign.expectEnd();
    signature->certificate = outer.next(der::tag::kOctetString, "certificate").content;
    signature->algorithm = ses::algorithm(outer.next(der::tag::kOid, "algorithm"));
    signature->signature = ses::bitString(outer.next(der::tag::kBitString, "signature"), "signature");
    der::Element timeStamp;
    if (outer.nextIf(der::tag::contextConstructed(0), &timeStamp))
        signature->timeStamp = timeStamp.whole;
}

}  // namespace

SesSignature readSesSignature(const ByteView& der) {
    const der::Element whole = der::expectSingle(der, der::tag::kSequence, QStringLiteral("the seal signature"));
    der::Fields outer(whole, der::tag::kSequence, QStringLiteral("the seal signature"));
    const der::Element tbs = outer.next(der::tag::kSequence, "to-be-signed part");
    der::Fields toSign(tbs, der::tag::kSequence, QStringLiteral("the to-be-signed part"));
    SesSignature signature;
    signature.toBeSigned = tbs.whole;
    signature.version = ses::integer(toSign.next(der::tag::kInteger, "version"), "version");
    if (outer.count() == kV1OuterCount && toSign.count() == kV1InnerCount) {
        readV1(outer, toSign, &signature);
    } else if ((outer.count() == 4 || outer.count() == 5) &&
               (toSign.count() == kV4InnerCount || toSign.count() == kV4InnerCount + 1)) {
        readV4(outer, toSign, &signature);
    } else {
        throw FormatError{QStringLiteral("a seal signature of %1 + %2 elements is neither GM/T 0031 (2 + 7) nor "
                                         "GB/T 38540 (4 or 5 + 5 or 6)")
                              .arg(outer.count()).arg(toSign.count())};
    }
    outer.expectEnd();
    return signature;
}
