// ZTAsn: the document that owns a node tree.
#include <QDebug>

#include "ztutil/ztasn.h"
#include "asn/asn_tags.h"

namespace {

const int kConstructedBit = 0x20;

}  // namespace

ZTAsn::ZTAsn(QObject* parent) : ZTAsnBlock(parent) {}

ZTAsn::~ZTAsn() {
    close();
}

bool ZTAsn::create(int tagType) {
    // Only the constructed bit of tagType counts: the root is always a
    // SEQUENCE, and ASNAddSample refuses that tag for a primitive request.
    stASN_BLOCK_HEADER* root = (tagType & kConstructedBit) != 0 ? ASNAddStruct(tag::kSequence, nullptr)
                                                                : ASNAddSample(tag::kSequence, nullptr);
    if (root == nullptr)
        return false;
    retireRoot(node);
    node = root;
    return true;
}

bool ZTAsn::open(QByteArray data) {
    qDebug("[ZTAsn::open]...");
    if (data.isEmpty())
        return false;
    stASN_BLOCK_HEADER* root = ASNAddByData(
        nullptr, reinterpret_cast<const unsigned char*>(data.constData()), static_cast<size_t>(data.size()));
    if (root == nullptr)
        return false;
    ASNUpdate(root);
    // A second open appends the new tree's wrappers after the first tree's,
    // which stay in place: child 0 still names the first document.
    stASN_BLOCK_HEADER* previousRoot = node;
    if (!load(root)) {
        retireRoot(root);  // wrappers made before the failure point into it
        return false;
    }
    retireRoot(previousRoot);
    return true;
}

void ZTAsn::close() {
    ASNDeleteBlock(node);
    node = nullptr;
    for (stASN_BLOCK_HEADER* root : retiredRoots_)
        ASNDeleteBlock(root);
    retiredRoots_.clear();
    deleteChildWrappers();
}

void ZTAsn::retireRoot(stASN_BLOCK_HEADER* root) {
    if (root != nullptr)
        retiredRoots_.append(root);
}
