#include "readers/der_tags.h"

namespace der {
namespace {

const char* universalName(int number) {
    switch (number) {
    case tag::kBoolean: return "BOOLEAN";
    case tag::kInteger: return "INTEGER";
    case tag::kBitString: return "BIT STRING";
    case tag::kOctetString: return "OCTET STRING";
    case tag::kNull: return "NULL";
    case tag::kOid: return "OBJECT IDENTIFIER";
    case tag::kEnumerated: return "ENUMERATED";
    case tag::kUtf8String: return "UTF8String";
    case tag::kSequence & tag::kNumberMask: return "SEQUENCE";
    case tag::kSet & tag::kNumberMask: return "SET";
    case tag::kNumericString: return "NumericString";
    case tag::kPrintableString: return "PrintableString";
    case tag::kTeletexString: return "TeletexString";
    case tag::kVideotexString: return "VideotexString";
    case tag::kIa5String: return "IA5String";
    case tag::kUtcTime: return "UTCTime";
    case tag::kGeneralizedTime: return "GeneralizedTime";
    case tag::kGraphicString: return "GraphicString";
    case tag::kVisibleString: return "VisibleString";
    case tag::kGeneralString: return "GeneralString";
    case tag::kUniversalString: return "UniversalString";
    case tag::kBmpString: return "BMPString";
    default: return nullptr;
    }
}

}  // namespace

QString tagName(unsigned char tagOctet) {
    const int number = tagOctet & tag::kNumberMask;
    switch (tagOctet & tag::kClassMask) {
    case tag::kContextClass: return QStringLiteral("[%1]").arg(number);
    case tag::kApplicationClass: return QStringLiteral("[APPLICATION %1]").arg(number);
    case tag::kPrivateClass: return QStringLiteral("[PRIVATE %1]").arg(number);
    default: break;
    }
    const char* name = universalName(number);
    return name != nullptr ? QString::fromLatin1(name) : QStringLiteral("[UNIVERSAL %1]").arg(number);
}

bool isSingleByteText(unsigned char tagOctet) {
    switch (tagOctet) {
    case tag::kNumericString: case tag::kPrintableString: case tag::kTeletexString:
    case tag::kVideotexString: case tag::kIa5String: case tag::kUtcTime: case tag::kGeneralizedTime:
    case tag::kGraphicString: case tag::kVisibleString: case tag::kGeneralString:
        return true;
    default:
        return false;
    }
}

}  // namespace der
