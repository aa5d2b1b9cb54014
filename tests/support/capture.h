// Capturing what the library writes to standard output and the Qt debug stream.
#ifndef ZTUTIL_TESTS_CAPTURE_H
#define ZTUTIL_TESTS_CAPTURE_H

#include <QString>
#include <QStringList>
#include <string>

#include "support/qt_printers.h"

namespace ztutil_test {

// Redirects file descriptor 1 while alive; text() returns what was written.
class StdoutCapture {
public:
    StdoutCapture();
    ~StdoutCapture();
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;

    // Everything written so far (flushes stdout first). Ends the capture.
    std::string text();

private:
    int savedFd_ = -1;
    int captureFd_ = -1;
    std::string path_;
    bool done_ = false;
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
