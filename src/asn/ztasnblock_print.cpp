// ZTAsnBlock: the one-line description of a node and the subtree dump.
#include <cstdio>

#include "asn/asn_node_access.h"
#include "ztutil/ztasn.h"
#include "asn/asn_tags.h"

using ztutil::asn::isConstructed;

namespace {

const unsigned char kNullTag = 5;
const unsigned char kUtf8StringTag = 12;

// The type name of a whole tag octet, null when the tag has none.
const char* typeName(unsigned char tag) {
    switch (tag) {
    case 1: return "BOOLEAN";
    case 2: return "INTEGER";
    case 3: return "BIT STRING";
    case 4: return "OCTET STRING";
    case 5: return "NULL";
    case 6: return "OBJECT IDENTIFIER";
    case 7: return "OBJECT DESCRIPTOR";
    case 8: return "EXTERNAL";
    case 9: return "REAL";
    case 10: return "ENUMERATED";
    case 12: return "UTF8 STRING";
    case 13: return "RELATIVE OID";
    case 18: return "NUMERIC STRING";
    case 19: return "PRINTABLE STRING";
    case 20: return "TELETEX STRING";
    case 21: return "VIDEOTEX STRING";
    case 22: return "IA5 STRING";
    case 23: return "UTC TIME";
    case 24: return "GENERALIZED TIME";
    case 25: return "GRAPHIC STRING";
    case 26: return "VISIBLE STRING";
    case 27: return "GENERAL STRING";
    case 28: return "UNIVERSAL STRING";
    case 29: return "CHARACTER STRING";
    case 30: return "BMP STRING";
    case 0x30: return "SEQUENCE";
    case 0x31: return "SET";
    case 0xA0: return "CONTEXT SPECIFIC";
    default: return nullptr;
    }
}

// Names that are printed without a length.
bool standsAlone(unsigned char tag) {
    return tag == kNullTag || tag == tag::kSequence || tag == tag::kSet ||
           tag == tag::kContextZero;
}

}  // namespace

QString ZTAsnBlock::print() {
    if (node == nullptr)
        return QStringLiteral("None");
    const char* name = typeName(node->tag);
    if (name == nullptr)
        return QStringLiteral("UNKNOWN");
    QString line = QString::fromLatin1(name);
    if (!standsAlone(node->tag)) {
        // The number of characters of the printData text, not the content length.
        line += QStringLiteral("       length =") + QString::number(printData().length());
    }
    return line;
}

QString ZTAsnBlock::printData() {
    QString text = QStringLiteral(" { ");
    if (node != nullptr && !isConstructed(node)) {
        const auto* octets = reinterpret_cast<const char*>(node->data);
        const uint length = node->dataLength;
        if (node->tag == kUtf8StringTag || node->tag == tag::kUtcTime) {
            // Up to the first zero octet, within the content.
            const int end = static_cast<int>(qstrnlen(octets, length));
            text += QString::fromLatin1(octets, end) + QLatin1Char(' ');
        } else {
            char digits[4];
            for (uint i = 0; i < length; ++i) {
                std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned char>(octets[i]));
                text += QLatin1String(digits);
            }
        }
    }
    text += QLatin1Char('}');
    return text;
}

void ZTAsnBlock::dump(int level) {
    if (node == nullptr)
        return;
    // The line holds only a type name, blanks, '=' and digits, so writing it
    // as plain text prints exactly what a format string of it would.
    const QByteArray line = QByteArray(level > 0 ? level * 4 : 0, ' ') + print().toUtf8();
    std::printf("\n%s", line.constData());
    for (ZTAsnBlock* child : listChild)
        child->dump(level + 1);
}
