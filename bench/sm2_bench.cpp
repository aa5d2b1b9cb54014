// SM2 verification in one process: the library's SM2Verify (standard output
// sent to /dev/null) against OpenSSL's EVP_PKEY_verify on the same digests
// and signatures, for a key that comes back (the library keeps its tables)
// and for keys seen once, plus the certificate path VerifySignatureValue.
//
// Every benchmark runs five times, interleaved at random; at the end the
// ratio OpenSSL time / SM2Verify time is printed per pair of repetitions as
// min / median / max.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <unistd.h>

#include <QByteArray>
#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "crypto/sm2_field.h"
#include "crypto/sm2_point.h"
#include "ztutil/sm2.h"
#include "ztutil/ztverifytools.h"

namespace {

const char kUserId[] = "1234567812345678";
// More keys than the library remembers per thread, so that cycling through
// them never reaches its cache.
const int kFreshKeys = 64;

using Bytes = std::vector<unsigned char>;

struct SignedMessage {
    EVP_PKEY* key = nullptr;
    EVP_PKEY_CTX* verifyContext = nullptr;  // OpenSSL's context, ready to verify
    Bytes record = Bytes(132, 0);
    Bytes message = Bytes(1000, 0x5A);
    unsigned char digest[32];
    Bytes signature;  // DER
    QByteArray certificate;
};

Bytes sign(EVP_PKEY* key, const Bytes& message) {
    EVP_MD_CTX* md = EVP_MD_CTX_new();
    EVP_PKEY_CTX* pctx = EVP_PKEY_CTX_new(key, nullptr);
    size_t length = 0;
    Bytes signature;
    bool ok = md && pctx && EVP_PKEY_CTX_set1_id(pctx, kUserId, 16) == 1;
    EVP_MD_CTX_set_pkey_ctx(md, pctx);
    if (ok && EVP_DigestSignInit(md, nullptr, EVP_sm3(), nullptr, key) == 1 &&
        EVP_DigestSign(md, nullptr, &length, message.data(), message.size()) == 1) {
        signature.resize(length);
        if (EVP_DigestSign(md, signature.data(), &length, message.data(), message.size()) == 1)
            signature.resize(length);
        else
            signature.clear();
    }
    EVP_MD_CTX_free(md);
    EVP_PKEY_CTX_free(pctx);
    return signature;
}

QByteArray selfSignedCertificate(EVP_PKEY* key) {
    X509* certificate = X509_new();
    X509_set_version(certificate, 2);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate), 3600);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>("bench"), -1, -1, 0);
    X509_set_issuer_name(certificate, X509_get_subject_name(certificate));
    X509_set_pubkey(certificate, key);
    X509_sign(certificate, key, EVP_sm3());
    unsigned char* der = nullptr;
    const int length = i2d_X509(certificate, &der);
    QByteArray out(reinterpret_cast<const char*>(der), std::max(length, 0));
    OPENSSL_free(der);
    X509_free(certificate);
    return out;
}

bool setUp(SignedMessage* m) {
    m->key = EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2");
    unsigned char point[65];
    size_t pointLength = 0;
    if (m->key == nullptr ||
        EVP_PKEY_get_octet_string_param(m->key, OSSL_PKEY_PARAM_PUB_KEY, point, sizeof point,
                                        &pointLength) != 1 ||
        pointLength != 65)
        return false;
    const unsigned int bits = 256;
    std::copy(reinterpret_cast<const unsigned char*>(&bits),
              reinterpret_cast<const unsigned char*>(&bits) + 4, m->record.begin());
    std::copy(point + 1, point + 33, m->record.begin() + 36);
    std::copy(point + 33, point + 65, m->record.begin() + 100);
    m->signature = sign(m->key, m->message);
    m->certificate = selfSignedCertificate(m->key);
    m->verifyContext = EVP_PKEY_CTX_new(m->key, nullptr);
    return !m->signature.empty() && !m->certificate.isEmpty() && m->verifyContext != nullptr &&
           EVP_PKEY_verify_init(m->verifyContext) == 1 &&
           ztutil_sm3_with_sm2(m->message.data(), static_cast<int>(m->message.size()),
                               m->record.data(), 132, kUserId, 16, m->digest) == 1;
}

std::vector<SignedMessage>& messages() {
    static std::vector<SignedMessage> all(kFreshKeys);
    return all;
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

bool ztutilVerify(SignedMessage& m) {
    return SM2Verify(m.record.data(), 132, m.digest, 32, m.signature.data(),
                     static_cast<unsigned int>(m.signature.size())) == 0;
}

bool opensslVerify(SignedMessage& m) {
    return EVP_PKEY_verify(m.verifyContext, m.signature.data(), m.signature.size(), m.digest,
                           32) == 1;
}

bool certificateVerify(SignedMessage& m) {
    const QByteArray signature(reinterpret_cast<const char*>(m.signature.data()),
                               static_cast<int>(m.signature.size()));
    const QByteArray data(reinterpret_cast<const char*>(m.message.data()),
                          static_cast<int>(m.message.size()));
    return ZTVerifyTools::VerifySignatureValue(signature, m.certificate, data, ALGO_SM2) == 1;
}

// `keys` 1: the same key every time; otherwise cycling through that many.
template <bool (*Verify)(SignedMessage&)>
void run(benchmark::State& state, int keys) {
    QuietStdout quiet;
    std::vector<SignedMessage>& all = messages();
    int next = 0;
    for (auto _ : state) {
        const bool valid = Verify(all[next]);
        if (!valid)
            state.SkipWithError("signature rejected");
        benchmark::DoNotOptimize(valid);
        next = (next + 1) % keys;
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_SM2Verify_repeated_key(benchmark::State& state) { run<ztutilVerify>(state, 1); }
void BM_SM2Verify_fresh_keys(benchmark::State& state) { run<ztutilVerify>(state, kFreshKeys); }
void BM_EVP_PKEY_verify_repeated_key(benchmark::State& state) { run<opensslVerify>(state, 1); }
void BM_EVP_PKEY_verify_fresh_keys(benchmark::State& state) {
    run<opensslVerify>(state, kFreshKeys);
}
void BM_VerifySignatureValue_repeated_key(benchmark::State& state) {
    run<certificateVerify>(state, 1);
}
void BM_VerifySignatureValue_fresh_keys(benchmark::State& state) {
    run<certificateVerify>(state, kFreshKeys);
}

// The field operations and point formulas underneath, for profiling.
void BM_field_mul(benchmark::State& state) {
    using namespace ztutil::sm2;
    FieldElement a = generator().x;
    const FieldElement b = generator().y;
    for (auto _ : state)
        benchmark::DoNotOptimize(a = fieldMul(a, b));
}
void BM_field_sqr(benchmark::State& state) {
    using namespace ztutil::sm2;
    FieldElement a = generator().x;
    for (auto _ : state)
        benchmark::DoNotOptimize(a = fieldSqr(a));
}
void BM_point_double(benchmark::State& state) {
    using namespace ztutil::sm2;
    JacobianPoint p = toJacobian(generator());
    for (auto _ : state)
        benchmark::DoNotOptimize(p = pointDouble(p));
}
void BM_point_add_mixed(benchmark::State& state) {
    using namespace ztutil::sm2;
    const AffinePoint g = generator();
    JacobianPoint p = pointDouble(toJacobian(g));
    for (auto _ : state)
        benchmark::DoNotOptimize(p = pointAddMixed(p, g));
}

// Collects each repetition's time per benchmark and prints the ratios.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(isatty(1) ? OO_Color : OO_None) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                times_[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\nSpeed-up over EVP_PKEY_verify (min / median / max over repetitions):\n");
        printRatio("SM2Verify, repeated key", "BM_EVP_PKEY_verify_repeated_key",
                   "BM_SM2Verify_repeated_key");
        printRatio("SM2Verify, fresh keys", "BM_EVP_PKEY_verify_fresh_keys",
                   "BM_SM2Verify_fresh_keys");
        printRatio("VerifySignatureValue, repeated key", "BM_EVP_PKEY_verify_repeated_key",
                   "BM_VerifySignatureValue_repeated_key");
        printRatio("VerifySignatureValue, fresh keys", "BM_EVP_PKEY_verify_fresh_keys",
                   "BM_VerifySignatureValue_fresh_keys");
    }

private:
    void printRatio(const char* label, const std::string& reference, const std::string& measured) {
        const std::vector<double>& slow = times_[reference];
        const std::vector<double>& fast = times_[measured];
        std::vector<double> ratios;
        for (size_t i = 0; i < slow.size() && i < fast.size(); ++i)
            ratios.push_back(slow[i] / fast[i]);
        if (ratios.empty())
            return;
        std::sort(ratios.begin(), ratios.end());
        std::printf("  %-36s %.2fx / %.2fx / %.2fx (%zu runs)\n", label, ratios.front(),
                    ratios[ratios.size() / 2], ratios.back(), ratios.size());
    }

    std::map<std::string, std::vector<double>> times_;
};

}  // namespace

BENCHMARK(BM_SM2Verify_repeated_key);
BENCHMARK(BM_SM2Verify_fresh_keys);
BENCHMARK(BM_EVP_PKEY_verify_repeated_key);
BENCHMARK(BM_EVP_PKEY_verify_fresh_keys);
BENCHMARK(BM_VerifySignatureValue_repeated_key);
BENCHMARK(BM_VerifySignatureValue_fresh_keys);
BENCHMARK(BM_field_mul)->Repetitions(1);
BENCHMARK(BM_field_sqr)->Repetitions(1);
BENCHMARK(BM_point_double)->Repetitions(1);
BENCHMARK(BM_point_add_mixed)->Repetitions(1);

int main(int argc, char** argv) {
    for (SignedMessage& m : messages())
        if (!setUp(&m)) {
            std::fprintf(stderr, "cannot set up the SM2 keys and signatures\n");
            return 1;
        }
    // Defaults first, so that the command line can override them.
    std::vector<char*> args = {argv[0]};
    char repetitions[] = "--benchmark_repetitions=5";
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    args.push_back(repetitions);
    args.push_back(interleave);
    args.insert(args.end(), argv + 1, argv + argc);
    int count = static_cast<int>(args.size());
    benchmark::Initialize(&count, args.data());
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    for (SignedMessage& m : messages()) {
        EVP_PKEY_CTX_free(m.verifyContext);
        EVP_PKEY_free(m.key);
    }
    return 0;
}
