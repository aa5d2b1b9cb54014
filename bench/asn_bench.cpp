// ZTAsn::open with a full walk of the wrappers against OpenSSL's d2i_X509 on
// the same SM2 certificate, and wide SEQUENCEs of 10,000 and 100,000
// children (the cost must grow linearly).
#include <benchmark/benchmark.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtGlobal>
#include <openssl/x509.h>

#include "ztutil/asn.h"
#include "ztutil/ztasn.h"

namespace {

void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

QByteArray certificate() {
    // CMake compiles this file by its absolute path.
    QFile file(QFileInfo(QStringLiteral(__FILE__)).dir().filePath(QStringLiteral("../tests/data/asn_sm2_cert.der")));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing tests/data/asn_sm2_cert.der");
    return file.readAll();
}

QByteArray wideSequence(int children) {
    QByteArray content;
    for (int i = 0; i < children; ++i)
        content += QByteArray("\x02\x01", 2) + static_cast<char>(i & 0x7F);
    QByteArray length;
    for (int rest = content.size(); rest != 0; rest >>= 8)
        length.prepend(static_cast<char>(rest & 0xFF));
    return QByteArray("\x30", 1) + static_cast<char>(0x80 | length.size()) + length + content;
}

// Visits every wrapper and reads every leaf's content.
long long walk(ZTAsnBlock* block) {
    long long sum = block->type();
    if (block->getChildCount() == 0)
        return sum + block->toByteArray().size();
    for (int i = 0; i < block->getChildCount(); ++i)
        sum += walk(block->getChild(i));
    return sum;
}

void openAndWalk(benchmark::State& state, const QByteArray& der) {
    qInstallMessageHandler(discardMessage);  // open() logs every call
    for (auto _ : state) {
        ZTAsn asn;
        if (!asn.open(der))
            state.SkipWithError("open failed");
        benchmark::DoNotOptimize(walk(&asn));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * der.size());
}

void BM_ZTAsnOpenWalk_SM2Certificate(benchmark::State& state) {
    openAndWalk(state, certificate());
}
BENCHMARK(BM_ZTAsnOpenWalk_SM2Certificate);

void BM_OpenSSL_d2i_X509_SM2Certificate(benchmark::State& state) {
    const QByteArray der = certificate();
    for (auto _ : state) {
        const auto* p = reinterpret_cast<const unsigned char*>(der.constData());
        X509* x509 = d2i_X509(nullptr, &p, der.size());
        if (x509 == nullptr)
            state.SkipWithError("d2i_X509 failed");
        X509_free(x509);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * der.size());
}
BENCHMARK(BM_OpenSSL_d2i_X509_SM2Certificate);

// The engine alone: parse, update, encode and free.
void BM_EngineParseEncode_SM2Certificate(benchmark::State& state) {
    const QByteArray der = certificate();
    QByteArray out(der.size(), '\0');
    for (auto _ : state) {
        stASN_BLOCK_HEADER* root = ASNAddByData(
            nullptr, reinterpret_cast<const unsigned char*>(der.constData()), static_cast<size_t>(der.size()));
        ASNUpdate(root);
        ASNBuildData(root, reinterpret_cast<unsigned char*>(out.data()), static_cast<unsigned>(out.size()));
        ASNDeleteBlock(root);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * der.size());
}
BENCHMARK(BM_EngineParseEncode_SM2Certificate);

void BM_ZTAsnOpenWalk_WideSequence(benchmark::State& state) {
    openAndWalk(state, wideSequence(static_cast<int>(state.range(0))));
}
BENCHMARK(BM_ZTAsnOpenWalk_WideSequence)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
