// zthost's standard output and standard error.
//
// The library writes progress and failure texts with printf and on Qt's
// debug stream. They must not mix with zthost's results (binary data, JSON),
// so at start-up the real standard output is kept for the results and file
// descriptor 1 is pointed at standard error (--verbose) or at /dev/null; the
// Qt debug lines follow the same choice.
#ifndef ZTHOST_CONSOLE_H
#define ZTHOST_CONSOLE_H

#include <QByteArray>
#include <QString>
#include <cstdio>

namespace console {

// Sets up the streams; call once, before anything is printed.
void setUp(bool showLibraryMessages);

// Results: text lines and raw bytes on the real standard output.
void print(const QString& text);      // as UTF-8, no newline added
void printLine(const QString& text);  // adds "\n"
void writeBytes(const QByteArray& bytes);
bool flushResults();  // false when writing failed (a closed pipe, a full disk)
// True once anything was written to the results stream.
bool resultsWritten();

// One line on standard error: "zthost: <text>".
void error(const QString& text);
// One line on standard error as it stands.
void note(const QString& text);

}  // namespace console

#endif
