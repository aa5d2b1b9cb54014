#include "asn_tree.h"

#include <QMetaObject>
#include <memory>

#include "cli.h"
#include "components.h"
#include "der_reader.h"
#include "invoke.h"
#include "oid_names.h"

namespace {

const int kConstructedBit = 0x20;
const int kClassBits = 0xC0;
const int kContextClass = 0x80;
const int kApplicationClass = 0x40;
const int kTagNumberBits = 0x1F;
const int kShownBytes = 32;

enum UniversalTag {
    kBoolean = 1, kInteger = 2, kBitString = 3, kOctetString = 4, kNull = 5, kOid = 6,
    kEnumerated = 10, kUtf8String = 12, kNumericString = 18, kPrintableString = 19,
    kTeletexString = 20, kVideotexString = 21, kIa5String = 22, kUtcTime = 23,
    kGeneralizedTime = 24, kGraphicString = 25, kVisibleString = 26, kGeneralString = 27,
    kUniversalString = 28, kBmpString = 30,
};

const char* universalName(int number) {
    switch (number) {
    case kBoolean: return "BOOLEAN";
    case kInteger: return "INTEGER";
    case kBitString: return "BIT STRING";
    case kOctetString: return "OCTET STRING";
    case kNull: return "NULL";
    case kOid: return "OBJECT IDENTIFIER";
    case kEnumerated: return "ENUMERATED";
    case kUtf8String: return "UTF8String";
    case 16: return "SEQUENCE";
    case 17: return "SET";
    case kNumericString: return "NumericString";
    case kPrintableString: return "PrintableString";
    case kTeletexString: return "TeletexString";
    case kVideotexString: return "VideotexString";
    case kIa5String: return "IA5String";
    case kUtcTime: return "UTCTime";
    case kGeneralizedTime: return "GeneralizedTime";
    case kGraphicString: return "GraphicString";
    case kVisibleString: return "VisibleString";
    case kGeneralString: return "GeneralString";
    case kUniversalString: return "UniversalString";
    case kBmpString: return "BMPString";
    default: return nullptr;
    }
}

bool isLatinText(int tag) {
    switch (tag) {
    case kNumericString: case kPrintableString: case kTeletexString: case kVideotexString:
    case kIa5String: case kUtcTime: case kGeneralizedTime: case kGraphicString:
    case kVisibleString: case kGeneralString:
        return true;
    default:
        return false;
    }
}

// One child wrapper of `block` by index (the default-argument form getChild(int)).
QObject* childAt(QObject* block, int index) {
    QObject* child = nullptr;
    callByName(block, "getChild", objectReturn("ZTAsnBlock*", child), Q_ARG(int, index));
    return child;
}

int intResult(QObject* block, const char* method) {
    int value = 0;
    callByName(block, method, Q_RETURN_ARG(int, value));
    return value;
}

AsnNode readNode(QObject* block, int offset, const QString& source) {
    QByteArray encoding;
    callByName(block, "build", Q_RETURN_ARG(QByteArray, encoding));
    DerElement element;
    if (!parseSingleElement(encoding, &element)) {
        throw CommandFailure(kExitFailed,
                             QStringLiteral("%1: the library re-encodes a node at offset %2 unreadably")
                                 .arg(source).arg(offset));
    }
    AsnNode node;
    node.tag = intResult(block, "type");
    node.offset = offset;
    node.headerLength = element.whole.size() - element.content.size();
    node.contentLength = element.content.size();
    node.constructed = (node.tag & kConstructedBit) != 0;
    if (!node.constructed) {
        node.content = element.content;
        callByName(block, "toString", Q_RETURN_ARG(QString, node.libraryText));
        return node;
    }
    int childOffset = offset + node.headerLength;
    const int count = intResult(block, "getChildCount");
    for (int i = 0; i < count; ++i) {
        QObject* child = childAt(block, i);
        if (child == nullptr)
            break;
        node.children.push_back(readNode(child, childOffset, source));
        childOffset += encodedSize(node.children.back());
    }
    return node;
}

QString quoted(const QString& text) {
    QString out = QStringLiteral("\"");
    for (const QChar c : text) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\'))
            out += QLatin1Char('\\') + QString(c);
        else if (c.unicode() < 0x20 || c.unicode() == 0x7F)
            out += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out + QLatin1Char('"');
}

QString hexOf(const QByteArray& bytes, bool full) {
    if (full || bytes.size() <= kShownBytes)
        return QString::fromLatin1(bytes.toHex().toUpper());
    return QString::fromLatin1(bytes.left(kShownBytes).toHex().toUpper()) + QStringLiteral("...");
}

// Small INTEGER contents as a signed decimal number with their hex octets,
// longer ones as hex.
QString integerText(const QByteArray& content, bool full) {
    if (content.isEmpty() || content.size() > 8)
        return hexOf(content, full);
    qint64 value = static_cast<signed char>(content.at(0));
    for (int i = 1; i < content.size(); ++i)
        value = value * 256 + static_cast<unsigned char>(content.at(i));
    return QStringLiteral("%1 (0x%2)").arg(value).arg(hexOf(content, full));
}

// The readable value of a primitive node, or empty text when it has none.
QString readableValue(const AsnNode& node) {
    if (node.tag == kOid)
        return node.libraryText;
    if (node.tag == kUtf8String)
        return QString::fromUtf8(node.content);
    if (node.tag == kBmpString)  // the library hands back UTF-8 carried as Latin-1
        return QString::fromUtf8(node.libraryText.toLatin1());
    if (isLatinText(node.tag))
        return QString::fromLatin1(node.content);
    return QString();
}

QString valueText(const AsnNode& node, bool full) {
    const QString readable = readableValue(node);
    if (node.tag == kOid)
        return readable.isEmpty() ? hexOf(node.content, full) : oidWithName(readable);
    if (!readable.isNull())
        return quoted(readable);
    switch (node.tag) {
    case kNull: return QString();
    case kBoolean:
        return node.content.size() == 1 ? (node.content.at(0) ? QStringLiteral("TRUE") : QStringLiteral("FALSE"))
                                        : hexOf(node.content, full);
    case kInteger:
    case kEnumerated:
        return integerText(node.content, full);
    case kBitString:
        if (node.content.isEmpty())
            return QString();
        return QStringLiteral("(%1 unused bits) %2")
            .arg(static_cast<unsigned char>(node.content.at(0)))
            .arg(hexOf(node.content.mid(1), full));
    default:
        return hexOf(node.content, full);
    }
}

void appendText(QString& out, const AsnNode& node, int depth, bool full) {
    QString line = QStringLiteral("%1  %2%3 (%4)")
                       .arg(node.offset, 5)
                       .arg(QString(depth * 2, QLatin1Char(' ')), tagName(node.tag))
                       .arg(node.contentLength);
    if (!node.constructed) {
        const QString value = valueText(node, full);
        if (!value.isEmpty())
            line += QStringLiteral(": ") + value;
    }
    out += line + QLatin1Char('\n');
    for (const AsnNode& child : node.children)
        appendText(out, child, depth + 1, full);
}

}  // namespace

QString tagName(int tag) {
    const int number = tag & kTagNumberBits;
    switch (tag & kClassBits) {
    case kContextClass: return QStringLiteral("[%1]").arg(number);
    case kApplicationClass: return QStringLiteral("[APPLICATION %1]").arg(number);
    case kClassBits: return QStringLiteral("[PRIVATE %1]").arg(number);
    default: break;
    }
    const char* name = universalName(number);
    return name != nullptr ? QString::fromLatin1(name) : QStringLiteral("[UNIVERSAL %1]").arg(number);
}

AsnNode readAsnTree(HostSession& session, const QByteArray& der, const QString& source) {
    std::unique_ptr<QObject> document = requireComponent(session, progid::kAsn);
    bool opened = false;
    callByName(document.get(), "open", Q_RETURN_ARG(bool, opened), Q_ARG(QByteArray, der));
    if (!opened)
        throw CommandFailure(kExitFailed, QStringLiteral("%1: not DER (the library cannot parse it)").arg(source));
    // The document object is the root node itself.
    return readNode(document.get(), 0, source);
}

QString asnTreeText(const AsnNode& root, bool full) {
    QString out;
    appendText(out, root, 0, full);
    return out;
}

Report asnTreeReport(const AsnNode& node) {
    Report report = Report::object();
    report.set("offset", node.offset);
    report.set("tag", node.tag);
    report.set("name", tagName(node.tag));
    report.set("header_length", node.headerLength);
    report.set("length", node.contentLength);
    if (!node.constructed) {
        report.set("hex", QString::fromLatin1(node.content.toHex().toUpper()));
        const QString readable = readableValue(node);
        if (!readable.isNull())
            report.set("text", readable);
        if (node.tag == kOid)
            report.set("oid_name", oidName(readable));
        return report;
    }
    Report children = Report::array();
    for (const AsnNode& child : node.children)
        children.append(asnTreeReport(child));
    report.set("children", children);
    return report;
}
