// What the fuzz targets share: the library's own output silenced, property
// checks that stop with a readable message, DER written and checked by
// OpenSSL (an outside reference for "one whole element"), and byte helpers.
#ifndef ZTUTIL_FUZZ_SUPPORT_H
#define ZTUTIL_FUZZ_SUPPORT_H

#include <QByteArray>
#include <cstddef>
#include <cstdint>

namespace fuzz {

// Standard output (the library's printf diagnostics) goes to /dev/null and
// Qt's debug stream is discarded, so libFuzzer's own report stays readable.
// Runs once per process however often it is called.
void silenceLibraryOutput();

[[noreturn]] void fail(const char* condition, const char* file, int line);

// Larger inputs only make runs slower; every target refuses them alike.
constexpr std::size_t kMaxInput = 1 << 16;

// The fuzzer's bytes without a copy.
inline QByteArray view(const std::uint8_t* data, std::size_t size) {
    return QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
}

inline const unsigned char* octets(const QByteArray& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

inline unsigned char* octets(QByteArray& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

// How OpenSSL's header reader sees some bytes.
struct DerReading {
    enum Shape {
        kWhole,      // exactly one element, every nested element whole, minimal lengths
        kBroken,     // anything else
        kUncheckable // a high-tag-number octet (0x1F): OpenSSL reads further tag
                     // octets where this library's engine reads one
    } shape;
    long length;  // octets of the first element (kWhole only)
    int depth;    // deepest nesting level, 1 for a lone element (kWhole only)
};

// Reads the first element at `der` with ASN1_get_object, descending into
// every constructed element. With trailingAllowed false the element must
// span all `size` octets.
DerReading readDer(const unsigned char* der, std::size_t size, bool trailingAllowed);

inline bool isOneWholeElement(const QByteArray& der) {
    return readDer(octets(der), static_cast<std::size_t>(der.size()), false).shape !=
           DerReading::kBroken;
}

// One DER element written by OpenSSL (ASN1_put_object): the identifier octet
// as this library stores it (class, constructed bit, tag number below 31),
// the minimal length, then the content.
QByteArray derElement(unsigned char identifier, const QByteArray& content);

// The first element of `der` as this library's engine re-encodes it
// (minimal lengths), or a null array when it does not parse.
QByteArray canonicalElement(const QByteArray& der);

// The dotted text OpenSSL gives OBJECT IDENTIFIER content, when this
// library names the content the same way: OpenSSL accepts it (minimal arcs,
// the last one finished), the first octet stands for arcs 0-2 and 0-9 (the
// library writes one character each) and every arc fits a signed 32-bit
// number (the library prints it so). False otherwise.
bool comparableOidText(const QByteArray& content, QByteArray* text);

// The content octets OpenSSL (a2d_ASN1_OBJECT) makes of dotted text, when
// this library encodes the text the same way: at least two arcs, digits
// only, first arc 0-2 with first * 40 + second below 128 (the library writes
// that as one octet), no arc of 0 after the second (the library drops those)
// and none above 32 bits. False otherwise.
bool comparableOidContent(const char* text, QByteArray* content);

// Seconds since 1970 that OpenSSL reads from a UTCTime or GeneralizedTime
// text (identifier kUtcTime or kGeneralizedTime), or false.
bool openSslTimeSeconds(unsigned char identifier, const QByteArray& text, long long* seconds);

// The identifier octets of SEQUENCE and of the universal types used below.
constexpr unsigned char kInteger = 0x02, kBitString = 0x03, kOctetString = 0x04, kOid = 0x06,
                        kIa5String = 0x16, kUtcTime = 0x17, kGeneralizedTime = 0x18,
                        kSequence = 0x30;

}  // namespace fuzz

// Stops the run with the condition's text when it does not hold.
#define FUZZ_CHECK(condition) \
    ((condition) ? static_cast<void>(0) : ::fuzz::fail(#condition, __FILE__, __LINE__))

#endif
