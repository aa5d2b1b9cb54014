#include "support/capture.h"

#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace ztutil_test {

StdoutCapture::StdoutCapture() {
    std::fflush(stdout);
    char name[] = "/tmp/ztutil-stdout-XXXXXX";
    captureFd_ = mkstemp(name);
    path_ = name;
    savedFd_ = dup(STDOUT_FILENO);
    dup2(captureFd_, STDOUT_FILENO);
}

StdoutCapture::~StdoutCapture() {
    text();
}

std::string StdoutCapture::text() {
    if (done_)
        return std::string();
    done_ = true;
    std::fflush(stdout);
    dup2(savedFd_, STDOUT_FILENO);
    close(savedFd_);
    std::string captured;
    lseek(captureFd_, 0, SEEK_SET);
    char buffer[4096];
    ssize_t n;
    while ((n = read(captureFd_, buffer, sizeof buffer)) > 0)
        captured.append(buffer, static_cast<size_t>(n));
    close(captureFd_);
    unlink(path_.c_str());
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
