#include "services/asn_tree.h"

#include <QMetaObject>
#include <memory>

#include "cli/cli.h"
#include "host/components.h"
#include "host/invoke.h"
#include "readers/der_tree.h"
#include "readers/der_values.h"
#include "readers/oid_names.h"

namespace {

const int kShownBytes = 32;

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

// The library's block and zthost's node for the same element, side by side.
AsnNode readNode(QObject* block, const DerNode& node, QStringList* disagreements) {
    AsnNode result{node.element, QString(), {}};
    const int libraryTag = intResult(block, "type");
    const int libraryChildren = node.element.constructed() ? intResult(block, "getChildCount") : 0;
    if (libraryTag != node.element.tag || libraryChildren != int(node.children.size())) {
        disagreements->append(QStringLiteral("offset %1: the library reads tag 0x%2 with %3 children, the file "
                                             "holds tag 0x%4 with %5")
                                  .arg(node.element.offset())
                                  .arg(libraryTag, 2, 16, QLatin1Char('0'))
                                  .arg(libraryChildren)
                                  .arg(node.element.tag, 2, 16, QLatin1Char('0'))
                                  .arg(node.children.size()));
        return result;
    }
    if (!node.element.constructed()) {
        callByName(block, "toString", Q_RETURN_ARG(QString, result.libraryText));
        return result;
    }
    for (size_t i = 0; i < node.children.size(); ++i) {
        QObject* child = childAt(block, int(i));
        if (child == nullptr)
            break;
        result.children.push_back(readNode(child, node.children[i], disagreements));
    }
    return result;
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

QString hexOf(const ByteView& bytes, bool full) {
    if (full || bytes.size() <= kShownBytes)
        return bytes.hex();
    return bytes.first(kShownBytes).hex() + QStringLiteral("...");
}

// Small INTEGER contents as a signed decimal number with their hex octets,
// longer ones as hex.
QString integerText(const ByteView& content, bool full) {
    qint64 value = 0;
    if (!der::smallInteger(content, &value))
        return hexOf(content, full);
    return QStringLiteral("%1 (0x%2)").arg(value).arg(content.hex());
}

// The readable value of a primitive node, or a null string when it has none:
// OIDs as the library writes them, text decoded as its tag says.
QString readableValue(const AsnNode& node) {
    if (node.element.tag == der::tag::kOid)
        return node.libraryText;
    return der::decodeText(node.element.tag, node.element.content);
}

QString valueText(const AsnNode& node, bool full) {
    const der::Element& element = node.element;
    const QString readable = readableValue(node);
    if (element.tag == der::tag::kOid)
        return readable.isEmpty() ? hexOf(element.content, full) : oidWithName(readable);
    if (!readable.isNull())
        return quoted(readable);
    switch (element.tag) {
    case der::tag::kNull: return QString();
    case der::tag::kBoolean:
        return element.content.size() == 1 ? (element.content[0] ? QStringLiteral("TRUE") : QStringLiteral("FALSE"))
                                           : hexOf(element.content, full);
    case der::tag::kInteger:
    case der::tag::kEnumerated:
        return integerText(element.content, full);
    case der::tag::kBitString: {
        ByteView payload = element.content;
        unsigned char unused = 0;
        if (!payload.takeByte(&unused))
            return QString();
        return QStringLiteral("(%1 unused bits) %2").arg(unused).arg(hexOf(payload, full));
    }
    default:
        return hexOf(element.content, full);
    }
}

void appendText(QString& out, const AsnNode& node, int depth, bool full) {
    const der::Element& element = node.element;
    QString line = QStringLiteral("%1  %2%3 (%4)")
                       .arg(element.offset(), 5)
                       .arg(QString(depth * 2, QLatin1Char(' ')), der::tagName(element.tag))
                       .arg(element.content.size());
    if (!element.constructed()) {
        const QString value = valueText(node, full);
        if (!value.isEmpty())
            line += QStringLiteral(": ") + value;
    }
    out += line + QLatin1Char('\n');
    for (const AsnNode& child : node.children)
        appendText(out, child, depth + 1, full);
}

}  // namespace

AsnTree readAsnTree(HostSession& session, const QByteArray& der, const QString& source) {
    std::unique_ptr<QObject> document = requireComponent(session, progid::kAsn);
    bool opened = false;
    callByName(document.get(), "open", Q_RETURN_ARG(bool, opened), Q_ARG(QByteArray, der));
    if (!opened)
        throw CommandFailure(kExitFailed, QStringLiteral("%1: not DER (the library cannot parse it)").arg(source));
    DerNode bytes;
    try {
        bytes = readDerTree(ByteView::of(der));
    } catch (const FormatError& error) {
        throw CommandFailure(kExitFailed,
                             QStringLiteral("%1: the library parses it, but it is not DER: %2").arg(source, error.message));
    }
    AsnTree tree;
    // The document object is the root node itself.
    tree.root = readNode(document.get(), bytes, &tree.disagreements);
    return tree;
}

QString asnTreeText(const AsnNode& root, bool full) {
    QString out;
    appendText(out, root, 0, full);
    return out;
}

Report asnTreeReport(const AsnNode& node) {
    const der::Element& element = node.element;
    Report report = Report::object();
    report.set("offset", element.offset());
    report.set("tag", element.tag);
    report.set("name", der::tagName(element.tag));
    report.set("header_length", element.headerLength());
    report.set("length", element.content.size());
    if (!element.constructed()) {
        report.set("hex", element.content.hex());
        const QString readable = readableValue(node);
        if (!readable.isNull())
            report.set("text", readable);
        if (element.tag == der::tag::kOid)
            report.set("oid_name", oidName(readable));
        return report;
    }
    Report children = Report::array();
    for (const AsnNode& child : node.children)
        children.append(asnTreeReport(child));
    report.set("children", children);
    return report;
}
