"""The three forms of an SM2 signature value (r, s):
  "64"   r || s, 32 bytes each, big-endian;
  "128"  r and s right-aligned in two 64-byte fields;
  "der"  SEQUENCE { INTEGER r, INTEGER s }.
The conversions are the library's ZTVerifyTools functions. The library
reads the INTEGERs of the DER form as 32 bytes, or 33 with a sign byte; a
shorter value (about one signature in 128 has one) cannot be converted and
raises ValueError. The DER the library writes keeps leading zero bytes of r
and s, which strict DER readers such as OpenSSL's refuse."""
import ctypes

from ._library import as_bytes, library, take_result

FORM_64 = "64"
FORM_128 = "128"
FORM_DER = "der"


def _der_integers(der):
    """The contents of r and s when der is SEQUENCE { INTEGER, INTEGER } with
    short-form lengths (an SM2 signature is at most 72 bytes), else None."""
    if len(der) < 8 or der[0] != 0x30 or der[1] != len(der) - 2 or der[2] != 0x02:
        return None
    r_end = 4 + der[3]
    if r_end + 2 > len(der) or der[r_end] != 0x02 or r_end + 2 + der[r_end + 1] != len(der):
        return None
    return der[4:r_end], der[r_end + 2:]


def _convert(function_name, signature, out_size):
    """A conversion function of the library that fills a buffer of out_size."""
    out = ctypes.create_string_buffer(out_size)
    if getattr(library(), function_name)(signature, len(signature), out, out_size) != 1:
        raise ValueError(f"{function_name} refused the signature")
    return out.raw


def signature_form(signature):
    """"64", "128" or "der"; ValueError for anything else."""
    signature = as_bytes(signature, "signature")
    if len(signature) == 64:
        return FORM_64
    if len(signature) == 128:
        return FORM_128
    if _der_integers(signature) is None:
        raise ValueError(
            f"not an SM2 signature value: 64 or 128 bytes, or DER SEQUENCE of two "
            f"INTEGERs ({len(signature)} bytes given)")
    return FORM_DER


def signature_to_128(signature):
    """The 128-byte form (ZTSM2ConvertSignDataTo128)."""
    signature = as_bytes(signature, "signature")
    form = signature_form(signature)
    if form == FORM_128:
        return signature
    if form == FORM_DER:
        for value in _der_integers(signature):
            if len(value) not in (32, 33):
                raise ValueError(
                    f"the library converts 32- or 33-byte INTEGERs only, not {len(value)} bytes")
    return _convert("ZTSM2ConvertSignDataTo128", signature, 128)


def signature_to_64(signature):
    """The 64-byte form (ZTSM2ConvertSignDataTo64 after the 128-byte form)."""
    signature = as_bytes(signature, "signature")
    if signature_form(signature) == FORM_64:
        return signature
    return _convert("ZTSM2ConvertSignDataTo64", signature_to_128(signature), 64)


def signature_to_der(signature):
    """The DER form (ZTSM2SignData64ToASNData after the 64-byte form)."""
    signature = as_bytes(signature, "signature")
    if signature_form(signature) == FORM_DER:
        return signature
    narrow = signature_to_64(signature)
    lib = library()
    size = ctypes.c_uint(0)
    der = lib.ZTSM2SignData64ToASNData(narrow, 64, ctypes.byref(size))
    return take_result(der, lib.delete_array, "ZTSM2SignData64ToASNData", size.value)
