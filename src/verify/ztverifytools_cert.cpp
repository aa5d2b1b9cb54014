// Certificate validity and public key, read by walking the DER tree of a
// version-3 X.509 certificate: the TBS part is child 0, its validity child 4
// and its subject public key info child 6 (these indexes assume the explicit
// version field is there).
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "date/ZTDate.h"
#include "ztutil/asn.h"
#include "ztutil/ztverifytools.h"
#include "asn/asn_tags.h"

namespace {

const int kTbsIndex = 0;
const int kValidityIndex = 4;
const int kPublicKeyInfoIndex = 6;
const std::size_t kTimeTextCapacity = 32;

struct TreeDelete {
    void operator()(stASN_BLOCK_HEADER* root) const { ASNDeleteBlock(root); }
};
using Tree = std::unique_ptr<stASN_BLOCK_HEADER, TreeDelete>;

bool isSequence(const stASN_BLOCK_HEADER* node) {
    return node != nullptr && node->tag == tag::kSequence;
}

// The child at `index` of the TBS part when certificate, TBS part and that
// child are all SEQUENCEs, else null.
stASN_BLOCK_HEADER* tbsSequence(stASN_BLOCK_HEADER* root, int index) {
    if (!isSequence(root))
        return nullptr;
    stASN_BLOCK_HEADER* tbs = ASNGetChild(root, kTbsIndex);
    if (!isSequence(tbs))
        return nullptr;
    stASN_BLOCK_HEADER* child = ASNGetChild(tbs, index);
    return isSequence(child) ? child : nullptr;
}

// The time of a UTCTime or GeneralizedTime node (its first 32 characters).
// False for other tags, and for a text that does not make a valid date: such
// a time is skipped like a time of another type.
bool readTime(const stASN_BLOCK_HEADER* node, CZTDate* time) {
    if (node == nullptr || (node->tag != tag::kUtcTime && node->tag != tag::kGeneralizedTime))
        return false;
    char text[kTimeTextCapacity + 1] = {0};
    if (node->data != nullptr)
        std::memcpy(text, node->data, std::min<std::size_t>(node->dataLength, kTimeTextCapacity));
    const std::string timeText(text);
    if (!CZTDate::IsValidText(timeText))
        return false;
    *time = CZTDate(timeText);
    return true;
}

}  // namespace

int ZTVerifyTools::ZTVerifyCertValidity(unsigned char* pbtCertData, unsigned int dwCertDataLength) {
    if (pbtCertData == nullptr || dwCertDataLength == 0)
        return 0;
    const CZTDate now(0);
    Tree root(ASNAddByData(nullptr, pbtCertData, dwCertDataLength));
    stASN_BLOCK_HEADER* validity = tbsSequence(root.get(), kValidityIndex);
    if (validity == nullptr)
        return 1;
    CZTDate time = now;
    if (readTime(ASNGetChild(validity, 0), &time) && time > now)
        return 0;  // not yet valid
    if (readTime(ASNGetChild(validity, 1), &time) && time < now)
        return 0;  // expired
    return 1;
}

int ZTVerifyTools::VerifyCertValidity(QByteArray qCertData) {
    return ZTVerifyCertValidity(reinterpret_cast<unsigned char*>(qCertData.data()),
                                static_cast<unsigned int>(qCertData.size()));
}

int ZTVerifyTools::ZTGetPubKeyByCert(unsigned char* pbtCertData, unsigned int dwCertDataLength,
                                     unsigned char* pbtPubKey, unsigned int* pdwPubKeySize) {
    if (pbtCertData == nullptr || dwCertDataLength == 0 || pdwPubKeySize == nullptr)
        return 0;
    Tree root(ASNAddByData(nullptr, pbtCertData, dwCertDataLength));
    stASN_BLOCK_HEADER* keyInfo = tbsSequence(root.get(), kPublicKeyInfoIndex);
    stASN_BLOCK_HEADER* bits = keyInfo != nullptr ? ASNGetChild(keyInfo, 1) : nullptr;
    stASN_BIT_STRING key = {0, 0, nullptr};
    if (bits != nullptr && bits->tag == tag::kBitString && ASNGetBitStringData(bits, &key) == 1) {
        *pdwPubKeySize = key.length;
        if (pbtPubKey != nullptr && key.length != 0)
            std::memcpy(pbtPubKey, key.data, key.length);
        std::free(key.data);
    }
    return 1;
}
