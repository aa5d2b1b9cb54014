// SM2 verification: the library's SM2Verify (standard output sent to
// /dev/null) against OpenSSL's SM2 verification of the same digest and
// signature with EVP_PKEY_verify, in the same run.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "ztutil/sm2.h"

namespace {

const char kUserId[] = "1234567812345678";

struct Fixture {
    EVP_PKEY* key = nullptr;
    std::vector<unsigned char> record = std::vector<unsigned char>(132, 0);
    unsigned char digest[32];
    std::vector<unsigned char> signature;
};

bool setUp(Fixture* f) {
    f->key = EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2");
    unsigned char point[65];
    size_t pointLength = 0;
    if (f->key == nullptr ||
        EVP_PKEY_get_octet_string_param(f->key, OSSL_PKEY_PARAM_PUB_KEY, point, sizeof point,
                                        &pointLength) != 1 ||
        pointLength != 65)
        return false;
    f->record[3] = 1;  // 256 in the bit-length field (little-endian hosts)
    std::copy(point + 1, point + 33, f->record.begin() + 36);
    std::copy(point + 33, point + 65, f->record.begin() + 100);

    std::vector<unsigned char> message(1000, 0x5A);
    EVP_MD_CTX* md = EVP_MD_CTX_new();
    EVP_PKEY_CTX* pctx = EVP_PKEY_CTX_new(f->key, nullptr);
    size_t signatureLength = 0;
    bool ok = md && pctx && EVP_PKEY_CTX_set1_id(pctx, kUserId, 16) == 1;
    EVP_MD_CTX_set_pkey_ctx(md, pctx);
    ok = ok && EVP_DigestSignInit(md, nullptr, EVP_sm3(), nullptr, f->key) == 1 &&
         EVP_DigestSign(md, nullptr, &signatureLength, message.data(), message.size()) == 1;
    f->signature.resize(signatureLength);
    ok = ok && EVP_DigestSign(md, f->signature.data(), &signatureLength, message.data(),
                              message.size()) == 1;
    f->signature.resize(signatureLength);
    EVP_MD_CTX_free(md);
    EVP_PKEY_CTX_free(pctx);
    return ok && ztutil_sm3_with_sm2(message.data(), static_cast<int>(message.size()),
                                     f->record.data(), 132, kUserId, 16, f->digest) == 1;
}

Fixture& fixture() {
    static Fixture f;
    return f;
}

// Standard output goes to /dev/null while alive.
class QuietStdout {
public:
    QuietStdout() {
        std::fflush(stdout);
        saved_ = dup(1);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, 1);
        close(null);
    }
    ~QuietStdout() {
        std::fflush(stdout);
        dup2(saved_, 1);
        close(saved_);
    }

private:
    int saved_;
};

void BM_ztutil_SM2Verify(benchmark::State& state) {
    Fixture& f = fixture();
    QuietStdout quiet;
    for (auto _ : state) {
        const int result = SM2Verify(f.record.data(), 132, f.digest, 32, f.signature.data(),
                                     static_cast<unsigned int>(f.signature.size()));
        if (result != 0)
            state.SkipWithError("signature rejected");
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(state.iterations());
}

// One verification context for the whole run: OpenSSL's fastest path.
void BM_openssl_EVP_PKEY_verify(benchmark::State& state) {
    Fixture& f = fixture();
    EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(f.key, nullptr);
    if (ctx == nullptr || EVP_PKEY_verify_init(ctx) != 1) {
        state.SkipWithError("no context");
        return;
    }
    for (auto _ : state) {
        const int result =
            EVP_PKEY_verify(ctx, f.signature.data(), f.signature.size(), f.digest, 32);
        if (result != 1)
            state.SkipWithError("signature rejected");
        benchmark::DoNotOptimize(result);
    }
    EVP_PKEY_CTX_free(ctx);
    state.SetItemsProcessed(state.iterations());
}

// A new context per verification, as a caller that verifies one signature.
void BM_openssl_EVP_PKEY_verify_new_context(benchmark::State& state) {
    Fixture& f = fixture();
    for (auto _ : state) {
        EVP_PKEY_CTX* ctx = EVP_PKEY_CTX_new(f.key, nullptr);
        const int result = ctx != nullptr && EVP_PKEY_verify_init(ctx) == 1
                               ? EVP_PKEY_verify(ctx, f.signature.data(), f.signature.size(),
                                                 f.digest, 32)
                               : 0;
        EVP_PKEY_CTX_free(ctx);
        if (result != 1)
            state.SkipWithError("signature rejected");
        benchmark::DoNotOptimize(result);
    }
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK(BM_ztutil_SM2Verify);
BENCHMARK(BM_openssl_EVP_PKEY_verify);
BENCHMARK(BM_openssl_EVP_PKEY_verify_new_context);

int main(int argc, char** argv) {
    if (!setUp(&fixture())) {
        std::fprintf(stderr, "cannot set up the SM2 key and signature\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
