"""libZTUtil from Python: SM3, HMAC-SM3, SM2 verification with the Z value,
the SM2 signature forms, RSA verification, Base64 (standard and SM2
alphabets) and GBK <-> UTF-8, through ctypes over the library's plain C
functions. Bytes in; bytes, str or bool out; misuse raises (TypeError for
text where bytes belong, ValueError for wrong sizes and malformed input).

The library is loaded on first use by its SONAME, libZTUtil.so.1, or from
the path in the environment variable ZTUTIL_LIBRARY. SM2 and RSA
verification print the library's messages on standard output (see
ztutil.crypto)."""
from ._library import LIBRARY_ENVIRONMENT, SONAME
from .crypto import (DEFAULT_USER_ID, certificate_public_key, hmac_sm3, public_key_record,
                     rsa_verify, sm2_verify, sm2_verify_certificate, sm3, sm3_with_sm2)
from .signature import signature_form, signature_to_128, signature_to_64, signature_to_der
from .text import b64decode, b64encode, gbk_to_utf8, utf8_to_gbk

__version__ = "10.0.0"
__all__ = [
    "LIBRARY_ENVIRONMENT", "SONAME", "DEFAULT_USER_ID",
    "sm3", "hmac_sm3", "sm3_with_sm2", "public_key_record", "sm2_verify",
    "certificate_public_key", "sm2_verify_certificate", "rsa_verify",
    "signature_form", "signature_to_64", "signature_to_128", "signature_to_der",
    "b64encode", "b64decode", "gbk_to_utf8", "utf8_to_gbk",
]
