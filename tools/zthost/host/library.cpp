#include "host/library.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <dlfcn.h>

#include "host/library_symbols.h"

namespace {

// The library beside the tool (build tree) or in the installed library
// folder; otherwise the dynamic loader's search path decides. The path is
// made explicit because RUNPATH is not honoured when dlopen is intercepted
// (as it is under AddressSanitizer).
QByteArray defaultLibraryPath() {
    const QString toolDir = QCoreApplication::applicationDirPath();
    const QString candidates[] = {
        toolDir + QStringLiteral("/libZTUtil.so.1"),
        toolDir + QStringLiteral("/../" ZTHOST_LIBDIR "/libZTUtil.so.1"),
    };
    for (const QString& candidate : candidates) {
        if (QFileInfo::exists(candidate))
            return QFile::encodeName(candidate);
    }
    return QByteArray("libZTUtil.so.1");
}

}  // namespace

ZtLibrary::~ZtLibrary() {
    // The library stays loaded: Qt keeps pointers to the meta-objects of the
    // components it created, and unloading under them is never safe.
    handle_ = nullptr;
}

bool ZtLibrary::load(const QString& path, QString* error) {
    const QByteArray file = path.isEmpty() ? defaultLibraryPath() : QFile::encodeName(path);
    handle_ = dlopen(file.constData(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        *error = QString::fromLocal8Bit(dlerror());
        return false;
    }
    getVersion = reinterpret_cast<GetVersionFn>(resolveSymbol(*this, Symbol::GetVersion));
    componentInit = reinterpret_cast<InitFn>(resolveSymbol(*this, Symbol::ComponentInit));
    createComponent = reinterpret_cast<CreateFn>(resolveSymbol(*this, Symbol::CreateComponent));
    componentDestroy = reinterpret_cast<DestroyFn>(resolveSymbol(*this, Symbol::ComponentDestroy));
    if (!getVersion || !componentInit || !createComponent || !componentDestroy) {
        *error = QStringLiteral("%1: an entry point is missing").arg(QString::fromLocal8Bit(file));
        return false;
    }
    return true;
}

void* ZtLibrary::symbol(const char* name) const {
    return handle_ != nullptr ? dlsym(handle_, name) : nullptr;
}
