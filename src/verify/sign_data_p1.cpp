// 64-byte SM2 signature value to DER with the object model's INTEGER rule.
#include "verify/sign_data_p1.h"

#include "ztutil/ztasn.h"

namespace {

const int kShortForm = 64;
const int kValueSize = 32;
const int kTagSequence = 0x30;
const int kTagInteger = 0x02;

}  // namespace

QByteArray convSignDataToP1(QByteArray data) {
    if (data.size() != kShortForm)
        return data;
    ZTAsn document;
    if (!document.create(kTagSequence))
        return QByteArray();
    for (int offset : {0, kValueSize}) {
        ZTAsnBlock* integer = document.addSample(kTagInteger);
        if (integer == nullptr || !integer->setData(data.mid(offset, kValueSize)))
            return QByteArray();
    }
    document.update();
    return document.build();
}
