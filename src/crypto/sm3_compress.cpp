// Picks the SM3 compression implementation once, from what the CPU offers.
#include "crypto/sm3_compress.h"

#if defined(__aarch64__)
#include <sys/auxv.h>
#ifndef HWCAP_SM3
#define HWCAP_SM3 (1UL << 18)  // the kernel's bit for the SM3 instructions
#endif
#endif

namespace ztutil {
namespace sm3 {

ImplementationList usableImplementations() {
    ImplementationList list{{{"portable", compressBlocksPortable}}, 1};
#if defined(__SSE2__)
    list.entries[list.count++] = {"sse2", compressBlocksSse2};
#endif
#if defined(__aarch64__)
    if ((getauxval(AT_HWCAP) & HWCAP_SM3) != 0)
        list.entries[list.count++] = {"armv8-sm3", compressBlocksArmSm3};
#endif
    return list;
}

Implementation chosenImplementation() {
    static const Implementation chosen = [] {
        const ImplementationList list = usableImplementations();
        return list.entries[list.count - 1];
    }();
    return chosen;
}

void compressBlocks(std::uint32_t state[8], const unsigned char* data, std::size_t blocks) {
    static const CompressFunction compress = chosenImplementation().compress;
    compress(state, data, blocks);
}

}  // namespace sm3
}  // namespace ztutil
