// Eight threads at once run the library's stateless operations (SM3, SM2 and
// RSA verification, certificate checks, signature forms, text conversions,
// ZTCertificate, ZTAsn and the seal builders on objects of their own), and
// every result must equal the one a single thread got first. "make test-tsan"
// runs this under ThreadSanitizer. The process-wide Base64 alphabet and the
// agent pointer are documented as unlocked and stay out of it.
#include <QtGlobal>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

#include "support/common.h"
#include "ztutil/base64.h"
#include "ztutil/code_convert.h"
#include "ztutil/rsa.h"
#include "ztutil/sm2.h"
#include "ztutil/sm3.h"
#include "ztutil/ztasn.h"
#include "ztutil/ztcertificate.h"
#include "ztutil/ztutil.h"
#include "ztutil/ztverifytools.h"

namespace {

const int kThreads = 8;
const int kRounds = 12;

using ztutil_test::example;

unsigned char* bytes(QByteArray& array) {
    return reinterpret_cast<unsigned char*>(array.data());
}

// The example files made with the openssl command, and texts.
struct Inputs {
    QByteArray document = example("document.txt");
    QByteArray sm2Certificate = example("sm2-cert.der");
    QByteArray expiredCertificate = example("sm2-expired-cert.der");
    QByteArray sm2Signature = example("document.sm2.sig");
    QByteArray rsaCertificate = example("rsa-cert.der");
    QByteArray rsaSignature = example("document.rsa.sig");
    QByteArray seal = example("seal.der");
    QByteArray gmSeal = example("gm-seal.der");
    QByteArray utf8 = example("text-utf8.txt");
    QByteArray gbk = example("text-gbk.txt");
};

// An SM2 signature value in its 128-byte form.
QByteArray wideForm(QByteArray signature) {
    QByteArray wide(128, '\0');
    ZTVerifyTools::ZTSM2ConvertSignDataTo128(bytes(signature), signature.size(), bytes(wide), 128);
    return wide;
}

QByteArray number(long long value) {
    return QByteArray::number(value) + ' ';
}

QByteArray sm3Digests(Inputs in) {
    QByteArray out(32 * 3, '\0');
    ztutil_sm3(bytes(in.document), in.document.size(), bytes(out));
    unsigned char key[] = "key";
    ztutil_sm3_hmac(key, 3, bytes(in.document), in.document.size(), bytes(out) + 32);
    unsigned int keyLength = 0;
    QByteArray record(132, '\0');
    ZTVerifyTools::ZTGetPubKeyByCert(bytes(in.sm2Certificate), in.sm2Certificate.size(), nullptr, &keyLength);
    QByteArray point(static_cast<int>(keyLength), '\0');
    ZTVerifyTools::ZTGetPubKeyByCert(bytes(in.sm2Certificate), in.sm2Certificate.size(), bytes(point), &keyLength);
    const quint32 bits = 256;
    record.replace(0, 4, reinterpret_cast<const char*>(&bits), 4);
    record.replace(36, 32, point.mid(1, 32));
    record.replace(100, 32, point.mid(33, 32));
    ztutil_sm3_with_sm2(bytes(in.document), in.document.size(), bytes(record), 132,
                        "1234567812345678", 16, bytes(out) + 64);
    return number(SM2Verify(bytes(record), 132, bytes(out) + 64, 32, bytes(in.sm2Signature),
                            in.sm2Signature.size())) +
           out;
}

QByteArray verifications(Inputs in) {
    QByteArray changed = in.document + '.';
    const QByteArray wide = wideForm(in.sm2Signature);
    return number(ZTVerifyTools::VerifySignatureValue(in.sm2Signature, in.sm2Certificate, in.document, ALGO_SM2)) +
           number(ZTVerifyTools::VerifySignatureValue(in.sm2Signature, in.sm2Certificate, changed, ALGO_SM2)) +
           number(ZTVerifyTools::ZTSoftVerifyByCert(bytes(in.sm2Certificate), in.sm2Certificate.size(),
                                                    bytes(in.document), in.document.size(),
                                                    const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(wide.constData())), 128)) +
           number(ZTVerifyTools::VerifyCertValidity(in.sm2Certificate)) +
           number(ZTVerifyTools::VerifyCertValidity(in.expiredCertificate)) +
           number(RsaVerify(bytes(in.rsaCertificate), in.rsaCertificate.size(), bytes(in.document),
                            in.document.size(), bytes(in.rsaSignature), in.rsaSignature.size())) +
           number(RsaVerify(bytes(in.rsaCertificate), in.rsaCertificate.size(), bytes(changed),
                            changed.size(), bytes(in.rsaSignature), in.rsaSignature.size()));
}

QByteArray signatureForms(Inputs in) {
    QByteArray wide = wideForm(in.sm2Signature), narrow(64, '\0');
    ZTVerifyTools::ZTSM2ConvertSignDataTo64(bytes(wide), 128, bytes(narrow), 64);
    unsigned int length = 0;
    unsigned char* der = ZTVerifyTools::ZTSM2SignData64ToASNData(bytes(narrow), 64, &length);
    const QByteArray asn(reinterpret_cast<const char*>(der), static_cast<int>(length));
    delete[] der;
    QByteArray seventy(72, '\0');
    ZTVerifyTools::ZTSM2ConvSignDataTo70Ex(bytes(narrow), 64, bytes(seventy), &length);
    ZTUtil util;
    return wide + narrow + asn + seventy.left(static_cast<int>(length)) + util.convSignDataToP1(narrow);
}

QByteArray texts(Inputs in) {
    QByteArray gbk(4 * in.utf8.size() + 1, '\0'), utf8(3 * in.gbk.size() + 8, '\0');
    gbk.truncate(code_utf8_to_gbk(in.utf8.constData(), gbk.data()));
    utf8.truncate(code_gbk_to_utf8(in.gbk.constData(), utf8.data(), utf8.size() - 3));
    ZTUtil util;
    const QString carried = util.Multi2Utf8(in.gbk);
    char* base64 = EnCodeBase64Ex(bytes(in.utf8), in.utf8.size(), strSM2Table);
    int decodedLength = 0;
    unsigned char* decoded = DeCodeBase64Ex(reinterpret_cast<unsigned char*>(base64),
                                            static_cast<int>(qstrlen(base64)), strSM2Table, &decodedLength);
    const QByteArray out = gbk + utf8 + carried.toLatin1() + util.Utf8toMulti(carried) +
                           util.Utf8toWide(carried) + util.Wide2Utf8(util.Utf8toWide(carried)).toLatin1() +
                           QByteArray(base64) + QByteArray(reinterpret_cast<char*>(decoded), decodedLength);
    std::free(base64);
    delete[] decoded;
    return out;
}

QByteArray certificateFields(Inputs in) {
    ZTCertificate certificate;
    certificate.open(in.sm2Certificate);
    const QString pem = certificate.GetCertString(in.sm2Certificate);
    return QStringList({certificate.version(), certificate.serialNumber(), certificate.getIssuerDN(),
                        certificate.getSubjectDN(), certificate.notBefore().toString(Qt::ISODate),
                        certificate.notAfter().toString(Qt::ISODate), certificate.pubkey(),
                        certificate.pubKeyAlgOID(), pem,
                        certificate.GetCertParam(in.sm2Certificate, 4, 0x30)})
               .join(QLatin1Char('|'))
               .toUtf8() +
           certificate.GetCertByteArray(pem);
}

QByteArray sealStructures(Inputs in) {
    ZTCertificate builder;
    unsigned char hash[32] = {1, 2, 3};
    unsigned char time[] = "20240101120000Z";
    unsigned char property[] = "property";
    const QByteArray gm = builder.GetGMSignInfo(nullptr, 0, bytes(in.seal), in.seal.size(), property, 8,
                                                hash, 32, bytes(in.sm2Certificate), in.sm2Certificate.size(),
                                                time, 15, nullptr, 0);
    const QByteArray zw = builder.GetZWSignInfo(nullptr, 0, bytes(in.seal), in.seal.size(), property, 8,
                                                hash, 32, nullptr, 0, time, 15);
    const QByteArray raw = wideForm(in.sm2Signature).mid(32, 32) + wideForm(in.sm2Signature).mid(96, 32);
    return gm + builder.GetGMV2ASNData(gm, raw) + zw +
           builder.GetZWASNData(zw, in.sm2Certificate, QByteArray(), in.sm2Signature);
}

QByteArray asnDocument(Inputs in) {
    ZTAsn document;
    document.open(in.gmSeal);
    QByteArray out = document.build();
    QList<ZTAsnBlock*> pending{&document};
    while (!pending.isEmpty()) {
        ZTAsnBlock* block = pending.takeFirst();
        out += block->print().toUtf8() + block->toByteArray() + number(block->toInt());
        if (block->type() == 0x17 || block->type() == 0x18)
            out += block->toDateTime().toString(Qt::ISODate).toLatin1();
        pending += block->listChild;
    }
    return out + document.convertDateTime("491231235959Z").toString(Qt::ISODate).toLatin1();
}

struct Job {
    const char* name;
    std::function<QByteArray(Inputs)> run;
};

const Job kJobs[] = {{"sm3", sm3Digests},          {"verification", verifications},
                     {"signature forms", signatureForms}, {"text", texts},
                     {"certificate", certificateFields},  {"seal builders", sealStructures},
                     {"asn document", asnDocument}};

void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

TEST(Concurrency, EightThreadsGetTheSingleThreadResults) {
    const Inputs inputs;
    ASSERT_FALSE(inputs.document.isEmpty() || inputs.gmSeal.isEmpty()) << "examples/ not found";
    const QtMessageHandler previous = qInstallMessageHandler(discardMessage);
    ztutil_test::StdoutCapture quiet;

    std::vector<QByteArray> expected;
    for (const Job& job : kJobs)
        expected.push_back(job.run(inputs));
    // The jobs really did their work: the valid signatures and certificate pass.
    EXPECT_EQ(verifications(inputs), "1 0 1 1 0 1 0 ");
    EXPECT_TRUE(sm3Digests(inputs).startsWith("0 "));

    std::atomic<int> waiting{kThreads};
    std::mutex mismatchLock;
    QStringList mismatches;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            // All threads start together, each at a different job.
            --waiting;
            while (waiting.load() > 0)
                std::this_thread::yield();
            const int count = static_cast<int>(std::size(kJobs));
            for (int i = 0; i < kRounds * count; ++i) {
                const int j = (t + i) % count;
                if (kJobs[j].run(inputs) != expected[j]) {
                    std::lock_guard<std::mutex> lock(mismatchLock);
                    mismatches << QStringLiteral("thread %1: %2").arg(t).arg(QLatin1String(kJobs[j].name));
                }
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    quiet.text();
    qInstallMessageHandler(previous);
    EXPECT_TRUE(mismatches.isEmpty()) << mismatches.join(QLatin1Char('\n')).toStdString();
}

}  // namespace
