#include "seal_structure.h"

#include <vector>

#include "cli.h"
#include "der_reader.h"

namespace {

const size_t kGmOuterCount = 2;
const size_t kGmInnerCount = 7;
const size_t kZwOuterCount = 4;
const size_t kZwInnerCount = 5;
const char kGmVersion = 2;
const char kZwVersion = 4;

class SealParser {
public:
    explicit SealParser(QString source) : source_(std::move(source)) {}

    [[noreturn]] void fail(const QString& reason) const {
        throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(source_, reason));
    }

    std::vector<DerElement> childrenOf(const DerElement& element, const char* what) const {
        std::vector<DerElement> children;
        if (element.tag != der::kSequence || !parseChildren(element, &children))
            fail(QStringLiteral("the %1 is not a well-formed SEQUENCE").arg(QLatin1String(what)));
        return children;
    }

    const DerElement& expect(const std::vector<DerElement>& elements, size_t index, unsigned char tag,
                             const char* what) const {
        const DerElement& element = elements.at(index);
        if (element.tag != tag) {
            fail(QStringLiteral("%1 at offset %2 has tag 0x%3, expected 0x%4")
                     .arg(QLatin1String(what))
                     .arg(element.offset)
                     .arg(element.tag, 2, 16, QLatin1Char('0'))
                     .arg(tag, 2, 16, QLatin1Char('0')));
        }
        return element;
    }

    // The payload of a BIT STRING without unused bits.
    QByteArray bitString(const std::vector<DerElement>& elements, size_t index, const char* what) const {
        const QByteArray content = expect(elements, index, der::kBitString, what).content;
        if (content.isEmpty() || content.at(0) != 0)
            fail(QStringLiteral("the %1 BIT STRING has unused bits").arg(QLatin1String(what)));
        return content.mid(1);
    }

    QString oid(const std::vector<DerElement>& elements, size_t index) const {
        const QString dotted = oidText(expect(elements, index, der::kOid, "the algorithm").content);
        if (dotted.isEmpty())
            fail(QStringLiteral("the algorithm OBJECT IDENTIFIER is malformed"));
        return dotted;
    }

private:
    QString source_;
};

}  // namespace

const char* sealFormatName(SealFormat format) {
    return format == SealFormat::Gm ? "GM" : "government affairs (ZW)";
}

SealSignature parseSealSignature(const QByteArray& der, const QString& source) {
    const SealParser parser(source);
    DerElement whole;
    if (!parseSingleElement(der, &whole))
        parser.fail(QStringLiteral("not one complete DER element"));
    const std::vector<DerElement> outer = parser.childrenOf(whole, "signature structure");
    if (outer.empty())
        parser.fail(QStringLiteral("the signature structure is empty"));
    const std::vector<DerElement> inner = parser.childrenOf(outer[0], "to-be-signed part");
    // The version tells the formats apart; the element counts confirm it.
    const QByteArray versionBytes =
        !inner.empty() && inner[0].tag == der::kInteger ? inner[0].content : QByteArray();
    SealSignature seal;
    if (versionBytes == QByteArray(1, kGmVersion) && outer.size() == kGmOuterCount &&
        inner.size() == kGmInnerCount) {
        seal.format = SealFormat::Gm;
        seal.time = parser.bitString(inner, 2, "time");
        seal.digest = parser.bitString(inner, 3, "digest");
        seal.property = parser.expect(inner, 4, der::kIa5String, "the property").content;
        seal.certificate = parser.expect(inner, 5, der::kOctetString, "the certificate").content;
        seal.algorithm = parser.oid(inner, 6);
        seal.signature = parser.bitString(outer, 1, "signature");
    } else if (versionBytes == QByteArray(1, kZwVersion) && outer.size() == kZwOuterCount &&
               inner.size() == kZwInnerCount) {
        seal.format = SealFormat::Zw;
        seal.time = parser.expect(inner, 2, der::kGeneralizedTime, "the time").content;
        seal.digest = parser.bitString(inner, 3, "digest");
        seal.property = parser.expect(inner, 4, der::kIa5String, "the property").content;
        seal.certificate = parser.expect(outer, 1, der::kOctetString, "the certificate").content;
        seal.algorithm = parser.oid(outer, 2);
        seal.signature = parser.bitString(outer, 3, "signature");
    } else {
        parser.fail(QStringLiteral("neither a GM (version 2, %1 + %2 elements) nor a government-affairs "
                                   "(version 4, %3 + %4 elements) seal signature; found %5 + %6")
                        .arg(kGmOuterCount).arg(kGmInnerCount).arg(kZwOuterCount).arg(kZwInnerCount)
                        .arg(outer.size()).arg(inner.size()));
    }
    seal.toBeSigned = outer[0].whole;
    seal.seal = inner[1].whole;
    return seal;
}
