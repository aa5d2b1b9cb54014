// zthost verify: a signature over data against a certificate.
#include "cli/args.h"
#include "services/certificate_input.h"
#include "services/certificate_view.h"
#include "cli/cli.h"
#include "output/console.h"
#include "host/host_session.h"
#include "cli/input.h"
#include "output/report.h"
#include "readers/oid_names.h"
#include "services/signature_check.h"

namespace {

const char kUsage[] =
    "usage: zthost verify --cert FILE --data FILE --sig FILE [--alg sm2|rsa] [--json]\n"
    "\n"
    "Verifies a signature over the data against the certificate's public key\n"
    "with the library's own functions:\n"
    "  sm2  ZTVerifyTools::VerifySignatureValue: SM3 with the Z value of user ID\n"
    "       1234567812345678; the signature as 64 bytes r||s, DER, or 128 bytes\n"
    "  rsa  RsaVerify: PKCS#1 v1.5 with SHA-1 (1024- or 2048-bit keys)\n"
    "The certificate may be DER, PEM or Base64; the signature raw bytes, hex or\n"
    "Base64 text. Exit status 0: valid, 1: not valid or unreadable input.\n"
    "\n"
    "options:\n"
    "  --cert FILE      the signer's certificate\n"
    "  --data FILE      the signed data (\"-\": standard input)\n"
    "  --sig FILE       the signature value\n"
    "  --alg sm2|rsa    the algorithm; by default the certificate's key type\n"
    "  --json           print the result as JSON\n"
    "\n"
    "example:\n"
    "  zthost verify --cert examples/sm2-cert.der --data examples/document.txt \\\n"
    "                --sig examples/document.sm2.sig\n";

QString algorithmOf(const Args& args, const CertificateView& certificate) {
    if (args.has("--alg")) {
        const QString algorithm = args.value("--alg");
        if (algorithm != QLatin1String("sm2") && algorithm != QLatin1String("rsa"))
            throw UsageError(QStringLiteral("--alg must be sm2 or rsa"));
        return algorithm;
    }
    const QString keyType = certificate.text("pubKeyAlgOID");
    if (keyType == QLatin1String(oid::kEcPublicKey))
        return QStringLiteral("sm2");
    if (keyType == QLatin1String(oid::kRsaEncryption))
        return QStringLiteral("rsa");
    throw UsageError(QStringLiteral("the certificate's key type %1 is neither SM2 nor RSA; give --alg")
                         .arg(oidWithName(keyType)));
}

int runVerify(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage,
                    {{"--cert", true}, {"--data", true}, {"--sig", true}, {"--alg", true}, {"--json", false}});
    args.expectPositionals(0, "");
    const QString certPath = args.required("--cert");
    const QString dataPath = args.required("--data");
    const QString sigPath = args.required("--sig");
    HostSession& session = context.session();
    const CertificateFile certFile = readCertificate(session, certPath);
    const CertificateView certificate(session, certFile.der, certFile.path);
    const QString algorithm = algorithmOf(args, certificate);
    const QByteArray data = input::readFile(dataPath);
    input::Encoding encoding = input::Encoding::Raw;
    const QByteArray signature = input::readByteValue(sigPath, &encoding);

    Report report = Report::object();
    report.set("algorithm", algorithm);
    report.set("certificate", certPath);
    report.set("signer", certificate.text("getSubjectCN"));
    report.set("data_bytes", data.size());
    report.set("signature_bytes", signature.size());
    report.set("signature_encoding", input::encodingName(encoding));
    bool valid = false;
    if (algorithm == QLatin1String("sm2")) {
        const SignatureForm form = detectSignatureForm(signature, sigPath);
        report.set("signature_form", signatureFormName(form));
        report.set("digest", QStringLiteral("SM3 with Z, user ID %1").arg(QLatin1String(kDefaultSm2UserId)));
        if (form == SignatureForm::Der) {
            const QString warning = shortIntegerWarning(signature);
            if (!warning.isEmpty())
                console::error(QStringLiteral("verify: warning: ") + warning);
        }
        valid = verifySm2(session.library(), signature, form, certFile.der, data);
    } else {
        report.set("digest", "SHA-1, PKCS#1 v1.5");
        valid = verifyRsa(session.library(), certFile.der, data, signature);
    }
    report.set("valid", valid);
    printReport(report, args.has("--json"));
    if (!valid)
        console::error(QStringLiteral("verify: the signature does not verify"));
    return valid ? kExitOk : kExitFailed;
}

}  // namespace

extern const Command kVerifyCommand = {"verify", "verify a signature against a certificate", kUsage, runVerify};
