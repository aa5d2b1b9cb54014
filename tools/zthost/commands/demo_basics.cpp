// zthost demo: the version query, the components, Base64, GBK text and the
// calls from the library into the host.
#include <QMetaObject>
#include <cstring>
#include <memory>

#include "services/base64_text.h"
#include "host/components.h"
#include "commands/demo.h"
#include "host/host_session.h"
#include "host/invoke.h"
#include "host/library_symbols.h"
#include "services/text_convert.h"

namespace {

const char kBase64Clsid[] = "7D614568-C689-439E-B10A-F5A2D66624E4";

QString encodeEx(QObject* base64, const QByteArray& data) {
    QString text;
    callByName(base64, "encodeEx", Q_RETURN_ARG(QString, text), Q_ARG(QByteArray, data));
    return text;
}

void base64RoundTrip(DemoRun& run, const char* label, char* table, const QByteArray& data) {
    const QByteArray text = encodeBase64(run.session(), data, table);
    const QByteArray back = decodeBase64Lenient(run.session(), text, table);
    run.check(back == data, QStringLiteral("%1: %2 and back").arg(QLatin1String(label), QString::fromLatin1(text)));
}

}  // namespace

void demoLibrary(DemoRun& run) {
    ZtLibrary& library = run.session().library();
    unsigned int length = 0;
    const int sizeResult = library.getVersion(nullptr, &length);
    run.line(QStringLiteral("ZT_GetVersion(null, &len) = %1, len = %2").arg(sizeResult).arg(length));
    unsigned char buffer[16];
    std::memset(buffer, '?', sizeof buffer);
    length = sizeof buffer;
    const int textResult = library.getVersion(buffer, &length);
    const QByteArray bytes(reinterpret_cast<const char*>(buffer), sizeof buffer);
    run.line(QStringLiteral("ZT_GetVersion(buf[16], &len) = %1, len = %2, buf = %3")
                 .arg(textResult)
                 .arg(length)
                 .arg(QString::fromLatin1(bytes.toHex(' '))));
    run.check(sizeResult == 0 && textResult == -1 && length == 9 && bytes.startsWith(QByteArray(9, '\0')),
              QStringLiteral("the version text is never copied out (hosts rely on this)"));
}

void demoComponents(DemoRun& run) {
    HostSession& session = run.session();
    for (const char* progId : {progid::kUtil, progid::kAsn, progid::kCertificate, progid::kBase64}) {
        std::unique_ptr<QObject> component = session.create(progId);
        run.line(QStringLiteral("CreateComponent(\"%1\") -> %2")
                     .arg(QLatin1String(progId),
                          component ? QLatin1String(component->metaObject()->className())
                                    : QLatin1String("null (not in this build)")));
    }
    std::unique_ptr<QObject> misspelt = session.create("ZTUTIL.ZTCertificate.1");
    run.check(!misspelt, QStringLiteral("\"ZTUTIL.ZTCertificate.1\" gives null: the ProgID is spelled \"Cerificate\""));
    std::unique_ptr<QObject> byClsid(session.library().createComponent(QString(), QLatin1String(kBase64Clsid)));
    run.check(byClsid && std::strcmp(byClsid->metaObject()->className(), "ZTBase64") == 0,
              QStringLiteral("CreateComponent(\"\", \"%1\") gives a ZTBase64").arg(QLatin1String(kBase64Clsid)));
}

void demoBase64(DemoRun& run) {
    HostSession& session = run.session();
    const QByteArray sample("Seal \x00\xff\x10 data", 13);
    run.line(QStringLiteral("data: %1").arg(QString::fromLatin1(sample.toHex(' '))));
    base64RoundTrip(run, "standard alphabet", normalTable(session.library()), sample);
    base64RoundTrip(run, "SM2 alphabet     ", sm2Table(session.library()), sample);
    std::unique_ptr<QObject> base64 = requireComponent(session, progid::kBase64);
    run.line(QStringLiteral("encodeEx:          %1").arg(encodeEx(base64.get(), sample)));
    char* sm2 = sm2Table(session.library());
    callByName(base64.get(), "setTableCode", QGenericReturnArgument(), Q_ARG(char*, sm2));
    run.line(QStringLiteral("encodeEx (SM2):    %1").arg(encodeEx(base64.get(), sample)));
    char* standard = nullptr;
    callByName(base64.get(), "setTableCode", QGenericReturnArgument(), Q_ARG(char*, standard));
}

void demoText(DemoRun& run) {
    const QByteArray gbk = run.readExample("text-gbk.txt");
    const QByteArray utf8 = run.readExample("text-utf8.txt");
    const QByteArray converted = gbkToUtf8(run.session().library(), gbk, run.examplePath("text-gbk.txt"));
    run.line(QStringLiteral("text-gbk.txt: %1 bytes of GBK").arg(gbk.size()));
    run.check(converted == utf8, QStringLiteral("code_gbk_to_utf8 gives text-utf8.txt (made by iconv): %1")
                                     .arg(QString::fromUtf8(converted.left(converted.indexOf('\n')))));
    run.check(utf8ToGbk(run.session().library(), utf8, run.examplePath("text-utf8.txt")) == gbk,
              QStringLiteral("code_utf8_to_gbk gives text-gbk.txt back"));
    run.check(gbkToUtf8WithComponent(run.session(), gbk) == utf8,
              QStringLiteral("ZTUtil::Multi2Utf8 (Qt's GBK codec) agrees"));
}

void demoCallbacks(DemoRun& run) {
    HostSession& session = run.session();
    auto create = requireSymbol<fn::CreateComponentObject>(session.library(), Symbol::CreateComponentObject);
    const int before = session.host().loggedLines().size();
    QObject* created = create(QStringLiteral("HOST.Widget.1"), QString());
    const QStringList& logged = session.host().loggedLines();
    const bool asked = logged.size() > before && logged.last().startsWith(QLatin1String("createComponentObject: \"HOST.Widget.1\""));
    run.check(asked && created == nullptr,
              QStringLiteral("createComponentObject(\"HOST.Widget.1\") reached the host object, which answered null"));
    run.line(QStringLiteral("the host object received %1 call(s) by name in this run:").arg(logged.size()));
    for (const QString& entry : logged)
        run.line(QStringLiteral("  ") + entry);
}
