#include "output/console.h"

#include <QtGlobal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace console {
namespace {

FILE* results = stdout;
bool libraryMessagesShown = false;
bool written = false;

// Debug and info lines come from the library; warnings and worse from Qt
// itself (a failed invocation, a missing codec) and are always shown.
void messageHandler(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if ((type == QtDebugMsg || type == QtInfoMsg) && !libraryMessagesShown)
        return;
    std::fprintf(stderr, "%s%s\n", type == QtDebugMsg || type == QtInfoMsg ? "library: " : "zthost: ",
                 message.toLocal8Bit().constData());
    if (type == QtFatalMsg)
        std::abort();
}

// Points descriptor 1 at standard error or /dev/null; the stdio stream
// `stdout` keeps working on the new target.
void redirectLibraryOutput(bool showLibraryMessages) {
    const int target = showLibraryMessages ? dup(STDERR_FILENO) : open("/dev/null", O_WRONLY);
    if (target < 0)
        return;
    dup2(target, STDOUT_FILENO);
    close(target);
}

}  // namespace

void setUp(bool showLibraryMessages) {
    libraryMessagesShown = showLibraryMessages;
    qInstallMessageHandler(messageHandler);
    std::fflush(stdout);
    const int kept = dup(STDOUT_FILENO);
    FILE* stream = kept >= 0 ? fdopen(kept, "w") : nullptr;
    if (stream == nullptr) {
        if (kept >= 0)
            close(kept);
        return;  // no standard output to protect
    }
    results = stream;
    redirectLibraryOutput(showLibraryMessages);
}

void print(const QString& text) {
    writeBytes(text.toUtf8());
}

void printLine(const QString& text) {
    writeBytes(text.toUtf8() + '\n');
}

void writeBytes(const QByteArray& bytes) {
    written = written || !bytes.isEmpty();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), results);
}

bool resultsWritten() {
    return written;
}

bool flushResults() {
    const bool flushed = std::fflush(results) == 0 && !std::ferror(results);
    std::fflush(stdout);  // the library's texts
    return flushed;
}

void error(const QString& text) {
    std::fflush(stdout);
    std::fprintf(stderr, "zthost: %s\n", text.toLocal8Bit().constData());
}

void note(const QString& text) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
}

}  // namespace console
