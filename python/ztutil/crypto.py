"""SM3, HMAC-SM3, the SM2 digest with the Z value, SM2 and RSA verification.

SM2Verify and RsaVerify write messages to the process's standard output
(file descriptor 1), which is part of the library's contract:
  - every SM2 verification prints "[SM2Verify] call in ... \\n"; a rejected
    signature adds "SM2_verify failed" without a line end (or
    "EC_KEY_check_key failed\\n" for a key that is not on the curve);
  - every RSA verification prints a line per step, starting with
    "[RsaVerify] rsa verify start...\\n" and ending with
    "[RsaVerify] RSA_verify ok\\n" or the reason for the rejection.
The functions here flush C's standard output after each call, so the
messages come out whole and in order with Python's own output. Redirect
file descriptor 1 to keep them out of the program's output.
"""
import ctypes
import sys

from ._library import as_bytes, library
from .signature import FORM_DER, signature_form, signature_to_der

DEFAULT_USER_ID = b"1234567812345678"
DIGEST_SIZE = 32
_RECORD_SIZE = 132
_MAX_USER_ID = 0x1FFF  # the user ID's bit length must fit the 16 bits of ENTL


def sm3(data):
    """The 32-byte SM3 digest of data."""
    data = as_bytes(data, "data")
    digest = ctypes.create_string_buffer(DIGEST_SIZE)
    library().ztutil_sm3(data, len(data), digest)
    return digest.raw


def hmac_sm3(key, data):
    """HMAC-SM3 (RFC 2104, 64-byte blocks) of data under key."""
    key = as_bytes(key, "key")
    data = as_bytes(data, "data")
    mac = ctypes.create_string_buffer(DIGEST_SIZE)
    library().ztutil_sm3_hmac(key, len(key), data, len(data), mac)
    return mac.raw


def public_key_record(public_key):
    """The library's 132-byte ECC public-key record for an SM2 public key
    given as 64 bytes x || y, 65 bytes 04 || x || y, or a record already."""
    key = as_bytes(public_key, "public_key")
    if len(key) == _RECORD_SIZE:
        return key
    if len(key) == 65 and key[0] == 4:
        key = key[1:]
    if len(key) != 64:
        raise ValueError(
            f"an SM2 public key is 64 bytes x || y, 65 bytes 04 || x || y or a "
            f"132-byte record, not {len(public_key)} bytes")
    record = bytearray(_RECORD_SIZE)
    record[0:4] = (256).to_bytes(4, sys.byteorder)
    record[36:68] = key[:32]
    record[100:132] = key[32:]
    return bytes(record)


def sm3_with_sm2(data, public_key, user_id=DEFAULT_USER_ID):
    """e = SM3(Z || data), the digest an SM2 signature signs, with Z made of
    the user ID, the curve and the public key."""
    data = as_bytes(data, "data")
    record = public_key_record(public_key)
    user_id = as_bytes(user_id, "user_id")
    if not 0 < len(user_id) <= _MAX_USER_ID:
        # With an empty ID the library would hash without Z; longer IDs do
        # not fit the 16-bit bit length of the standard.
        raise ValueError(f"the user ID must be 1 to {_MAX_USER_ID} bytes, not {len(user_id)}")
    digest = ctypes.create_string_buffer(DIGEST_SIZE)
    if library().ztutil_sm3_with_sm2(data, len(data), record, len(record), user_id,
                                     len(user_id), digest) != 1:
        raise MemoryError("ztutil_sm3_with_sm2 could not allocate")
    return digest.raw


def sm2_verify(public_key, data, signature, user_id=DEFAULT_USER_ID):
    """True when signature is an SM2 signature over data (SM3 with Z) by the
    key. The signature may take any of its three forms (see
    ztutil.signature); the key any form public_key_record takes."""
    record = public_key_record(public_key)
    digest = sm3_with_sm2(data, record, user_id)
    if signature_form(signature) == FORM_DER:
        der = as_bytes(signature, "signature")
    else:
        der = signature_to_der(signature)
    lib = library()
    valid = lib.SM2Verify(record, len(record), digest, len(digest), der, len(der)) == 0
    lib.flush_output()
    return valid


def certificate_public_key(certificate):
    """The subject public key bits of a DER certificate (for SM2 the 65-byte
    point 04 || x || y). ValueError when the library finds none."""
    certificate = as_bytes(certificate, "certificate")
    if not certificate:
        raise ValueError("the certificate is empty")
    lib = library()
    size = ctypes.c_uint(0)
    lib.ZTGetPubKeyByCert(certificate, len(certificate), None, ctypes.byref(size))
    if size.value == 0:
        raise ValueError("no public key found: not a version-3 DER certificate")
    key = ctypes.create_string_buffer(size.value)
    lib.ZTGetPubKeyByCert(certificate, len(certificate), key, ctypes.byref(size))
    return key.raw[:size.value]


def sm2_verify_certificate(certificate, data, signature, user_id=DEFAULT_USER_ID):
    """sm2_verify with the public key of a DER certificate."""
    return sm2_verify(certificate_public_key(certificate), data, signature, user_id)


def rsa_verify(certificate, data, signature):
    """RsaVerify: an RSA PKCS#1 v1.5 signature with SHA-1 over data, checked
    with the key of a DER certificate (1024 or 2048 bits; the public
    exponent is taken as 65537).

    The library's rule is relaxed: a signature that recovers to anything but
    a SHA-1 DigestInfo or a bare 20-byte value (a SHA-256 DigestInfo, for
    one) is accepted without comparing it to the data."""
    certificate = as_bytes(certificate, "certificate")
    data = as_bytes(data, "data")
    signature = as_bytes(signature, "signature")
    for name, value in (("certificate", certificate), ("data", data), ("signature", signature)):
        if not value:
            raise ValueError(f"the {name} is empty")
    lib = library()
    valid = lib.RsaVerify(certificate, len(certificate), data, len(data), signature,
                          len(signature)) == 1
    lib.flush_output()
    return valid
