// A DER document as zthost shows it: the library's ZTAsn component parses
// it (a host reads it so), zthost's own reader gives every element its true
// offset and header in the file, and the two trees are walked side by side
// so that the library's reading of each value is shown and any disagreement
// about the structure is reported.
#ifndef ZTHOST_ASN_TREE_H
#define ZTHOST_ASN_TREE_H

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

#include "output/report.h"
#include "readers/der.h"

class HostSession;

struct AsnNode {
    der::Element element;  // a view into the document, which must outlive the node
    QString libraryText;   // ZTAsnBlock::toString of a primitive node
    std::vector<AsnNode> children;
};

struct AsnTree {
    AsnNode root;
    // Where the library's tree differs from the bytes ("offset 12: the
    // library reads tag 0x04 with 0 children").
    QStringList disagreements;
    int encodedSize() const { return root.element.whole.size(); }
};

// Parses `der` (its first element) with a new ZTAsn component and with
// zthost's reader. Throws CommandFailure naming `source` when either
// refuses the bytes.
AsnTree readAsnTree(HostSession& session, const QByteArray& der, const QString& source);

// "offset  name (length): value" lines, indented by depth. Long binary
// values are cut after 32 bytes unless `full`.
QString asnTreeText(const AsnNode& root, bool full);
Report asnTreeReport(const AsnNode& root);

#endif
