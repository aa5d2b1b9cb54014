#include "component/registry.h"

#include "ztutil/component.h"
#include "ztutil/ztasn.h"
#include "ztutil/ztbase64.h"
#include "ztutil/ztutil.h"
#include "ztutil/ztcertificate.h"

namespace ztutil {
namespace {

template <typename Component>
QObject* makeComponent() {
    return new Component(nullptr);
}

}  // namespace

// The ProgID of the certificate row is spelled "Cerificate": hosts send
// exactly that string.
const ComponentRow kComponentRows[4] = {
    {"ZTUTIL.ZTUtil.1", "84CD4282-863B-4749-8E28-69EE326880EA", &makeComponent<ZTUtil>},
    {"ZTUTIL.ZTAsn.1", "1A339BEF-F98E-4C2D-BA3D-764EE2B3C4CF", &makeComponent<ZTAsn>},
    {"ZTUTIL.ZTCerificate.1", "28BE1D31-810B-490F-B02B-D1B2BC1B838F", &makeComponent<ZTCertificate>},
    {"ZTUTIL.ZTBase64.1", "7D614568-C689-439E-B10A-F5A2D66624E4", &makeComponent<ZTBase64>},
};

const ComponentRow* findComponentRow(const QString& progId, const QString& clsId) {
    for (const ComponentRow& row : kComponentRows) {
        if (progId == QLatin1String(row.progId) || clsId == QLatin1String(row.clsId))
            return &row;
    }
    return nullptr;
}

}  // namespace ztutil

QObject* CreateComponent(const QString& progId, const QString& clsId) {
    const ztutil::ComponentRow* row = ztutil::findComponentRow(progId, clsId);
    if (row == nullptr || row->create == nullptr)
        return nullptr;
    return row->create();
}
