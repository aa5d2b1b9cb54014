// Picks the SM3 compression implementation of this build.
#include "crypto/sm3_compress.h"

namespace ztutil {
namespace sm3 {

void compressBlocks(std::uint32_t state[8], const unsigned char* data, std::size_t blocks) {
#if defined(__SSE2__)
    compressBlocksSse2(state, data, blocks);
#else
    compressBlocksPortable(state, data, blocks);
#endif
}

}  // namespace sm3
}  // namespace ztutil
