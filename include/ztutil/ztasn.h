// The ZTAsn document and its ZTAsnBlock wrappers over ASN node trees.
//
// A ZTAsnBlock mirrors one node: `node` is the wrapped stASN_BLOCK_HEADER and
// `listChild` the wrappers of its children, in order, as long as every edit
// goes through the wrappers. Child wrappers have their parent wrapper as
// QObject parent and die with it; wrappers never free nodes. The node tree
// belongs to the ZTAsn that created (create) or parsed (open) it and is freed
// by close (also run by the destructor) or, one subtree at a time, by remove.
//
// The invokable methods, their order, spellings and parameter names are the
// contract with hosts that call them by name.
#ifndef ZTUTIL_ZTASN_H
#define ZTUTIL_ZTASN_H

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

#include "asn.h"
#include "ztutil_global.h"

class ZTUTIL_EXPORT ZTAsnBlock : public QObject {
    Q_OBJECT
public:
    explicit ZTAsnBlock(QObject* parent = nullptr);
    ~ZTAsnBlock() override;

    // Writes the subtree to standard output, one line per node, indented by
    // four blanks per level.
    Q_INVOKABLE void dump(int level = 0);
    // The tag octet, 0 without a node.
    Q_INVOKABLE int type();
    Q_INVOKABLE bool checkTag(int type);
    // The child wrapper at index (with its tag checked when checkTag is not
    // 0), or null after printing why to standard output.
    Q_INVOKABLE ZTAsnBlock* getChild(int index, int checkTag = 0);
    Q_INVOKABLE int getChildCount();
    // A new last child of a constructed block. The wrapper is appended even
    // when the tag is refused; it then has no node.
    Q_INVOKABLE ZTAsnBlock* addSample(int tagType);
    Q_INVOKABLE ZTAsnBlock* addStruct(int tagType);
    // Frees the child node at index with its subtree and deletes its wrapper.
    Q_INVOKABLE bool remove(int index);
    // The DER encoding as of the last update; empty on failure.
    Q_INVOKABLE QByteArray build();
    // Recomputes the lengths of this node and its subtree.
    Q_INVOKABLE void update();
    // Sets a primitive node's content: INTEGER gets a leading 00 when its
    // first octet is above 0x80, OBJECT IDENTIFIER takes dotted text, BIT
    // STRING gets a leading 00 (no unused bits).
    Q_INVOKABLE bool setData(QByteArray data);
    // Parses data as a new last child node; the wrapper appended for it is a
    // second wrapper of this block's own node.
    Q_INVOKABLE bool addBlock(QByteArray data);
    Q_INVOKABLE QString toString();
    Q_INVOKABLE int toInt();
    Q_INVOKABLE QByteArray toByteArray();
    Q_INVOKABLE QDateTime toDateTime();
    // A certificate time text (YYMMDDhhmmssZ or YYYYMMDDhhmmssZ) read at UTC-8
    // and returned in UTC, 8 hours later than its digits.
    Q_INVOKABLE QDateTime convertDateTime(QByteArray text);

    operator QString();
    operator QByteArray();
    operator int();
    operator QDateTime();

    // Wraps `node`'s children (recursively) and then `node` itself.
    bool load(stASN_BLOCK_HEADER* node);
    // One line: the type name and, for primitive types, the printData length.
    QString print();
    // The content as text between " { " and "}".
    QString printData();

    stASN_BLOCK_HEADER* node = nullptr;
    QList<ZTAsnBlock*> listChild;

protected:
    void deleteChildWrappers();
};

class ZTUTIL_EXPORT ZTAsn : public ZTAsnBlock {
    Q_OBJECT
public:
    explicit ZTAsn(QObject* parent = nullptr);
    ~ZTAsn() override;

    // An empty SEQUENCE root when tagType has the constructed bit 0x20 (any
    // other value of it is ignored); false otherwise.
    Q_INVOKABLE bool create(int tagType = 48);
    // Parses the first TLV of data and wraps the tree.
    Q_INVOKABLE bool open(QByteArray data);
    // Frees the tree and its wrappers.
    Q_INVOKABLE void close();

private:
    // Keeps a root that a later create() or open() replaced: the wrappers of
    // the earlier tree stay in the child list, so the tree must live until
    // close() frees everything.
    void retireRoot(stASN_BLOCK_HEADER* root);

    QList<stASN_BLOCK_HEADER*> retiredRoots_;
};

#endif
