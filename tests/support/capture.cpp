#include "support/capture.h"

#include <unistd.h>

namespace ztutil_test {

StdoutCapture::StdoutCapture() : savedFd_(dup(STDOUT_FILENO)), capture_(std::tmpfile()) {
    std::fflush(stdout);
    dup2(fileno(capture_), STDOUT_FILENO);
}

std::string StdoutCapture::text() {
    if (capture_ == nullptr)
        return std::string();
    std::fflush(stdout);
    dup2(savedFd_, STDOUT_FILENO);
    close(savedFd_);
    std::string captured;
    std::rewind(capture_);
    for (int c; (c = std::fgetc(capture_)) != EOF;)
        captured += static_cast<char>(c);
    std::fclose(capture_);
    capture_ = nullptr;
    return captured;
}

namespace {

QStringList g_debugLines;
QtMessageHandler g_previousHandler = nullptr;

void collectMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
    g_debugLines.append(message);
}

}  // namespace

DebugCapture::DebugCapture() {
    g_debugLines.clear();
    g_previousHandler = qInstallMessageHandler(collectMessage);
}

DebugCapture::~DebugCapture() {
    qInstallMessageHandler(g_previousHandler);
}

const QStringList& DebugCapture::lines() const {
    return g_debugLines;
}

}  // namespace ztutil_test
