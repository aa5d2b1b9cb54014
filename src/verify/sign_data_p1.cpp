// 64-byte SM2 signature value to DER with the object model's INTEGER rule.
#include "verify/sign_data_p1.h"

#include "ztutil/ztasn.h"
#include "asn/asn_tags.h"

namespace {

const int kShortForm = 64;
const int kValueSize = 32;

}  // namespace

QByteArray convSignDataToP1(QByteArray data) {
    if (data.size() != kShortForm)
        return data;
    ZTAsn document;
    if (!document.create(tag::kSequence))
        return QByteArray();
    for (int offset : {0, kValueSize}) {
        ZTAsnBlock* integer = document.addSample(tag::kInteger);
        if (integer == nullptr || !integer->setData(data.mid(offset, kValueSize)))
            return QByteArray();
    }
    document.update();
    return document.build();
}
