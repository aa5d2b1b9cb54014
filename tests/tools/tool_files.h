// The files zthost's tests read: the examples and the OFD test documents.
#ifndef ZTHOST_TESTS_TOOL_FILES_H
#define ZTHOST_TESTS_TOOL_FILES_H

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>

inline QByteArray readTestFile(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

inline QByteArray example(const char* name) {
    return readTestFile(QStringLiteral(ZTHOST_EXAMPLES_DIR "/") + QLatin1String(name));
}

inline QByteArray ofdData(const char* name) {
    return readTestFile(QStringLiteral(ZTUTIL_TEST_DATA_DIR "/ofd/") + QLatin1String(name));
}

#endif
