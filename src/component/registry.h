// The fixed table of component identifiers known to CreateComponent.
#ifndef ZTUTIL_SRC_COMPONENT_REGISTRY_H
#define ZTUTIL_SRC_COMPONENT_REGISTRY_H

#include <QObject>
#include <QString>

namespace ztutil {

struct ComponentRow {
    const char* progId;
    const char* clsId;
    QObject* (*create)();  // null while the row's class is not part of the build
};

// Rows in the order they are tried.
extern const ComponentRow kComponentRows[4];

// The first row whose ProgID or CLSID matches, or null.
const ComponentRow* findComponentRow(const QString& progId, const QString& clsId);

}  // namespace ztutil

#endif
