// The SM3 compression function (internal to the SM3 module).
#ifndef ZTUTIL_SRC_CRYPTO_SM3_COMPRESS_H
#define ZTUTIL_SRC_CRYPTO_SM3_COMPRESS_H

#include <cstddef>
#include <cstdint>

namespace ztutil {
namespace sm3 {

// Compresses `blocks` consecutive 64-byte blocks of `data` into `state`,
// with the fastest implementation the build has.
void compressBlocks(std::uint32_t state[8], const unsigned char* data, std::size_t blocks);

// The implementations behind it: plain C++, and on x86-64 one whose message
// expansion runs in SSE2 registers. Both give the same results.
void compressBlocksPortable(std::uint32_t state[8], const unsigned char* data, std::size_t blocks);
#if defined(__SSE2__)
void compressBlocksSse2(std::uint32_t state[8], const unsigned char* data, std::size_t blocks);
#endif

}  // namespace sm3
}  // namespace ztutil

#endif
