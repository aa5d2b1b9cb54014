"""Loading libZTUtil and declaring the C signatures this package calls.

The library is found by its SONAME, libZTUtil.so.1, through the dynamic
loader's usual search, unless the environment variable ZTUTIL_LIBRARY names
the file to load.
"""
import ctypes
import functools
import os

LIBRARY_ENVIRONMENT = "ZTUTIL_LIBRARY"
SONAME = "libZTUtil.so.1"
INT_MAX = 0x7FFFFFFF

_uchar_p = ctypes.c_char_p
_uint_p = ctypes.POINTER(ctypes.c_uint)
_int = ctypes.c_int
_uint = ctypes.c_uint

# name in Python: (exported name, result type, argument types). The
# ZTVerifyTools functions are static members, exported under C++ names.
_FUNCTIONS = {
    "ztutil_sm3": ("ztutil_sm3", None, [_uchar_p, _int, _uchar_p]),
    "ztutil_sm3_hmac": ("ztutil_sm3_hmac", None, [_uchar_p, _int, _uchar_p, _int, _uchar_p]),
    "ztutil_sm3_with_sm2": ("ztutil_sm3_with_sm2", _int,
                            [_uchar_p, _int, _uchar_p, _int, ctypes.c_char_p, _int, _uchar_p]),
    "SM2Verify": ("SM2Verify", _int, [_uchar_p, _uint, _uchar_p, _uint, _uchar_p, _uint]),
    "RsaVerify": ("RsaVerify", _int, [_uchar_p, _uint, _uchar_p, _uint, _uchar_p, _uint]),
    "ZTGetPubKeyByCert": ("_ZN13ZTVerifyTools17ZTGetPubKeyByCertEPhjS0_Pj", _int,
                          [_uchar_p, _uint, _uchar_p, _uint_p]),
    "ZTSM2ConvertSignDataTo64": ("_ZN13ZTVerifyTools24ZTSM2ConvertSignDataTo64EPhjS0_j", _int,
                                 [_uchar_p, _uint, _uchar_p, _uint]),
    "ZTSM2ConvertSignDataTo128": ("_ZN13ZTVerifyTools25ZTSM2ConvertSignDataTo128EPhjS0_j", _int,
                                  [_uchar_p, _uint, _uchar_p, _uint]),
    "ZTSM2SignData64ToASNData": ("_ZN13ZTVerifyTools24ZTSM2SignData64ToASNDataEPhjPj",
                                 ctypes.c_void_p, [_uchar_p, _uint, _uint_p]),
    "EnCodeBase64Ex": ("EnCodeBase64Ex", ctypes.c_void_p, [_uchar_p, _int, ctypes.c_char_p]),
    "DeCodeBase64Ex": ("DeCodeBase64Ex", ctypes.c_void_p,
                       [_uchar_p, _int, ctypes.c_char_p, ctypes.POINTER(_int)]),
    "code_gbk_to_unicode": ("code_gbk_to_unicode", _int, [ctypes.c_char_p, _uint_p, _int]),
    "code_gbk_to_utf8": ("code_gbk_to_utf8", _int, [ctypes.c_char_p, ctypes.c_char_p, _int]),
    "code_utf8_to_unicode": ("code_utf8_to_unicode", _int, [ctypes.c_char_p, _uint_p, _int]),
    "code_utf8_to_gbk": ("code_utf8_to_gbk", _int, [ctypes.c_char_p, ctypes.c_char_p]),
}


class Library:
    """The loaded library: its functions by the names above, its two Base64
    alphabets, and the C runtime calls that release what it returns."""

    def __init__(self, path):
        try:
            self._dll = ctypes.CDLL(path)
        except OSError as error:
            raise OSError(
                f"cannot load {path}: {error}; install libztutil1, or set "
                f"{LIBRARY_ENVIRONMENT} to the library's path") from error
        for name, (symbol, result, arguments) in _FUNCTIONS.items():
            function = getattr(self._dll, symbol)
            function.restype = result
            function.argtypes = arguments
            setattr(self, name, function)
        self.normal_table = ctypes.c_char_p.in_dll(self._dll, "strNormalTable").value
        self.sm2_table = ctypes.c_char_p.in_dll(self._dll, "strSM2Table").value

        process = ctypes.CDLL(None)
        self.free = process.free  # for what the library allocated with malloc/calloc
        self.free.argtypes = [ctypes.c_void_p]
        self._fflush = process.fflush
        self._fflush.argtypes = [ctypes.c_void_p]
        # operator delete[], for the arrays the library allocated with new[]
        self.delete_array = ctypes.CDLL("libstdc++.so.6")._ZdaPv
        self.delete_array.argtypes = [ctypes.c_void_p]

    def flush_output(self):
        """Writes out what the library left in the C standard output buffer
        (its messages do not always end a line)."""
        self._fflush(None)


@functools.lru_cache(maxsize=None)
def library():
    """The library, loaded on first use."""
    return Library(os.environ.get(LIBRARY_ENVIRONMENT) or SONAME)


def as_bytes(value, name):
    """Bytes of a bytes-like argument; TypeError for anything else (text
    included), ValueError when the library's int lengths cannot hold it."""
    if isinstance(value, str) or not isinstance(value, (bytes, bytearray, memoryview)):
        raise TypeError(f"{name} must be bytes-like, not {type(value).__name__}")
    data = bytes(value)
    if len(data) > INT_MAX:
        raise ValueError(f"{name} is longer than the library's limit of {INT_MAX} bytes")
    return data


def take_result(pointer, release, function_name, size=-1):
    """The bytes a library function returned at pointer (size bytes, or up
    to the NUL), after which the buffer is released with release."""
    if not pointer:
        raise MemoryError(f"{function_name} returned nothing")
    try:
        return ctypes.string_at(pointer, size)
    finally:
        release(pointer)
