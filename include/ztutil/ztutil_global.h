// Export macro and the plain type aliases used in the host-visible signatures.
#ifndef ZTUTIL_GLOBAL_H
#define ZTUTIL_GLOBAL_H

#include <cstdint>

// Everything is hidden by default; ZTUTIL_EXPORT marks the contract with the host.
#define ZTUTIL_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
#define ZTUTIL_C_API extern "C" ZTUTIL_EXPORT
#else
#define ZTUTIL_C_API ZTUTIL_EXPORT
#endif

// The host matches invokable signatures textually, so these aliases must be
// spelled exactly like this in every declaration the host can see.
typedef std::uint8_t BYTE;
typedef std::int32_t BOOL;

#endif
