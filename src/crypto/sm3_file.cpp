// SM3 digest of a whole file, read in pieces of at most 1024 bytes.
#include <cstdio>
#include <cstring>

#include "ztutil/sm3.h"

int ztutil_sm3_file(char* path, unsigned char output[32]) {
    std::FILE* file = path != nullptr ? std::fopen(path, "rb") : nullptr;
    if (file == nullptr)
        return 1;

    sm3_context ctx;
    unsigned char piece[1024];
    ztutil_sm3_starts(&ctx);
    std::size_t count;
    while ((count = std::fread(piece, 1, sizeof piece, file)) > 0)
        ztutil_sm3_update(&ctx, piece, static_cast<int>(count));
    // Written also after a read error: the digest of what was read.
    ztutil_sm3_finish(&ctx, output);
    explicit_bzero(&ctx, sizeof ctx);

    const bool readFailed = std::ferror(file) != 0;
    std::fclose(file);
    return readFailed ? 2 : 0;
}
