// zthost's readers of seals, seal signatures and signedData on arbitrary
// bytes. Beyond not crashing: every part a reader hands out is a view into
// the input, the to-be-signed part starts right inside the outer SEQUENCE,
// and a v4 seal's signed bytes are its seal information as it stands; a
// certificate's signed part holds its names.
#include <cstdint>

#include "readers/certificate_fields.h"
#include "readers/ses_signature.h"
#include "readers/signed_data.h"

namespace {

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

void checkSeal(const SesSeal& seal, const ByteView& input) {
    check(input.contains(seal.whole) && seal.whole.contains(seal.sealInfo));
    for (const ByteView& part : {seal.pictureData, seal.makerCertificate, seal.makerSignature})
        check(seal.whole.contains(part));
    for (const ByteView& certificate : seal.signerCertificates)
        check(seal.sealInfo.contains(certificate));
    if (seal.layout == SesLayout::V4)
        check(seal.makerSignedBytes == seal.sealInfo.toByteArray());
    else
        check(seal.makerSignedBytes.size() > seal.sealInfo.size());
}

template <typename Read>
void attempt(Read read) {
    try {
        read();
    } catch (const FormatError& error) {
        check(!error.message.isEmpty());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const ByteView input(data, int(size), 0);
    attempt([&] {
        const SesSignature signature = readSesSignature(input);
        check(input.contains(signature.toBeSigned) && signature.toBeSigned.contains(signature.seal));
        check(signature.toBeSigned.offset() <= 6);  // right after the outer header
        for (const ByteView& part : {signature.dataHash, signature.certificate, signature.signature, signature.timeStamp})
            check(part.empty() || input.contains(part));
        attempt([&] { checkSeal(readSesSeal(signature.seal), input); });
    });
    attempt([&] { checkSeal(readSesSeal(input), input); });
    attempt([&] {
        const SignedData signedData = readSignedData(input);
        check(signedData.signedAttributes.isEmpty() || signedData.signedAttributes.at(0) == char(0x31));
        const ByteView signer = signerCertificate(signedData);
        check(signer.empty() || input.contains(signer));
    });
    attempt([&] {
        const CertificateFields fields = readCertificateFields(input);
        check(input.contains(fields.issuer) && input.contains(fields.serialNumber));
        check(fields.toBeSigned.contains(fields.subject) && input.contains(fields.signatureValue));
        // Every attribute shows as at least "T=".
        check(nameText(fields.subjectAttributes).size() >= 2 * int(fields.subjectAttributes.size()));
    });
    return 0;
}
