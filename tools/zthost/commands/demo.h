// The parts of `zthost demo`: a tour of the library on the files under
// examples/ (made by examples/make_examples.sh).
#ifndef ZTHOST_DEMO_H
#define ZTHOST_DEMO_H

#include <QByteArray>
#include <QString>
#include <functional>

class Context;
class HostSession;

// The seal fields that examples/make_examples.sh put into its structures.
constexpr char kDemoSealTime[] = "20240101120000Z";
constexpr char kDemoSealProperty[] = "zthost demo seal";

class DemoRun {
public:
    DemoRun(Context& context, QString examplesDir);

    HostSession& session();
    const QString& examplesDir() const { return examplesDir_; }
    QString examplePath(const char* name) const;
    // Throws CommandFailure when the file cannot be read.
    QByteArray readExample(const char* name) const;

    // Prints the heading and runs `body`. A piece the library lacks skips
    // the rest of the section; any other failure marks the run failed.
    void section(const char* title, const std::function<void()>& body);
    // One line: the text, with "ok" or "FAILED" for a check.
    void line(const QString& text);
    void check(bool passed, const QString& what);

    bool failed() const { return failed_; }
    int skippedSections() const { return skipped_; }

private:
    Context& context_;
    QString examplesDir_;
    bool failed_ = false;
    int skipped_ = 0;
};

void demoLibrary(DemoRun& run);
void demoComponents(DemoRun& run);
void demoCertificate(DemoRun& run);
void demoSm3(DemoRun& run);
void demoSignatures(DemoRun& run);
void demoGmSeal(DemoRun& run);
void demoZwSeal(DemoRun& run);
void demoBase64(DemoRun& run);
void demoText(DemoRun& run);
void demoCallbacks(DemoRun& run);
void demoOfd(DemoRun& run);

// Bytes as lower-case hex.
QString hexText(const QByteArray& bytes);

#endif
