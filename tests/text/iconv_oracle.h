// glibc iconv as the reference converter of the text tests.
#ifndef ZTUTIL_TESTS_TEXT_ICONV_ORACLE_H
#define ZTUTIL_TESTS_TEXT_ICONV_ORACLE_H

#include <iconv.h>

#include <cstdint>
#include <optional>

#include "support/common.h"

namespace ztutil_test {

class IconvOracle {
public:
    IconvOracle(const char* from, const char* to) : handle_(iconv_open(to, from)) {}
    ~IconvOracle() {
        if (valid())
            iconv_close(handle_);
    }
    bool valid() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    // The whole input converted, or nothing if iconv rejects any of it.
    std::optional<std::string> convert(const std::string& input) const {
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        std::string output(input.size() * 4 + 16, '\0');
        char* in = const_cast<char*>(input.data());
        char* out = &output[0];
        size_t inLeft = input.size(), outLeft = output.size();
        if (iconv(handle_, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1) || inLeft != 0)
            return std::nullopt;
        return output.substr(0, output.size() - outLeft);
    }

private:
    iconv_t handle_;
};

// The bytes of a 16-bit code-page code: one byte below 0x100, else two.
inline std::string codeBytes(unsigned code) {
    return code < 0x100 ? std::string(1, char(code)) : std::string{char(code >> 8), char(code & 0xFF)};
}

inline std::string utf32le(std::uint32_t u) {
    return std::string{char(u & 0xFF), char((u >> 8) & 0xFF), char((u >> 16) & 0xFF), char(u >> 24)};
}

// A single code point from UTF-32LE text; nothing unless it is exactly one.
inline std::optional<std::uint32_t> singleUnit(const std::optional<std::string>& text) {
    if (!text || text->size() != 4)
        return std::nullopt;
    const auto* b = reinterpret_cast<const unsigned char*>(text->data());
    return b[0] | b[1] << 8 | b[2] << 16 | std::uint32_t(b[3]) << 24;
}

// A code-page code from one or two bytes; nothing otherwise.
inline std::optional<unsigned> singleCode(const std::optional<std::string>& bytes) {
    if (!bytes || bytes->empty() || bytes->size() > 2)
        return std::nullopt;
    const auto* b = reinterpret_cast<const unsigned char*>(bytes->data());
    return bytes->size() == 1 ? b[0] : (b[0] << 8 | b[1]);
}

}  // namespace ztutil_test

#endif
