// UTF-8 <-> GBK on about 1 MB of mixed Chinese / ASCII text, beside glibc
// iconv's CP936 converter doing the same work in the same run.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "ztutil/code_convert.h"

namespace {

constexpr size_t kTextBytes = 1 << 20;

void appendUtf8(std::string& text, unsigned u) {
    if (u < 0x80) {
        text += static_cast<char>(u);
    } else {  // the text holds only ASCII and three-byte characters
        text += static_cast<char>(0xE0 | (u >> 12));
        text += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (u & 0x3F));
    }
}

// Runs of common CJK ideographs and Chinese punctuation between short ASCII
// words and numbers, roughly the mix of seal and certificate text.
std::string mixedText() {
    std::mt19937 rng(20240601);
    const unsigned punctuation[] = {0x3001, 0x3002, 0xFF0C, 0xFF1A, 0x201C, 0x201D};
    std::string text;
    while (text.size() < kTextBytes) {
        for (unsigned n = 4 + rng() % 24; n > 0; --n)
            appendUtf8(text, 0x4E00 + rng() % (0x9FA5 - 0x4E00 + 1));
        appendUtf8(text, punctuation[rng() % 6]);
        for (unsigned n = 2 + rng() % 14; n > 0; --n)
            appendUtf8(text, n == 1 ? ' ' : "abcdefghijklmnopqrstuvwxyz0123456789-./"[rng() % 39]);
    }
    return text;
}

// Converts the whole input into `output` and returns the length written.
size_t iconvConvert(iconv_t handle, const std::string& input, std::vector<char>& output) {
    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(input.data());
    size_t inLeft = input.size();
    char* out = output.data();
    size_t outLeft = output.size();
    if (iconv(handle, &in, &inLeft, &out, &outLeft) == static_cast<size_t>(-1)) {
        std::perror("iconv");
        std::abort();
    }
    return output.size() - outLeft;
}

struct Fixture {
    std::string utf8 = mixedText();
    std::string gbk;
    iconv_t toGbk = iconv_open("CP936", "UTF-8");
    iconv_t toUtf8 = iconv_open("UTF-8", "CP936");
    std::vector<char> out = std::vector<char>(4 * kTextBytes + 64);

    Fixture() {
        gbk.assign(out.data(), iconvConvert(toGbk, utf8, out));
        // Both converters must agree on the text before their speed means anything.
        int written = code_utf8_to_gbk(utf8.c_str(), out.data());
        bool sameGbk = std::string(out.data(), written) == gbk;
        written = code_gbk_to_utf8(gbk.c_str(), out.data(), static_cast<int>(out.size()) - 8);
        if (!sameGbk || std::string(out.data(), written) != utf8) {
            std::fprintf(stderr, "code_convert and iconv disagree on the benchmark text\n");
            std::abort();
        }
    }
};

Fixture& fixture() {
    static Fixture instance;
    return instance;
}

void BM_Utf8ToGbk_ZTUtil(benchmark::State& state) {
    Fixture& f = fixture();
    for (auto _ : state)
        benchmark::DoNotOptimize(code_utf8_to_gbk(f.utf8.c_str(), f.out.data()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.utf8.size()));
}

void BM_Utf8ToGbk_Iconv(benchmark::State& state) {
    Fixture& f = fixture();
    for (auto _ : state)
        benchmark::DoNotOptimize(iconvConvert(f.toGbk, f.utf8, f.out));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.utf8.size()));
}

void BM_GbkToUtf8_ZTUtil(benchmark::State& state) {
    Fixture& f = fixture();
    const int size = static_cast<int>(f.out.size()) - 8;
    for (auto _ : state)
        benchmark::DoNotOptimize(code_gbk_to_utf8(f.gbk.c_str(), f.out.data(), size));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.gbk.size()));
}

void BM_GbkToUtf8_Iconv(benchmark::State& state) {
    Fixture& f = fixture();
    for (auto _ : state)
        benchmark::DoNotOptimize(iconvConvert(f.toUtf8, f.gbk, f.out));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.gbk.size()));
}

}  // namespace

BENCHMARK(BM_Utf8ToGbk_ZTUtil)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Utf8ToGbk_Iconv)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GbkToUtf8_ZTUtil)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GbkToUtf8_Iconv)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
