// A progress line on standard error for long work (hashing a large file):
// shown only when standard error is a terminal and the work has taken more
// than a second, redrawn at most a few times a second, cleared at the end.
#ifndef ZTHOST_PROGRESS_H
#define ZTHOST_PROGRESS_H

#include <QElapsedTimer>
#include <QString>

class Progress {
public:
    // `total` in bytes, or -1 when unknown (standard input, a pipe).
    Progress(const QString& label, qint64 total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void advance(qint64 bytes);

private:
    void draw();

    QString label_;
    qint64 total_;
    qint64 done_ = 0;
    qint64 drawnAt_ = 0;
    bool enabled_;
    bool shown_ = false;
    QElapsedTimer timer_;
};

#endif
