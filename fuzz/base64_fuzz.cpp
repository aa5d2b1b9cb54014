// Both Base64 families with the standard alphabet, the SM2 alphabet and
// alphabets made from the input (65 distinct characters).
//
// The first input byte picks the alphabet; the rest is the data, which is
// also decoded as text. Properties:
// - both encoders write exactly 4 characters per started group of 3 bytes,
//   and the text is OpenSSL's (EVP_EncodeBlock) spelled in the alphabet;
// - both decoders give the data back exactly;
// - decoding arbitrary text stays within the documented lengths, and where
//   the strict decoder accepts text without padding the lenient one agrees.
#include <openssl/evp.h>

#include <QByteArray>
#include <QString>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <random>

#include "fuzz_support.h"
#include "ztutil/base64.h"

namespace {

using fuzz::octets;

const char kStandard[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";

// 65 distinct non-NUL characters in an order drawn from `seed`.
QByteArray shuffledAlphabet(unsigned seed) {
    QByteArray all(255, '\0');
    std::iota(all.begin(), all.end(), static_cast<char>(1));
    std::shuffle(all.begin(), all.end(), std::minstd_rand(seed));
    return all.left(65);
}

QByteArray alphabetFor(unsigned char choice) {
    switch (choice % 3) {
    case 0:
        return QByteArray(strNormalTable);
    case 1:
        return QByteArray(strSM2Table);
    default:
        return shuffledAlphabet(choice);
    }
}

// OpenSSL's Base64 of the data with every character moved to the same
// position of `alphabet`.
QByteArray referenceText(const QByteArray& data, const QByteArray& alphabet) {
    QByteArray text(4 * ((data.size() + 2) / 3) + 1, '\0');
    text.truncate(EVP_EncodeBlock(octets(text), octets(data), data.size()));
    for (char& c : text)
        c = alphabet.at(static_cast<int>(std::strchr(kStandard, c) - kStandard));
    return text;
}

void processCodecRoundTrip(const QByteArray& data, QByteArray& alphabet) {
    ZTBase64SetTableCode(alphabet.data());
    char* text = ZTBase64Encode(reinterpret_cast<unsigned char*>(const_cast<char*>(data.constData())),
                                static_cast<unsigned long>(data.size()));
    if (data.isEmpty()) {
        FUZZ_CHECK(text == nullptr);
        return;
    }
    FUZZ_CHECK(text != nullptr && text == referenceText(data, alphabet));
    long length = -1;
    unsigned char* decoded = ZTBase64Decode(text, &length);
    FUZZ_CHECK(decoded != nullptr && length == data.size());
    FUZZ_CHECK(std::memcmp(decoded, data.constData(), data.size()) == 0 && decoded[length] == 0);
    // The QString form leaks its buffer by contract: only short data, so
    // that long runs do not pile the leaks up.
    if (data.size() <= 12)
        FUZZ_CHECK(ZTBase64EncodeEx(data) == QLatin1String(text));
    std::free(text);
    std::free(decoded);
}

void explicitCodecRoundTrip(const QByteArray& data, QByteArray& alphabet) {
    char* text = EnCodeBase64Ex(reinterpret_cast<unsigned char*>(const_cast<char*>(data.constData())),
                                data.size(), alphabet.data());
    FUZZ_CHECK(text != nullptr && text == referenceText(data, alphabet));
    int length = -1;
    unsigned char* decoded = DeCodeBase64Ex(reinterpret_cast<unsigned char*>(text),
                                            static_cast<int>(std::strlen(text)), alphabet.data(), &length);
    FUZZ_CHECK(decoded != nullptr && length == data.size());
    FUZZ_CHECK(std::memcmp(decoded, data.constData(), data.size()) == 0);
    std::free(text);
    delete[] decoded;
}

// Most bytes the lenient decoder gives for `size` characters of NUL-terminated
// text: 3 per group of 4, and 1, 1 or 2 for a last group of 1, 2 or 3.
int lenientBound(int size) {
    static const int kLastGroup[4] = {0, 1, 1, 2};
    return size / 4 * 3 + kLastGroup[size % 4];
}

// The input as text for both decoders.
void decodeText(const QByteArray& input, QByteArray& alphabet) {
    // As NUL-terminated text, and as raw bytes whose next byte is the input's own.
    const QByteArray text(input.constData());
    int length = -1;
    unsigned char* lenient = DeCodeBase64Ex(reinterpret_cast<unsigned char*>(const_cast<char*>(text.constData())),
                                            text.size(), alphabet.data(), &length);
    FUZZ_CHECK(lenient != nullptr && length >= 0 && length <= lenientBound(text.size()));
    if (input.size() > 1) {
        int rawLength = -1;
        unsigned char* raw = DeCodeBase64Ex(reinterpret_cast<unsigned char*>(const_cast<char*>(input.constData())),
                                            input.size() - 1, alphabet.data(), &rawLength);
        FUZZ_CHECK(raw != nullptr && rawLength >= 0 && rawLength <= input.size() - 1);
        delete[] raw;
    }

    ZTBase64SetTableCode(alphabet.data());
    long strictLength = -1;
    unsigned char* strict = ZTBase64Decode(text.constData(), &strictLength);
    if (strict != nullptr) {
        const long groups = text.size() / 4;
        FUZZ_CHECK(text.size() % 4 == 0 && strictLength <= groups * 3 && strictLength >= groups * 3 - 2);
        FUZZ_CHECK(strict[groups * 3] == 0);
        if (!text.contains(alphabet.at(64)))
            FUZZ_CHECK(length == strictLength && std::memcmp(lenient, strict, length) == 0);
        std::free(strict);
    }
    delete[] lenient;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    fuzz::silenceLibraryOutput();
    if (size == 0 || size > fuzz::kMaxInput)
        return 0;
    // Selected as the process-wide alphabet while this input runs.
    QByteArray alphabet = alphabetFor(data[0]);
    const QByteArray payload = fuzz::view(data + 1, size - 1);
    processCodecRoundTrip(payload, alphabet);
    explicitCodecRoundTrip(payload, alphabet);
    decodeText(QByteArray(payload.constData(), payload.size()), alphabet);
    ZTBase64SetTableCode(nullptr);
    return 0;
}
