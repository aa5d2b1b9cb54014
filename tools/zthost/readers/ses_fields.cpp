#include "readers/ses_fields.h"

#include "readers/der_values.h"

namespace ses {
namespace {

[[noreturn]] void fail(const der::Element& element, const char* what, const char* problem) {
    throw FormatError{QStringLiteral("the %1 at offset %2 %3").arg(QLatin1String(what)).arg(element.offset())
                          .arg(QLatin1String(problem))};
}

}  // namespace

QString text(const der::Element& element, const char* what) {
    const QString decoded = der::decodeText(element.tag, element.content);
    if (decoded.isNull())
        fail(element, what, "is not a string");
    return decoded;
}

qint64 integer(const der::Element& element, const char* what) {
    qint64 value = 0;
    if (!der::smallInteger(element.content, &value))
        fail(element, what, "is not a small INTEGER");
    return value;
}

QDateTime time(const der::Element& element, const char* what) {
    const QDateTime value = der::timeValue(element);
    if (!value.isValid())
        fail(element, what, "is not a readable UTCTime or GeneralizedTime");
    return value;
}

ByteView bitString(const der::Element& element, const char* what) {
    ByteView payload;
    if (!der::bitStringPayload(element, &payload))
        fail(element, what, "is not a BIT STRING without unused bits");
    return payload;
}

QString algorithm(const der::Element& element) {
    const QString dotted = der::oidText(element.content);
    if (dotted.isEmpty())
        fail(element, "algorithm", "is a malformed OBJECT IDENTIFIER");
    return dotted;
}

}  // namespace ses
