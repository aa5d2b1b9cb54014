#include <QDebug>

#include "ztutil/ztutil.h"

void DumpHex(QByteArray data) {
    QString line;
    for (int i = 0; i < data.size(); ++i) {
        if (i % 16 == 0) {
            if (!line.isEmpty())
                qDebug() << line;
            line = QString::asprintf("0x%08X", i);
        }
        line += QString::asprintf(" %02X", static_cast<unsigned char>(data.at(i)));
    }
    qDebug() << line;
}
