// Owning holders for the OpenSSL objects the library creates: each frees
// its object with the matching OpenSSL function when it goes out of scope.
#ifndef ZTUTIL_SRC_CRYPTO_OPENSSL_PTR_H
#define ZTUTIL_SRC_CRYPTO_OPENSSL_PTR_H

#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/params.h>

#include <memory>

namespace ztutil {
namespace openssl {

template <typename T, void (*Free)(T*)>
struct Deleter {
    void operator()(T* object) const { Free(object); }
};

template <typename T, void (*Free)(T*)>
using Ptr = std::unique_ptr<T, Deleter<T, Free>>;

using BignumPtr = Ptr<BIGNUM, BN_free>;
using KeyPtr = Ptr<EVP_PKEY, EVP_PKEY_free>;
using KeyContextPtr = Ptr<EVP_PKEY_CTX, EVP_PKEY_CTX_free>;
using ParamBuilderPtr = Ptr<OSSL_PARAM_BLD, OSSL_PARAM_BLD_free>;
using ParamsPtr = Ptr<OSSL_PARAM, OSSL_PARAM_free>;

// A key of `type` ("RSA") from the parameters pushed to `build`, with the
// given selection (EVP_PKEY_PUBLIC_KEY, EVP_PKEY_KEYPAIR); null on failure.
inline KeyPtr keyFromParams(const char* type, OSSL_PARAM_BLD* build, int selection) {
    ParamsPtr params(OSSL_PARAM_BLD_to_param(build));
    KeyContextPtr ctx(EVP_PKEY_CTX_new_from_name(nullptr, type, nullptr));
    EVP_PKEY* key = nullptr;
    if (!params || !ctx || EVP_PKEY_fromdata_init(ctx.get()) != 1 ||
        EVP_PKEY_fromdata(ctx.get(), &key, selection, params.get()) != 1)
        return nullptr;
    return KeyPtr(key);
}

}  // namespace openssl
}  // namespace ztutil

#endif
