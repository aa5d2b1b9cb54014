"""Base64 with the standard or the SM2 alphabet, and GBK <-> UTF-8 through
the library's own code-page tables.

The SM2 alphabet is the standard one with "=" moved to the front: "=" is
the digit 0 and "/" pads.

The GBK conversions refuse, with UnicodeError, what the library would turn
into zeros or drop: characters without a GBK code, GBK bytes without a
character, a lead byte at the end, a 0x80 (euro sign) byte followed by more
text (the library skips the byte after it), NUL characters, and two-byte
UTF-8 sequences whose second byte is 0xA0 to 0xBF (the library's UTF-8
reader refuses those, so characters such as U+00A9 or U+00E9 cannot be
converted)."""
import ctypes

from ._library import INT_MAX, as_bytes, library, take_result

ALPHABETS = ("standard", "sm2")


def _alphabet(name):
    if name not in ALPHABETS:
        raise ValueError(f"alphabet must be one of {ALPHABETS}, not {name!r}")
    lib = library()
    return lib.normal_table if name == "standard" else lib.sm2_table


def b64encode(data, alphabet="standard"):
    """Base64 text of data, one line (EnCodeBase64Ex)."""
    data = as_bytes(data, "data")
    table = _alphabet(alphabet)
    lib = library()
    text = lib.EnCodeBase64Ex(data, len(data), table)
    return take_result(text, lib.free, "EnCodeBase64Ex").decode("ascii")


def _check_base64(text, table):
    digits, pad = table[:64], table[64:65]
    body = text.rstrip(pad)
    if len(text) % 4 != 0 or len(text) - len(body) > 2:
        raise ValueError("Base64 text must come in groups of 4 with at most 2 pad characters")
    for offset, character in enumerate(body):
        if character not in digits:
            raise ValueError(f"{bytes([character])!r} at offset {offset} is not in the alphabet")


def b64decode(text, alphabet="standard"):
    """The bytes of Base64 text (str or ASCII bytes), strictly: every
    character in the alphabet, padding only at the end (then DeCodeBase64Ex,
    which by itself would read unknown characters as padding)."""
    if isinstance(text, str):
        text = text.encode("ascii")
    text = as_bytes(text, "text")
    table = _alphabet(alphabet)
    _check_base64(text, table)
    lib = library()
    size = ctypes.c_int(0)
    decoded = lib.DeCodeBase64Ex(text + b"\0", len(text), table, ctypes.byref(size))
    return take_result(decoded, lib.delete_array, "DeCodeBase64Ex", size.value)


def _gbk_characters(data):
    """(offset, length) of each GBK character as the library reads them."""
    offset = 0
    while offset < len(data):
        length = 1 if data[offset] <= 0x80 else 2
        yield offset, min(length, len(data) - offset)
        offset += length


def gbk_to_utf8(data):
    """The text of GBK bytes (code_gbk_to_utf8)."""
    data = as_bytes(data, "data")
    if b"\0" in data:
        raise ValueError("the library reads NUL-terminated text: NUL bytes cannot be converted")
    lib = library()
    units = (ctypes.c_uint * (len(data) + 1))()
    lib.code_gbk_to_unicode(data + b"\0", units, len(data))
    for index, (offset, length) in enumerate(_gbk_characters(data)):
        if data[offset] == 0x80 and offset + 1 < len(data):
            raise UnicodeDecodeError("gbk", data, offset, offset + 2,
                                     "the library skips the byte after 0x80")
        if units[index] == 0:
            reason = "incomplete character" if length == 1 and data[offset] > 0x80 else \
                "no character for this code"
            raise UnicodeDecodeError("gbk", data, offset, offset + length, reason)
    # Three UTF-8 bytes at most for every two GBK bytes (or a lone 0x80),
    # and the function may write 3 bytes past the size it is given.
    size = 3 * ((len(data) + 1) // 2) + 1
    out = ctypes.create_string_buffer(size + 3)
    written = lib.code_gbk_to_utf8(data, out, size)
    return out.raw[:written].decode("utf-8")


def utf8_to_gbk(text):
    """The GBK bytes of text, a str (code_utf8_to_gbk)."""
    if not isinstance(text, str):
        raise TypeError(f"text must be str, not {type(text).__name__}")
    if "\0" in text:
        raise ValueError("the library reads NUL-terminated text: NUL cannot be converted")
    data = text.encode("utf-8")
    if len(data) > INT_MAX // 4:
        raise ValueError("the text is too long for the library's counts")
    lib = library()
    units = (ctypes.c_uint * (len(data) + 2))()
    count = lib.code_utf8_to_unicode(data, units, len(data) + 1)
    # The GBK bytes of the character whose unit is taken from the table: 0
    # from the UTF-8 reader, 00 00 when the table has no code.
    out = ctypes.create_string_buffer(4 * len(data) + 1)
    written = lib.code_utf8_to_gbk(data, out)
    position = 0
    for index in range(count):
        unit = units[index]
        width = 1 if unit < 0x80 or unit == 0x20AC else 2
        if unit == 0 or (width == 2 and out.raw[position:position + 2] == b"\0\0"):
            reason = "not readable by the library's UTF-8 decoder" if unit == 0 else \
                "no GBK code"
            raise UnicodeEncodeError("gbk", text, index, index + 1, reason)
        position += width
    return out.raw[:written]
