// Conversions between the three forms of an SM2 signature value.
#include <cstring>
#include <memory>

#include "ztutil/asn.h"
#include "ztutil/ztverifytools.h"
#include "asn/asn_tags.h"

namespace {

const unsigned int kValueSize = 32;
const unsigned int kShortForm = 64;
const unsigned int kWideForm = 128;
const unsigned int kWideROffset = 32;
const unsigned int kWideSOffset = 96;

struct TreeDelete {
    void operator()(stASN_BLOCK_HEADER* root) const { ASNDeleteBlock(root); }
};
using Tree = std::unique_ptr<stASN_BLOCK_HEADER, TreeDelete>;

// Which first bytes get a 00 in front of an INTEGER's 32 value bytes.
enum class SignPrefix {
    FromHighBit,  // 0x80 and above
    Above80,      // above 0x80 only: 0x80 itself stays unprefixed
};

bool addInteger(stASN_BLOCK_HEADER* sequence, const unsigned char* value, SignPrefix rule) {
    stASN_BLOCK_HEADER* integer = ASNAddSample(tag::kInteger, sequence);
    if (integer == nullptr)
        return false;
    const bool prefixed = rule == SignPrefix::FromHighBit ? value[0] >= 0x80 : value[0] > 0x80;
    unsigned char content[kValueSize + 1] = {0};
    std::memcpy(content + (prefixed ? 1 : 0), value, kValueSize);
    return ASNSetBlockData(integer, content, kValueSize + (prefixed ? 1 : 0)) == 1;
}

// SEQUENCE { INTEGER r, INTEGER s } of a 64-byte value, lengths computed.
Tree buildSequence(const unsigned char* rs, SignPrefix rule) {
    Tree root(ASNAddStruct(tag::kSequence, nullptr));
    if (!root || !addInteger(root.get(), rs, rule) ||
        !addInteger(root.get(), rs + kValueSize, rule) || ASNUpdate(root.get()) != 1)
        return nullptr;
    return root;
}

// 32 bytes of an INTEGER's content into `out`: after the sign byte of a
// 33-byte content, else from the start. A shorter content is not
// right-aligned; its bytes are copied and the rest stays zero.
void takeValue(stASN_BLOCK_HEADER* integer, unsigned char* out) {
    if (integer == nullptr || integer->tag != tag::kInteger || integer->data == nullptr)
        return;
    const unsigned int skip = integer->dataLength == kValueSize + 1 ? 1 : 0;
    const unsigned int available = integer->dataLength - skip;
    std::memcpy(out, integer->data + skip, available < kValueSize ? available : kValueSize);
}

}  // namespace

int ZTVerifyTools::ZTSM2ConvertSignDataTo64(unsigned char* pbtInData, unsigned int dwInDataLen,
                                            unsigned char* pbtOutData, unsigned int dwOutDataLen) {
    if (pbtInData == nullptr || dwInDataLen != kWideForm || pbtOutData == nullptr ||
        dwOutDataLen != kShortForm)
        return 0;
    std::memset(pbtOutData, 0, kShortForm);
    std::memcpy(pbtOutData, pbtInData + kWideROffset, kValueSize);
    std::memcpy(pbtOutData + kValueSize, pbtInData + kWideSOffset, kValueSize);
    return 1;
}

unsigned char* ZTVerifyTools::ZTSM2SignData64ToASNData(unsigned char* pbtInData,
                                                       unsigned int dwInDataLen,
                                                       unsigned int* pdwOutDataLen) {
    if (pbtInData == nullptr || dwInDataLen != kShortForm)
        return nullptr;
    Tree root = buildSequence(pbtInData, SignPrefix::FromHighBit);
    if (!root)
        return nullptr;
    const unsigned int length = ASNGetBlockLength(root.get());
    std::unique_ptr<unsigned char[]> encoding(new unsigned char[length]);
    if (ASNBuildData(root.get(), encoding.get(), length) != 1)
        return nullptr;
    if (pdwOutDataLen != nullptr)
        *pdwOutDataLen = length;
    return encoding.release();
}

int ZTVerifyTools::ZTSM2ConvertSignDataTo128(unsigned char* pbtInData, unsigned int dwInDataLen,
                                             unsigned char* pbtOutData,
                                             unsigned int dwOutDataLen) {
    if (pbtOutData == nullptr || dwOutDataLen != kWideForm || pbtInData == nullptr)
        return 0;
    std::memset(pbtOutData, 0, kWideForm);
    if (dwInDataLen == kShortForm) {
        std::memcpy(pbtOutData + kWideROffset, pbtInData, kValueSize);
        std::memcpy(pbtOutData + kWideSOffset, pbtInData + kValueSize, kValueSize);
        return 1;
    }
    // Anything else is read as DER; what is not found stays zero.
    Tree root(ASNAddByData(nullptr, pbtInData, dwInDataLen));
    if (root && root->tag == tag::kSequence) {
        takeValue(ASNGetChild(root.get(), 0), pbtOutData + kWideROffset);
        takeValue(ASNGetChild(root.get(), 1), pbtOutData + kWideSOffset);
    }
    return 1;
}

int ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(unsigned char* pbtInData, unsigned int /*dwInDataLen*/,
                                           unsigned char* pbtOutData,
                                           unsigned int* pdwOutDataLen) {
    if (pbtInData == nullptr)
        return 0;
    Tree root = buildSequence(pbtInData, SignPrefix::Above80);
    if (!root)
        return 0;
    const unsigned int length = ASNGetBlockLength(root.get());
    std::unique_ptr<unsigned char[]> encoding(new unsigned char[length]);
    if (ASNBuildData(root.get(), encoding.get(), length) != 1)
        return 0;
    if (pdwOutDataLen != nullptr)
        *pdwOutDataLen = length;
    if (pbtOutData != nullptr) {
        std::memset(pbtOutData, 0, length);
        std::memcpy(pbtOutData, encoding.get(), length);
    }
    return 1;
}
