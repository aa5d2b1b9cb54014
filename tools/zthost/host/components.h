// The library's components as zthost creates them: by ProgID, through
// CreateComponent, owned by zthost once created.
#ifndef ZTHOST_COMPONENTS_H
#define ZTHOST_COMPONENTS_H

#include <QObject>
#include <memory>

class HostSession;

namespace progid {
constexpr char kUtil[] = "ZTUTIL.ZTUtil.1";
constexpr char kAsn[] = "ZTUTIL.ZTAsn.1";
// Spelled "Cerificate": the library registers exactly this ProgID.
constexpr char kCertificate[] = "ZTUTIL.ZTCerificate.1";
constexpr char kBase64[] = "ZTUTIL.ZTBase64.1";
}  // namespace progid

// The component for `progId`; throws CommandFailure when this build of the
// library creates none.
std::unique_ptr<QObject> requireComponent(HostSession& session, const char* progId);

#endif
