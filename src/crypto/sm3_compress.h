// The SM3 compression function (internal to the SM3 module).
#ifndef ZTUTIL_SRC_CRYPTO_SM3_COMPRESS_H
#define ZTUTIL_SRC_CRYPTO_SM3_COMPRESS_H

#include <cstddef>
#include <cstdint>

namespace ztutil {
namespace sm3 {

// Compresses `blocks` consecutive 64-byte blocks of `data` into `state`.
using CompressFunction = void (*)(std::uint32_t state[8], const unsigned char* data, std::size_t blocks);

// With the fastest implementation this CPU runs, chosen on the first call.
void compressBlocks(std::uint32_t state[8], const unsigned char* data, std::size_t blocks);

struct Implementation {
    const char* name;
    CompressFunction compress;
};

// The implementations this build has and this CPU runs, the portable one
// first and the one compressBlocks uses last; all give the same results.
struct ImplementationList {
    Implementation entries[3];
    std::size_t count;
};
ImplementationList usableImplementations();
Implementation chosenImplementation();

// The implementations behind it: plain C++ everywhere; on x86-64 the message
// expansion in SSE2 registers; on 64-bit Arm the SM3 instructions of Armv8.2,
// which only CPUs that report them may run.
void compressBlocksPortable(std::uint32_t state[8], const unsigned char* data, std::size_t blocks);
#if defined(__SSE2__)
void compressBlocksSse2(std::uint32_t state[8], const unsigned char* data, std::size_t blocks);
#endif
#if defined(__aarch64__)
void compressBlocksArmSm3(std::uint32_t state[8], const unsigned char* data, std::size_t blocks);
#endif

}  // namespace sm3
}  // namespace ztutil

#endif
