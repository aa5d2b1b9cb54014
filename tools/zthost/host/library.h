// Run-time binding to libZTUtil.so.1 through dlopen, as a host does it.
#ifndef ZTHOST_LIBRARY_H
#define ZTHOST_LIBRARY_H

#include <QObject>
#include <QString>

class ZtLibrary {
public:
    using GetVersionFn = int (*)(unsigned char*, unsigned int*);
    using InitFn = int (*)(QObject*);
    using CreateFn = QObject* (*)(const QString&, const QString&);
    using DestroyFn = void (*)();

    ZtLibrary() = default;
    ~ZtLibrary();
    ZtLibrary(const ZtLibrary&) = delete;
    ZtLibrary& operator=(const ZtLibrary&) = delete;

    // Loads the library (by default "libZTUtil.so.1" on the usual search path)
    // and resolves the four entry points. On failure `error` says why.
    bool load(const QString& path, QString* error);

    // A plain exported function of the library, or null.
    void* symbol(const char* name) const;

    GetVersionFn getVersion = nullptr;
    InitFn componentInit = nullptr;
    CreateFn createComponent = nullptr;
    DestroyFn componentDestroy = nullptr;

private:
    void* handle_ = nullptr;
};

#endif
