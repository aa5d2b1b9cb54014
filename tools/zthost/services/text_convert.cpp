#include "services/text_convert.h"

#include <QMetaObject>
#include <memory>
#include <vector>

#include "cli/cli.h"
#include "host/components.h"
#include "host/host_session.h"
#include "host/invoke.h"
#include "host/library_symbols.h"

namespace {

const unsigned short kGbkCodePage = 936;
const unsigned int kEuroSign = 0x20AC;

[[noreturn]] void fail(const QString& source, const QString& reason) {
    throw CommandFailure(kExitFailed, QStringLiteral("%1: %2").arg(source, reason));
}

// The zero unit that marks a code the tables do not know, counted from 1.
int firstZeroUnit(const std::vector<unsigned int>& units, int count) {
    for (int i = 0; i < count; ++i) {
        if (units[static_cast<size_t>(i)] == 0)
            return i + 1;
    }
    return 0;
}

}  // namespace

QByteArray gbkToUtf8(const ZtLibrary& library, const QByteArray& gbk, const QString& source) {
    auto toUnicode = requireSymbol<fn::GbkToUnicode>(library, Symbol::GbkToUnicode);
    auto toUtf8 = requireSymbol<fn::GbkToUtf8>(library, Symbol::GbkToUtf8);
    // A lead byte in the last position makes the reader look one byte
    // further: the array's terminator.
    std::vector<unsigned int> units(static_cast<size_t>(gbk.size()) + 1, 0);
    const int count = toUnicode(gbk.constData(), units.data(), gbk.size());
    if (const int bad = firstZeroUnit(units, count))
        fail(source, QStringLiteral("character %1 is not in the GBK table").arg(bad));
    // At most 3 UTF-8 bytes per GBK byte; the writer may run 6 bytes past
    // the size it is given and then adds a terminator.
    const int outSize = 3 * gbk.size() + 1;
    QByteArray utf8(outSize + 8, '\0');
    const int written = toUtf8(gbk.constData(), utf8.data(), outSize);
    utf8.truncate(written);
    return utf8;
}

QByteArray utf8ToGbk(const ZtLibrary& library, const QByteArray& utf8, const QString& source) {
    auto toUnicode = requireSymbol<fn::Utf8ToUnicode>(library, Symbol::Utf8ToUnicode);
    auto uniToOem = requireSymbol<fn::UniToOem>(library, Symbol::UniToOem);
    auto toGbk = requireSymbol<fn::Utf8ToGbk>(library, Symbol::Utf8ToGbk);
    std::vector<unsigned int> units(static_cast<size_t>(utf8.size()) + 2, 0);
    const int count = toUnicode(utf8.constData(), units.data(), utf8.size() + 1);
    if (const int bad = firstZeroUnit(units, count))
        fail(source, QStringLiteral("the library cannot read the UTF-8 at character %1").arg(bad));
    for (int i = 0; i < count; ++i) {
        const unsigned int unit = units[static_cast<size_t>(i)];
        if (unit >= 0x80 && unit != kEuroSign && uniToOem(unit, kGbkCodePage) == 0)
            fail(source, QStringLiteral("U+%1 has no GBK code").arg(QString::number(unit, 16).toUpper().rightJustified(4, QLatin1Char('0'))));
    }
    // Checked above, so at most 2 GBK bytes per character; the room for 4 per
    // byte covers what the writer does with text it cannot read.
    QByteArray gbk(4 * utf8.size() + 2, '\0');
    const int written = toGbk(utf8.constData(), gbk.data());
    gbk.truncate(written);
    return gbk;
}


QByteArray gbkToUtf8WithComponent(HostSession& session, const QByteArray& gbk) {
    std::unique_ptr<QObject> util = requireComponent(session, progid::kUtil);
    QString utf8;  // UTF-8 bytes carried one per character
    callByName(util.get(), "Multi2Utf8", Q_RETURN_ARG(QString, utf8), Q_ARG(QByteArray, gbk));
    return utf8.toLatin1();
}

QByteArray utf8ToGbkWithComponent(HostSession& session, const QByteArray& utf8) {
    std::unique_ptr<QObject> util = requireComponent(session, progid::kUtil);
    QByteArray gbk;
    callByName(util.get(), "Utf8toMulti", Q_RETURN_ARG(QByteArray, gbk), Q_ARG(QString, QString::fromLatin1(utf8)));
    return gbk;
}
