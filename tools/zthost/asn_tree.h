// A DER document read through the library's ZTAsn component: the tree comes
// from ZTAsn::open and is walked by name (type, getChildCount, getChild,
// build), then printed as an indented outline or as JSON.
#ifndef ZTHOST_ASN_TREE_H
#define ZTHOST_ASN_TREE_H

#include <QByteArray>
#include <QString>
#include <vector>

#include "report.h"

class HostSession;

struct AsnNode {
    int tag = 0;
    int offset = 0;        // of the tag octet in the document
    int headerLength = 0;  // tag and length octets
    QByteArray content;    // content octets of a primitive node
    int contentLength = 0;
    QString libraryText;   // ZTAsnBlock::toString of a primitive node
    bool constructed = false;
    std::vector<AsnNode> children;
};

// Parses `der` (its first element) with a new ZTAsn component. Throws
// CommandFailure naming `source` when the library refuses the bytes.
AsnNode readAsnTree(HostSession& session, const QByteArray& der, const QString& source);

// The whole encoded size of a node.
inline int encodedSize(const AsnNode& node) {
    return node.headerLength + node.contentLength;
}

// "offset  name (length): value" lines, indented by depth. Long binary
// values are cut after 32 bytes unless `full`.
QString asnTreeText(const AsnNode& root, bool full);
Report asnTreeReport(const AsnNode& root);

// The display name of a tag octet ("SEQUENCE", "[0]", "[APPLICATION 3]").
QString tagName(int tag);

#endif
