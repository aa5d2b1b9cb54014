// zthost demo: the OFD document of examples/ (invoice.ofd, made by
// make_examples.sh with openssl) verified end to end.
#include "commands/demo.h"
#include "verify/ofd_verify.h"

void demoOfd(DemoRun& run) {
    const OfdVerdict verdict = verifyOfd(run.session(), run.readExample("invoice.ofd"), {});
    for (const QString& problem : verdict.problems)
        run.check(false, problem);
    for (const SignatureVerdict& signature : verdict.signatures) {
        run.check(signature.valid(), QStringLiteral("%1 signature %2 (%3): %4 references, signer %5")
                                         .arg(signature.type, signature.id, signature.format)
                                         .arg(signature.referencesChecked)
                                         .arg(signature.signer));
        for (const QString& problem : signature.problems())
            run.line(QStringLiteral("  ") + problem);
    }
    run.check(verdict.valid() && verdict.signatures.size() == 2, QStringLiteral("invoice.ofd: both signatures valid"));
}
