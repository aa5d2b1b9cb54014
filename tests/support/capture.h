// Capturing what the library writes to standard output and the Qt debug stream.
#ifndef ZTUTIL_TESTS_CAPTURE_H
#define ZTUTIL_TESTS_CAPTURE_H

#include <QStringList>
#include <cstdio>
#include <string>

#include "support/qt_printers.h"

namespace ztutil_test {

// Redirects file descriptor 1 while alive; text() ends the capture and
// returns what was written.
class StdoutCapture {
public:
    StdoutCapture();
    ~StdoutCapture() { text(); }
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;
    std::string text();

private:
    int savedFd_ = -1;
    std::FILE* capture_ = nullptr;
};

// Collects the lines sent to qDebug/qWarning while alive.
class DebugCapture {
public:
    DebugCapture();
    ~DebugCapture();
    DebugCapture(const DebugCapture&) = delete;
    DebugCapture& operator=(const DebugCapture&) = delete;
    const QStringList& lines() const;
};

}  // namespace ztutil_test

#endif
