// SM3 throughput on 8 KiB messages: the library's ztutil_sm3 against
// OpenSSL's EVP_sm3 in the same run.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <cstring>
#include <vector>

#include "ztutil/sm3.h"

namespace {

const int kMessageSize = 8192;

std::vector<unsigned char> message() {
    std::vector<unsigned char> data(kMessageSize);
    for (int i = 0; i < kMessageSize; ++i)
        data[i] = static_cast<unsigned char>(i * 131 + 7);
    return data;
}

void BM_ztutil_sm3(benchmark::State& state) {
    std::vector<unsigned char> data = message();
    unsigned char digest[32];
    for (auto _ : state) {
        ztutil_sm3(data.data(), kMessageSize, digest);
        benchmark::DoNotOptimize(digest);
    }
    state.SetBytesProcessed(state.iterations() * kMessageSize);
}

void BM_openssl_EVP_sm3(benchmark::State& state) {
    std::vector<unsigned char> data = message();
    unsigned char digest[32];
    unsigned int length = 0;
    EVP_MD* sm3 = EVP_MD_fetch(nullptr, "SM3", nullptr);
    EVP_MD_CTX* ctx = EVP_MD_CTX_new();
    for (auto _ : state) {
        EVP_DigestInit_ex(ctx, sm3, nullptr);
        EVP_DigestUpdate(ctx, data.data(), kMessageSize);
        EVP_DigestFinal_ex(ctx, digest, &length);
        benchmark::DoNotOptimize(digest);
    }
    EVP_MD_CTX_free(ctx);
    EVP_MD_free(sm3);
    state.SetBytesProcessed(state.iterations() * kMessageSize);
}

// Same digest from both, so the comparison is between equal work.
bool digestsAgree() {
    std::vector<unsigned char> data = message();
    unsigned char ours[32], theirs[32];
    unsigned int length = 0;
    ztutil_sm3(data.data(), kMessageSize, ours);
    EVP_Digest(data.data(), kMessageSize, theirs, &length, EVP_sm3(), nullptr);
    return length == 32 && std::memcmp(ours, theirs, 32) == 0;
}

}  // namespace

BENCHMARK(BM_ztutil_sm3);
BENCHMARK(BM_openssl_EVP_sm3);

int main(int argc, char** argv) {
    if (!digestsAgree())
        return 1;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
