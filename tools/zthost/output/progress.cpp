#include "output/progress.h"

#include <cstdio>
#include <unistd.h>

namespace {

const qint64 kQuietMilliseconds = 1000;
const qint64 kRedrawMilliseconds = 250;

QString sizeText(qint64 bytes) {
    const char* const units[] = {"B", "KiB", "MiB", "GiB", "TiB"};
    double value = double(bytes);
    int unit = 0;
    while (value >= 1024 && unit < 4) {
        value /= 1024;
        ++unit;
    }
    return QStringLiteral("%1 %2").arg(value, 0, 'f', unit == 0 ? 0 : 1).arg(QLatin1String(units[unit]));
}

}  // namespace

Progress::Progress(const QString& label, qint64 total)
    : label_(label), total_(total), enabled_(isatty(STDERR_FILENO) == 1) {
    timer_.start();
}

Progress::~Progress() {
    if (shown_) {
        std::fputs("\r\033[K", stderr);  // back to the line's start, line cleared
        std::fflush(stderr);
    }
}

void Progress::advance(qint64 bytes) {
    done_ += bytes;
    if (!enabled_)
        return;
    const qint64 now = timer_.elapsed();
    if (now < kQuietMilliseconds || (shown_ && now - drawnAt_ < kRedrawMilliseconds))
        return;
    drawnAt_ = now;
    draw();
}

void Progress::draw() {
    QString text = QStringLiteral("\r\033[K%1: %2").arg(label_, sizeText(done_));
    if (total_ > 0)
        text += QStringLiteral(" of %1 (%2%)").arg(sizeText(total_)).arg(done_ * 100 / total_);
    std::fputs(text.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
    shown_ = true;
}
