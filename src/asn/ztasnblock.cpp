// ZTAsnBlock: the wrapper tree, editing and encoding.
#include <climits>
#include <cstdio>

#include "asn/asn_node_access.h"
#include "ztutil/ztasn.h"
#include "asn/asn_tags.h"

using ztutil::asn::firstChildLink;
using ztutil::asn::isConstructed;
using ztutil::asn::isConstructedTag;

namespace {

const unsigned kOidCapacity = 256;

// The content setData stores for `data` under `tag`.
QByteArray contentForTag(int tag, const QByteArray& data) {
    switch (tag) {
    case tag::kInteger:
        // A first octet of exactly 0x80 is left as it is.
        if (!data.isEmpty() && static_cast<unsigned char>(data.at(0)) > 0x80)
            return QByteArray(1, '\0') + data;
        return data;
    case tag::kBitString:
        return QByteArray(1, '\0') + data;
    case tag::kOid: {
        unsigned char octets[kOidCapacity] = {};
        unsigned int capacity = kOidCapacity;
        // A copy is always NUL-terminated; the caller's array may be raw data.
        const QByteArray text(data.constData(), data.size());
        if (!ASNGetOIDData(text.constData(), octets, &capacity))
            return data;
        return QByteArray(reinterpret_cast<const char*>(octets), static_cast<int>(capacity));
    }
    default:
        return data;
    }
}

}  // namespace

ZTAsnBlock::ZTAsnBlock(QObject* parent) : QObject(parent) {}

ZTAsnBlock::~ZTAsnBlock() {
    deleteChildWrappers();
}

void ZTAsnBlock::deleteChildWrappers() {
    // In list order: each child then leaves the front of QObject's own
    // child list, which keeps wide blocks linear.
    for (ZTAsnBlock* child : listChild)
        delete child;
    listChild.clear();
}

int ZTAsnBlock::type() {
    return node != nullptr ? node->tag : 0;
}

bool ZTAsnBlock::checkTag(int type) {
    return node != nullptr && node->tag == type;
}

ZTAsnBlock* ZTAsnBlock::getChild(int index, int checkTag) {
    if (node == nullptr || index < 0 || index >= listChild.count()) {
        std::printf("(!node || index < 0 || index >= listChild.count()) fail\n");
        return nullptr;
    }
    ZTAsnBlock* block = listChild.at(index);
    if (block == nullptr) {
        std::printf("ZTAsnBlock* block = listChild.at(index); fail\n");
        return nullptr;
    }
    if (checkTag != 0 && !block->checkTag(checkTag)) {
        std::printf("!block->checkTag(checkType) fail \n");
        return nullptr;
    }
    return block;
}

int ZTAsnBlock::getChildCount() {
    return listChild.count();
}

ZTAsnBlock* ZTAsnBlock::addSample(int tagType) {
    if (node == nullptr || !isConstructed(node))
        return nullptr;
    auto* child = new ZTAsnBlock(this);
    child->node = ASNAddSample(static_cast<unsigned char>(tagType), node);
    listChild.append(child);
    return child;
}

ZTAsnBlock* ZTAsnBlock::addStruct(int tagType) {
    if (node == nullptr || !isConstructed(node) ||
        !isConstructedTag(static_cast<unsigned char>(tagType)))
        return nullptr;
    auto* child = new ZTAsnBlock(this);
    child->node = ASNAddStruct(static_cast<unsigned char>(tagType), node);
    listChild.append(child);
    return child;
}

bool ZTAsnBlock::remove(int index) {
    if (index < 0 || index >= listChild.count())
        return false;
    ASNRemoveChild(node, index);
    delete listChild.takeAt(index);
    return true;
}

QByteArray ZTAsnBlock::build() {
    const unsigned int length = ASNGetBlockLength(node);
    if (length > static_cast<unsigned int>(INT_MAX))
        return QByteArray();
    QByteArray encoding(static_cast<int>(length), '\0');
    if (!ASNBuildData(node, reinterpret_cast<unsigned char*>(encoding.data()), length))
        return QByteArray();
    return encoding;
}

void ZTAsnBlock::update() {
    ASNUpdate(node);
}

bool ZTAsnBlock::setData(QByteArray data) {
    if (node == nullptr)
        return false;
    const QByteArray content = contentForTag(node->tag, data);
    return ASNSetBlockData(node, reinterpret_cast<const unsigned char*>(content.constData()),
                           static_cast<size_t>(content.size())) != 0;
}

bool ZTAsnBlock::addBlock(QByteArray data) {
    // Without a node the parsed tree would have no owner.
    if (node == nullptr)
        return false;
    auto* block = new ZTAsnBlock(this);
    stASN_BLOCK_HEADER* added = ASNAddByData(
        node, reinterpret_cast<const unsigned char*>(data.constData()), static_cast<size_t>(data.size()));
    if (added == nullptr) {
        delete block;
        return false;
    }
    ASNUpdate(added);
    // The new wrapper mirrors this block's own node, whose children now
    // include the added one.
    const bool loaded = block->load(node);
    listChild.append(block);
    return loaded;
}

bool ZTAsnBlock::load(stASN_BLOCK_HEADER* node) {
    if (node == nullptr)
        return false;
    // The child list is walked once; a cell without a node ends it, as an
    // index lookup would.
    for (stASN_CHILD_LINK* link = firstChildLink(node); link != nullptr && link->node != nullptr;
         link = link->next) {
        auto* child = new ZTAsnBlock(this);
        if (!child->load(link->node))
            return false;
        listChild.append(child);
    }
    this->node = node;
    return true;
}
