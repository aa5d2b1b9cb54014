// zthost demo: an end-to-end tour of the library as a host drives it.
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include "cli/args.h"
#include "cli/cli.h"
#include "output/console.h"
#include "commands/demo.h"
#include "cli/input.h"

namespace {

const char kUsage[] =
    "usage: zthost demo [--examples DIR]\n"
    "\n"
    "A tour of the library on the example files: the version query, the\n"
    "components, a certificate, SM3, SM2 and RSA signatures, GM and\n"
    "government-affairs seal structures compared with ones made independently\n"
    "by openssl, an OFD document verified end to end, Base64, GBK text and\n"
    "the calls back into the host. Steps that need a piece this build of the\n"
    "library lacks are skipped. Exit status 0 when every step that ran passed.\n"
    "\n"
    "options:\n"
    "  --examples DIR   where the example files are (default: the installed\n"
    "                   share/zthost/examples, then the source tree's examples/)\n";

QString defaultExamplesDir() {
    const QString installed =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/zthost/examples");
    if (QFileInfo::exists(installed + QStringLiteral("/sm2-cert.der")))
        return QDir::cleanPath(installed);
    return QStringLiteral(ZTHOST_EXAMPLES_DIR);
}

int runDemo(Context& context, const QStringList& arguments) {
    const Args args(arguments, kUsage, {{"--examples", true}});
    args.expectPositionals(0, "");
    DemoRun run(context, args.value("--examples", defaultExamplesDir()));
    run.section("library", [&] { demoLibrary(run); });
    run.section("components", [&] { demoComponents(run); });
    run.section("certificate", [&] { demoCertificate(run); });
    run.section("SM3", [&] { demoSm3(run); });
    run.section("signatures", [&] { demoSignatures(run); });
    run.section("GM seal signature", [&] { demoGmSeal(run); });
    run.section("government-affairs seal signature", [&] { demoZwSeal(run); });
    run.section("OFD document", [&] { demoOfd(run); });
    run.section("Base64", [&] { demoBase64(run); });
    run.section("GBK text", [&] { demoText(run); });
    run.section("calls into the host", [&] { demoCallbacks(run); });
    console::printLine(QStringLiteral("\n== done"));
    if (run.failed())
        console::printLine(QStringLiteral("  some steps FAILED"));
    else if (run.skippedSections() > 0)
        console::printLine(QStringLiteral("  every step that ran passed; %1 section(s) cut short by pieces this "
                                          "library build lacks").arg(run.skippedSections()));
    else
        console::printLine(QStringLiteral("  every step passed"));
    return run.failed() ? kExitFailed : kExitOk;
}

}  // namespace

DemoRun::DemoRun(Context& context, QString examplesDir)
    : context_(context), examplesDir_(std::move(examplesDir)) {}

HostSession& DemoRun::session() {
    return context_.session();
}

QString DemoRun::examplePath(const char* name) const {
    return examplesDir_ + QLatin1Char('/') + QLatin1String(name);
}

QByteArray DemoRun::readExample(const char* name) const {
    return input::readFile(examplePath(name));
}

void DemoRun::section(const char* title, const std::function<void()>& body) {
    console::printLine(QStringLiteral("\n== %1").arg(QLatin1String(title)));
    try {
        body();
    } catch (const MissingPiece& missing) {
        line(QStringLiteral("skipped: ") + missing.message);
        ++skipped_;
    } catch (const CommandFailure& failure) {
        check(false, failure.message);
    }
}

void DemoRun::line(const QString& text) {
    console::printLine(QStringLiteral("  ") + text);
}

void DemoRun::check(bool passed, const QString& what) {
    line(QStringLiteral("%1 %2").arg(passed ? QStringLiteral("ok    ") : QStringLiteral("FAILED"), what));
    if (!passed)
        failed_ = true;
}

QString hexText(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex());
}

extern const Command kDemoCommand = {"demo", "a tour of the library on the example files (the default)",
                                     kUsage, runDemo};
