// zthost demo: GM and government-affairs seal structures built by the
// library from the fields examples/make_examples.sh used, compared with the
// structures openssl laid out from them, and verified.
#include "services/asn_tree.h"
#include "cli/cli.h"
#include "output/console.h"
#include "commands/demo.h"
#include "host/host_session.h"
#include "services/seal_builder.h"
#include "readers/ses_signature.h"
#include "services/signature_check.h"
#include "services/sm3_digest.h"

namespace {

// The document digest by the library's SM3, or, in a build without SM3,
// the one openssl wrote.
QByteArray documentDigest(DemoRun& run) {
    try {
        return sm3Digest(run.session().library(), run.readExample("document.txt"));
    } catch (const MissingPiece& missing) {
        run.line(QStringLiteral("(%1; the digest is taken from document.sm3)").arg(missing.message));
        return run.readExample("document.sm3");
    }
}

SealFields demoFields(DemoRun& run, bool withCertificate) {
    SealFields fields;
    fields.seal = run.readExample("seal.der");
    fields.digest = documentDigest(run);
    fields.time = QByteArray(kDemoSealTime);
    fields.property = QByteArray(kDemoSealProperty);
    if (withCertificate)
        fields.certificate = run.readExample("sm2-cert.der");
    return fields;
}

void compareWithExample(DemoRun& run, const QByteArray& built, const char* method, const char* example) {
    run.check(built == run.readExample(example),
              QStringLiteral("%1: %2 bytes, identical to %3 (laid out by openssl)")
                  .arg(QLatin1String(method))
                  .arg(built.size())
                  .arg(QLatin1String(example)));
}

void checkHostLog(DemoRun& run, int before) {
    const QStringList& logged = run.session().host().loggedLines();
    const bool reported = logged.size() > before && logged.last().contains(QLatin1String("CreateSM2DigalStruct"));
    run.check(reported, QStringLiteral("the library reported to the host: ") + logged.value(logged.size() - 1));
}

void printTree(DemoRun& run, const QByteArray& der, const char* name) {
    run.line(QStringLiteral("tree of %1:").arg(QLatin1String(name)));
    console::print(asnTreeText(readAsnTree(run.session(), der, QLatin1String(name)).root, false));
}

void verifyStructure(DemoRun& run, const QByteArray& der, const char* name) {
    const SesSignature seal = readOrFail(QLatin1String(name), [&] { return readSesSignature(ByteView::of(der)); });
    const QByteArray signature = seal.signature.toByteArray();
    const SignatureForm form = detectSignatureForm(signature, QLatin1String(name));
    run.check(verifySm2(run.session().library(), signature, form, seal.certificate.toByteArray(),
                        seal.toBeSigned.toByteArray()),
              QStringLiteral("its signature over the %1 to-be-signed bytes verifies with the embedded certificate")
                  .arg(seal.toBeSigned.size()));
}

}  // namespace

void demoGmSeal(DemoRun& run) {
    HostSession& session = run.session();
    const QByteArray tbs = buildGmToBeSigned(session, demoFields(run, true));
    compareWithExample(run, tbs, "GetGMSignInfo (by qt_metacall, 14 arguments)", "gm-tbs.der");
    const int before = session.host().loggedLines().size();
    const QByteArray whole = buildGmSignature(session, tbs, run.readExample("gm-tbs.sig"));
    compareWithExample(run, whole, "GetGMV2ASNData with gm-tbs.sig", "gm-seal.der");
    checkHostLog(run, before);
    printTree(run, whole, "the GM signature");
    verifyStructure(run, whole, "the GM signature");
}

void demoZwSeal(DemoRun& run) {
    HostSession& session = run.session();
    const QByteArray tbs = buildZwToBeSigned(session, demoFields(run, false));
    compareWithExample(run, tbs, "GetZWSignInfo (by qt_metacall, 12 arguments)", "zw-tbs.der");
    const QByteArray whole = buildZwSignature(session, tbs, run.readExample("sm2-cert.der"), QByteArray(),
                                              run.readExample("zw-tbs.sig"));
    compareWithExample(run, whole, "GetZWASNData with zw-tbs.sig", "zw-seal.der");
    printTree(run, whole, "the government-affairs signature");
    verifyStructure(run, whole, "the government-affairs signature");
}
