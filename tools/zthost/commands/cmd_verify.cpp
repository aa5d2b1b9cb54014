// zthost verify: a signature over data, as the library answers and as a
// strict check with OpenSSL answers; the strict answer decides.
#include "cli/args.h"
#include "cli/cli.h"
#include "cli/input.h"
#include "crypto/public_key.h"
#include "host/host_session.h"
#include "output/console.h"
#include "output/report.h"
#include "readers/oid_names.h"
#include "services/certificate_input.h"
#include "services/certificate_view.h"
#include "services/signature_check.h"
#include "verify/chain_check.h"
#include "verify/rsa_check.h"
#include "verify/sm2_check.h"

namespace {

const char kUsage[] =
    "usage: zthost verify (--cert FILE | --pubkey FILE) --data FILE --sig FILE\n"
    "                     [--alg sm2|rsa] [--id TEXT] [--ca FILE]... [--json]\n"
    "\n"
    "Verifies a signature over the data and reports two answers:\n"
    "  library  what a host gets from the library:\n"
    "           sm2  the steps of ZTVerifyTools::VerifySignatureValue: the key by\n"
    "                ZTGetPubKeyByCert (or --pubkey), the signature through the\n"
    "                library's conversions to DER, e = SM3(Z || data) through its\n"
    "                SM3 (streamed, so data of any size and any --id work), and\n"
    "                SM2Verify\n"
    "           rsa  RsaVerify, PKCS#1 v1.5: it compares SHA-1 digests only and\n"
    "                accepts signatures carrying other digests without comparing\n"
    "  strict   OpenSSL: SM2 with SM3 and the same ID; RSA PKCS#1 v1.5 with the\n"
    "           digest the signature carries (SHA-1, SHA-256, SM3, ...) compared\n"
    "           with that digest of the data\n"
    "The verdict and the exit status follow the strict answer; where the two\n"
    "differ, one line says why. SM2 data is streamed, with a progress line on\n"
    "a terminal; RSA data is read whole (up to 512 MiB), as RsaVerify takes it.\n"
    "With --ca the signer's certificate must have a path to a root among the\n"
    "given certificates (as zthost cert verify checks it); without it, the\n"
    "output says that the certificate was not checked against any root.\n"
    "The certificate may be DER, PEM or Base64; the public key a\n"
    "SubjectPublicKeyInfo (PEM or DER), an SM2 point (64 bytes x || y, or 65\n"
    "with 04 first) or a 132-byte ECC record; key and signature raw bytes, hex\n"
    "or Base64 text; an SM2 signature 64 bytes r || s, 128 bytes or DER.\n"
    "Exit status 0: valid, 1: not valid or unreadable input.\n"
    "\n"
    "options:\n"
    "  --cert FILE, -cert FILE      the signer's certificate\n"
    "  --pubkey FILE, -pubkey FILE  the signer's SM2 public key instead\n"
    "  --data FILE, -in FILE        the signed data (\"-\": standard input)\n"
    "  --sig FILE, -sig FILE        the signature value\n"
    "  --alg sm2|rsa                the algorithm; by default the key's type\n"
    "  --id TEXT, -id TEXT          the SM2 signer ID (default 1234567812345678)\n"
    "  --ca FILE                    a trusted root or intermediate certificate;\n"
    "                               repeat it, or give a PEM file with several\n"
    "  --json                       print the result as JSON\n"
    "\n"
    "examples:\n"
    "  zthost verify --cert examples/sm2-cert.der --data examples/document.txt \\\n"
    "                --sig examples/document.sm2.sig\n"
    "  zthost verify -pubkey key.pem -in document.txt -sig document.sig -id alice\n";

const int kMaxIdSize = 8191;  // its bit count must fit ENTL's 16 bits

struct Signer {
    QString path;
    QByteArray certificate;  // empty with --pubkey
    QString keyForm;         // with --pubkey
    QString name;            // the certificate's CN
    EvpPkeyPtr key;          // for the strict check
};

Signer readSigner(HostSession& session, const Args& args) {
    if (args.has("--cert") == args.has("--pubkey"))
        throw UsageError(QStringLiteral("give either --cert or --pubkey"));
    Signer signer;
    if (args.has("--cert")) {
        const CertificateFile file = readCertificate(session, args.value("--cert"));
        const CertificateView view(session, file.der, file.path);
        signer.path = file.path;
        signer.certificate = file.der;
        signer.name = view.name("getSubjectCN");
        signer.key = certificatePublicKey(file.der);
        return signer;
    }
    signer.path = args.value("--pubkey");
    const QByteArray content = input::readFile(signer.path, input::kMaxValueSize);
    const QByteArray bytes = content.contains("-----BEGIN") ? content : input::decodeByteValue(content, signer.path);
    PublicKeyFile file;
    QString error;
    if (!readPublicKey(bytes, &file, &error))
        throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(input::displayName(signer.path), error));
    signer.key = std::move(file.key);
    signer.keyForm = file.form;
    return signer;
}

QString algorithmOf(const Args& args, const Signer& signer) {
    if (args.has("--alg")) {
        const QString algorithm = args.value("--alg");
        if (algorithm != QLatin1String("sm2") && algorithm != QLatin1String("rsa"))
            throw UsageError(QStringLiteral("--alg must be sm2 or rsa"));
        return algorithm;
    }
    switch (keyTypeOf(signer.key.get())) {
    case KeyType::Sm2: return QStringLiteral("sm2");
    case KeyType::Rsa: return QStringLiteral("rsa");
    case KeyType::Other: break;
    }
    throw UsageError(QStringLiteral("the key of %1 is neither SM2 nor RSA; give --alg").arg(signer.path));
}

QByteArray signerId(const Args& args, const QString& algorithm) {
    if (!args.has("--id"))
        return QByteArray(kDefaultSm2UserId);
    if (algorithm != QLatin1String("sm2"))
        throw UsageError(QStringLiteral("--id applies to SM2 signatures only"));
    const QByteArray id = args.value("--id").toUtf8();
    if (id.isEmpty() || id.size() > kMaxIdSize)
        throw UsageError(QStringLiteral("--id must have 1 to %1 bytes").arg(kMaxIdSize));
    return id;
}

struct Outcome {
    Check check;
    qint64 dataBytes = 0;
};

Outcome verifySm2Data(Context& context, const Args& args, const Signer& signer, const QByteArray& signature,
                      Report* report) {
    const QString sigPath = args.value("--sig");
    const SignatureForm form = detectSignatureForm(signature, sigPath);
    const QByteArray id = signerId(args, QStringLiteral("sm2"));
    report->set("signature_form", signatureFormName(form));
    report->set("user_id", QString::fromUtf8(id));
    report->set("digest", QStringLiteral("SM3 with Z"));
    Sm2SignatureCheck check(context.session(), signature, form, Sm2Signer{signer.certificate, signer.key.get()}, id);
    Outcome outcome;
    const QString dataPath = args.value("--data");
    input::readChunks(dataPath, QStringLiteral("verify: ") + input::displayName(dataPath), [&](const char* data, int size) {
        check.update(data, size);
        outcome.dataBytes += size;
    });
    outcome.check = check.finish(CheckScope::Signature, QStringLiteral("signature"));
    return outcome;
}

Outcome verifyRsaData(Context& context, const Args& args, const Signer& signer, const QByteArray& signature,
                      Report* report) {
    if (signer.certificate.isEmpty())
        throw UsageError(QStringLiteral("RsaVerify reads the key from a certificate: give --cert for RSA"));
    signerId(args, QStringLiteral("rsa"));
    const QByteArray data = input::readFile(args.value("--data"));
    RsaCheckResult result = checkRsaSignature(context.session(), CheckScope::Signature, QStringLiteral("signature"),
                                              signature, signer.certificate, data);
    report->set("digest", result.digestName.isEmpty()
                              ? QStringLiteral("none found, PKCS#1 v1.5")
                              : QStringLiteral("%1 (as the signature carries it), PKCS#1 v1.5").arg(result.digestName));
    return Outcome{result.check, data.size()};
}

// The chain of the signer's certificate, or why there is none.
bool reportChain(Context& context, const Args& args, const Signer& signer, Report* report) {
    const QStringList caFiles = args.values("--ca");
    if (caFiles.isEmpty()) {
        report->set("certificate_chain", signer.certificate.isEmpty()
                                             ? QStringLiteral("none: a public key was given, not a certificate")
                                             : QStringLiteral("not checked: the signer's certificate was not checked "
                                                              "against any root (no --ca given)"));
        report->set("chain_valid", Report());
        return true;
    }
    const ChainVerdict chain = verifyChain(context.session(), signer.certificate,
                                           readAuthorities(context.session(), caFiles), QDateTime::currentDateTimeUtc());
    report->set("certificate_chain", chain.pathText());
    report->set("chain_valid", chain.valid());
    if (!chain.valid()) {
        Report problems = Report::array();
        for (const QString& problem : chain.failures())
            problems.append(Report::text(problem));
        report->set("chain_problems", problems);
    }
    return chain.valid();
}

int runVerify(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage,
                    {{"--cert", true, "-cert"},
                     {"--pubkey", true, "-pubkey"},
                     {"--data", true, "-in"},
                     {"--sig", true, "-sig"},
                     {"--alg", true},
                     {"--id", true, "-id"},
                     {"--ca", true},
                     {"--json", false}});
    args.expectPositionals(0, "");
    args.required("--data");
    const QString sigPath = args.required("--sig");
    if (args.has("--ca") && args.has("--pubkey"))
        throw UsageError(QStringLiteral("--ca needs the signer's certificate (--cert)"));
    HostSession& session = context.session();
    const Signer signer = readSigner(session, args);
    const QString algorithm = algorithmOf(args, signer);
    input::Encoding encoding = input::Encoding::Raw;
    const QByteArray signature = input::readByteValue(sigPath, &encoding);
    const bool json = args.has("--json");

    Report report = Report::object();
    report.set("algorithm", algorithm);
    if (signer.certificate.isEmpty()) {
        report.set("public_key", signer.path);
        report.set("public_key_form", signer.keyForm);
    } else {
        report.set("certificate", signer.path);
        report.set("signer", signer.name);
    }
    report.set("signature_bytes", signature.size());
    report.set("signature_encoding", input::encodingName(encoding));
    const Outcome outcome = algorithm == QLatin1String("sm2") ? verifySm2Data(context, args, signer, signature, &report)
                                                              : verifyRsaData(context, args, signer, signature, &report);
    report.set("data_bytes", outcome.dataBytes);
    report.set("library_valid", outcome.check.library == Answer::Yes);
    report.set("strict_valid", outcome.check.strict == Answer::Yes);
    if (json || outcome.check.disagrees())
        report.set("disagreement", outcome.check.disagrees() ? Report::text(outcome.check.disagreement) : Report());
    const bool chainHolds = reportChain(context, args, signer, &report);
    const bool valid = outcome.check.passed() && chainHolds;
    report.set("valid", valid);
    printReport(report, json);
    if (!outcome.check.passed())
        console::error(QStringLiteral("verify: %1").arg(outcome.check.problem));
    else if (!chainHolds)
        console::error(QStringLiteral("verify: the signature verifies, but the signer's certificate chain does not hold"));
    return valid ? kExitOk : kExitFailed;
}

}  // namespace

extern const Command kVerifyCommand = {"verify", "verify a signature against a certificate or public key", kUsage,
                                       runVerify};
