#!/usr/bin/env python3
"""Generates the built-in code-page and upper-case tables of code_convert.

    python3 src/text/tables/gen_codepages.py            # rewrite the files
    python3 src/text/tables/gen_codepages.py --check    # compare only

Sources, all independent of any existing table set:
  * Python's standard codecs for the single-byte OEM pages (they are built
    from Microsoft's published PC code-page files; cp720 from Windows' own
    table);
  * glibc iconv (through ctypes) for CP771, which Python lacks, and for the
    double-byte pages, where glibc follows Microsoft's published CP932 /
    CP936 / CP949 / CP950 files more closely than Python does (see
    DBCS_NOTES);
  * Python's Unicode database (str.upper / str.title) for the simple
    upper-case mapping.
The codec pairs of Python and glibc are cross-checked wherever both have a
page, so a disagreement stops the generator instead of slipping in silently.

Output (next to this script unless --out is given):
  codepage_tables_generated.h    declarations and pair counts
  sbcs_tables_generated.cpp      uc437 ... uc869, cp_code, cp_table
  cp932_generated.cpp ... cp950_generated.cpp   uni2oem / oem2uni pairs
  wtoupper_tables_generated.cpp  the two compressed upper-case tables
"""

import argparse
import bisect
import codecs
import ctypes
import ctypes.util
import os
import sys
import unicodedata

SBCS_PAGES = [437, 720, 737, 771, 775, 850, 852, 855, 857,
              860, 861, 862, 863, 864, 865, 866, 869]
DBCS_PAGES = [932, 936, 949, 950]

# What each double-byte table keeps. Every page leaves out the private-use
# area U+E000..U+F8FF: the user-defined rows that Windows maps there are not
# part of Microsoft's published mapping files.
DBCS_NOTES = {
    932: "glibc CP932. Microsoft maps the NEC-selected IBM extension rows "
         "(ED/EE), part of row FA and nine NEC row-13 symbols to characters "
         "that also have a preferred code; only the preferred code of each "
         "character is kept (pairs that survive a decode/encode round trip), "
         "so both directions are one-to-one. The half-width katakana "
         "0xA1..0xDF are single-byte codes and are kept as keys 0x00A1.. "
         "Python's cp932 would add 0x80<->U+0080, a Windows best-fit "
         "extension absent from the published file.",
    936: "glibc CP936: the published file, including the single byte "
         "0x80<->U+20AC. Python's gbk lacks the euro byte; the double-byte "
         "codes of both agree. 0xFF has no mapping in either.",
    949: "glibc CP949; Python's cp949 agrees code for code.",
    950: "glibc CP950, every code of the published file. Ten characters "
         "have two codes (box drawings at A27E..A2A7 and F9E9..F9FD, and "
         "U+5341 / U+5345 at A2CC/A451 and A2CE/A4CA); both pairs are kept "
         "so every code decodes, and the two equal keys of uni2oem950 are "
         "ordered so that the bounded search returns the code iconv "
         "prefers. Python's cp950 adds the ETEN rows C6A1..C7FC, which "
         "Microsoft leaves to private use.",
}

# Code points 0x1000..0x1D7C keep their own value: the second upper-case
# table begins at U+1D7D, as it always has, so the later Unicode additions
# there (Georgian Mtavruli, Cherokee small letters, Cyrillic Extended-C,
# U+1D79) are not applied.
UPPER_HIGH_FIRST = 0x1D7D

# Block commands of the compressed upper-case tables: the value a block
# gives to each code point c of [start, start + n).
DELTA_COMMANDS = {2: -16, 3: -32, 4: -48, 5: -26, 6: +8, 7: -80, 8: -0x1C60}
PAIR_COMMAND = 1      # c - ((c - start) & 1)
LIST_COMMAND = 0      # explicit list of n values
MAX_BLOCK = 0xFF


class Iconv:
    """Minimal ctypes binding of glibc's iconv(3)."""

    def __init__(self):
        libc = ctypes.CDLL(ctypes.util.find_library("c"), use_errno=True)
        self._open = libc.iconv_open
        self._open.restype = ctypes.c_void_p
        self._open.argtypes = [ctypes.c_char_p, ctypes.c_char_p]
        self._iconv = libc.iconv
        self._iconv.restype = ctypes.c_size_t
        self._iconv.argtypes = [ctypes.c_void_p,
                                ctypes.POINTER(ctypes.c_char_p), ctypes.POINTER(ctypes.c_size_t),
                                ctypes.POINTER(ctypes.c_char_p), ctypes.POINTER(ctypes.c_size_t)]
        self._close = libc.iconv_close
        self._close.argtypes = [ctypes.c_void_p]
        self._handles = {}

    def _handle(self, to_code, from_code):
        key = (to_code, from_code)
        if key not in self._handles:
            handle = self._open(to_code.encode(), from_code.encode())
            if handle is None or handle == ctypes.c_void_p(-1).value:
                raise LookupError(f"iconv cannot convert {from_code} to {to_code}")
            self._handles[key] = handle
        return self._handles[key]

    def convert(self, from_code, to_code, data):
        """Whole-input conversion; None if any byte is rejected."""
        handle = self._handle(to_code, from_code)
        self._iconv(handle, None, None, None, None)  # reset shift state
        in_buf = ctypes.create_string_buffer(data, len(data))
        out_buf = ctypes.create_string_buffer(64)
        in_ptr = ctypes.c_char_p(ctypes.addressof(in_buf))
        in_left = ctypes.c_size_t(len(data))
        out_ptr = ctypes.c_char_p(ctypes.addressof(out_buf))
        out_left = ctypes.c_size_t(64)
        result = self._iconv(handle, ctypes.byref(in_ptr), ctypes.byref(in_left),
                             ctypes.byref(out_ptr), ctypes.byref(out_left))
        if result == ctypes.c_size_t(-1).value or in_left.value:
            return None
        return out_buf.raw[:64 - out_left.value]

    def decode(self, page, data):
        out = self.convert(f"CP{page}", "UTF-32LE", data)
        return None if out is None else out.decode("utf-32-le")

    def encode(self, page, text):
        return self.convert("UTF-32LE", f"CP{page}", text.encode("utf-32-le"))


def python_decode(page, data):
    try:
        return data.decode(f"cp{page}")
    except UnicodeDecodeError:
        return None


def has_python_codec(page):
    try:
        codecs.lookup(f"cp{page}")
        return True
    except LookupError:
        return False


def code_bytes(code):
    return bytes([code]) if code < 0x100 else bytes([code >> 8, code & 0xFF])


def is_private_use(u):
    return 0xE000 <= u <= 0xF8FF


# ---------------------------------------------------------------- single-byte

def sbcs_table(iconv, page):
    """128 Unicode values for 0x80..0xFF, 0 where the page has no character."""
    table = []
    use_python = has_python_codec(page)
    for byte in range(0x80, 0x100):
        data = bytes([byte])
        text = python_decode(page, data) if use_python else iconv.decode(page, data)
        if use_python:
            try:
                cross = iconv.decode(page, data)
            except LookupError:
                cross = text  # glibc lacks the page (cp720)
            if cross is not None and text is not None and cross != text:
                sys.exit(f"cp{page} byte {byte:#x}: Python {text!r} vs glibc {cross!r}")
        table.append(ord(text) if text and len(text) == 1 else 0)
    return table


# ---------------------------------------------------------------- double-byte

def decoded_codes(iconv, page):
    """{code: unicode} of every code 0x80..0xFFFF that glibc decodes to one
    BMP character outside private use."""
    mapping = {}
    for code in range(0x80, 0x10000):
        if 0x100 <= code and (code >> 8) < 0x81:
            continue  # no lead byte below 0x81 on any of these pages
        text = iconv.decode(page, code_bytes(code))
        if text is None or len(text) != 1:
            continue
        u = ord(text)
        # A byte passed through as the C1 control of the same value (0x80 on
        # CP950) is not a character of the page.
        if u <= 0xFFFF and not is_private_use(u) and u != code:
            mapping[code] = u
    return mapping


def cross_check_python(page, mapping):
    """Python and glibc must agree on every double-byte code both map."""
    for code, u in mapping.items():
        if code < 0x100:
            continue
        text = python_decode(page, code_bytes(code))
        if text is not None and len(text) == 1 and not is_private_use(ord(text)) and ord(text) != u:
            sys.exit(f"cp{page} code {code:#x}: Python U+{ord(text):04X} vs glibc U+{u:04X}")


def encoded_code(iconv, page, u):
    data = iconv.encode(page, chr(u))
    if data is None or len(data) > 2:
        return None
    return data[0] if len(data) == 1 else (data[0] << 8) | data[1]


def bounded_search(pairs, key):
    """The lookup the library performs: at most 16 halving rounds."""
    lo, hi = 0, len(pairs)
    for _ in range(16):
        mid = lo + (hi - lo) // 2
        if pairs[mid][0] == key:
            return pairs[mid][1]
        if pairs[mid][0] < key:
            lo = mid
        else:
            hi = mid
    return 0


def dbcs_pairs(iconv, page):
    """Returns (uni2oem, oem2uni) as lists of (key, value) sorted by key."""
    mapping = decoded_codes(iconv, page)
    cross_check_python(page, mapping)
    if page == 932:
        mapping = {code: u for code, u in mapping.items() if encoded_code(iconv, page, u) == code}
    oem2uni = sorted(mapping.items())
    uni2oem = sorted((u, code) for code, u in mapping.items())
    arrange_equal_keys(iconv, page, uni2oem)
    for key, value in oem2uni:
        assert bounded_search(oem2uni, key) == value, (page, hex(key))
    for key, value in uni2oem:
        assert bounded_search(uni2oem, key) == encoded_code(iconv, page, key), (page, hex(key))
    return uni2oem, oem2uni


def arrange_equal_keys(iconv, page, pairs):
    """Orders runs of equal keys so that the search lands on iconv's code."""
    index = 0
    while index < len(pairs):
        end = index
        while end + 1 < len(pairs) and pairs[end + 1][0] == pairs[index][0]:
            end += 1
        if end > index:
            key = pairs[index][0]
            wanted = encoded_code(iconv, page, key)
            run = pairs[index:end + 1]
            for shift in range(len(run)):
                pairs[index:end + 1] = run[shift:] + run[:shift]
                if bounded_search(pairs, key) == wanted:
                    break
            else:
                sys.exit(f"cp{page}: no order of U+{key:04X} makes the search return {wanted:#x}")
        index = end + 1


# ---------------------------------------------------------------- upper case

def simple_upper(c):
    """Unicode simple upper-case mapping (UnicodeData field 12).

    str.upper() gives the full mapping; where that is several characters the
    simple mapping is the title-case letter when that is a single Lt
    character (Greek with ypogegrammeni), and none otherwise (e.g. U+00DF)."""
    ch = chr(c)
    upper = ch.upper()
    if len(upper) == 1:
        return ord(upper)
    title = ch.title()
    if len(title) == 1 and unicodedata.category(title) == "Lt":
        return ord(title)
    return c


def upper_mapping(first, last):
    mapping = {}
    for c in range(first, last + 1):
        if 0xD800 <= c <= 0xDFFF:
            continue
        u = simple_upper(c)
        if u != c:
            if u > 0xFFFF:
                sys.exit(f"U+{c:04X} upper-cases outside the BMP")
            mapping[c] = u
    return mapping


def apply_command(command, start, c, values):
    if command == LIST_COMMAND:
        return values[c - start]
    if command == PAIR_COMMAND:
        return c - ((c - start) & 1)
    return (c + DELTA_COMMANDS[command]) & 0xFFFF


def run_lengths(mapping, first, last):
    """For each position, how far each constant-delta and each pair pattern
    holds from there (capped at MAX_BLOCK)."""
    size = last - first + 2
    delta_run = {cmd: [0] * size for cmd in DELTA_COMMANDS}
    pair_run = [0] * size
    for pos in range(size - 2, -1, -1):
        c = first + pos
        target = mapping.get(c, c)
        for cmd, delta in DELTA_COMMANDS.items():
            if target == c + delta:
                delta_run[cmd][pos] = min(delta_run[cmd][pos + 1] + 1, MAX_BLOCK)
    # A pair block starting at s: even offsets unchanged, odd offsets c - 1.
    for pos in range(size - 1):
        c = first + pos
        length = 0
        while length < MAX_BLOCK and pos + length < size - 1:
            x = c + length
            expect = x if length % 2 == 0 else x - 1
            if mapping.get(x, x) != expect:
                break
            length += 1
        pair_run[pos] = length
    return delta_run, pair_run


def compress(mapping, first, last):
    """Cheapest block sequence (in 16-bit words) covering every mapped code
    point of [first, last]; unmapped code points may be left uncovered."""
    size = last - first + 1
    delta_run, pair_run = run_lengths(mapping, first, last)
    infinity = float("inf")
    cost = [infinity] * (size + 1)
    choice = [None] * (size + 1)
    cost[size] = 0
    mapped_positions = [c - first for c in sorted(mapping) if first <= c <= last]
    for pos in range(size - 1, -1, -1):
        c = first + pos
        best, best_choice = infinity, None
        # Pair blocks begin at the (unchanged) upper-case letter; the other
        # blocks only ever begin and end at a code point that changes.
        for length in range(2, pair_run[pos] + 1):
            if 2 + cost[pos + length] < best:
                best, best_choice = 2 + cost[pos + length], (PAIR_COMMAND, length)
        if c not in mapping:
            if cost[pos + 1] <= best:
                best, best_choice = cost[pos + 1], ("skip", 1)
        else:
            for cmd in DELTA_COMMANDS:
                for length in range(1, delta_run[cmd][pos] + 1):
                    if 2 + cost[pos + length] < best:
                        best, best_choice = 2 + cost[pos + length], (cmd, length)
            first_mapped = bisect.bisect_left(mapped_positions, pos)
            for end in mapped_positions[first_mapped:]:
                length = end - pos + 1
                if length > MAX_BLOCK:
                    break
                if 2 + length + cost[end + 1] < best:
                    best, best_choice = 2 + length + cost[end + 1], (LIST_COMMAND, length)
        cost[pos], choice[pos] = best, best_choice
    words = []
    pos = 0
    while pos < size:
        kind, length = choice[pos]
        if kind != "skip":
            start = first + pos
            words += [start, (kind << 8) | length]
            if kind == LIST_COMMAND:
                words += [mapping.get(c, c) for c in range(start, start + length)]
        pos += length
    return words + [0]


def table_upper(words, c):
    """The walk ff_wtoupper performs over one table."""
    index = 0
    while True:
        start = words[index]
        if start == 0 or c < start:
            return c
        command, count = words[index + 1] >> 8, words[index + 1] & 0xFF
        if c < start + count:
            return apply_command(command, start, c, words[index + 2:index + 2 + count])
        index += 2 + (count if command == LIST_COMMAND else 0)


def upper_tables():
    low_mapping = upper_mapping(0, 0x0FFF)
    high_mapping = upper_mapping(UPPER_HIGH_FIRST, 0xFFFF)
    low = compress(low_mapping, min(low_mapping), 0x0FFF)
    high = compress(high_mapping, UPPER_HIGH_FIRST, 0xFFFF)
    for c in range(0x10000):
        mapping, words = (low_mapping, low) if c < 0x1000 else (high_mapping, high)
        assert table_upper(words, c) == mapping.get(c, c), hex(c)
    return low, high, len(low_mapping) + len(high_mapping)


# ---------------------------------------------------------------- output

BANNER = ("// Generated by src/text/tables/gen_codepages.py from {sources}.\n"
          "// Do not edit; change the generator and run it again.\n")


def hex_rows(values, per_row, fmt="0x{:04X}"):
    items = [fmt.format(*v) if isinstance(v, tuple) else fmt.format(v) for v in values]
    return "\n".join("    " + ", ".join(items[i:i + per_row]) + ","
                     for i in range(0, len(items), per_row))


def render_header(pair_counts, upper_sizes):
    lines = [BANNER.format(sources="Python codecs, glibc iconv and Unicode data"),
             "#ifndef ZTUTIL_TEXT_TABLES_CODEPAGE_TABLES_GENERATED_H",
             "#define ZTUTIL_TEXT_TABLES_CODEPAGE_TABLES_GENERATED_H",
             "",
             "#include <cstdint>",
             "",
             "namespace zt_codepage {",
             "",
             "// Unicode values of the bytes 0x80..0xFF (0: no character).",
             ]
    lines += [f"extern const std::uint16_t uc{page}[128];" for page in SBCS_PAGES]
    count = len(SBCS_PAGES) + 1
    lines += ["",
              "// The single-byte pages in the order of cp_table; both lists end with 0 / null.",
              f"extern const std::uint16_t cp_code[{count}];",
              f"extern const std::uint16_t* const cp_table[{count}];",
              "",
              "// (key, value) pairs sorted by key: uni2oem maps Unicode to the page's",
              "// code (single-byte codes as 0x00XX), oem2uni the reverse."]
    for page in DBCS_PAGES:
        lines += [f"constexpr unsigned kPairs{page} = {pair_counts[page]};",
                  f"extern const std::uint16_t uni2oem{page}[kPairs{page}][2];",
                  f"extern const std::uint16_t oem2uni{page}[kPairs{page}][2];"]
    lines += ["",
              "// Simple upper-case mapping in blocks: start, (command << 8 | count),",
              "// [count values for command 0]; a start of 0 ends the table.",
              "// wtoupper_low serves code points below 0x1000, wtoupper_high the rest.",
              f"extern const std::uint16_t wtoupper_low[{upper_sizes[0]}];",
              f"extern const std::uint16_t wtoupper_high[{upper_sizes[1]}];",
              "",
              "}  // namespace zt_codepage",
              "",
              "#endif",
              ""]
    return "\n".join(lines)


def render_sbcs(tables):
    out = [BANNER.format(sources="Python's codecs (cp771: glibc iconv)"),
           '#include "text/tables/codepage_tables_generated.h"', "",
           "namespace zt_codepage {", ""]
    for page in SBCS_PAGES:
        out += [f"const std::uint16_t uc{page}[128] = {{", hex_rows(tables[page], 8), "};", ""]
    out += ["const std::uint16_t cp_code[] = {",
            "    " + ", ".join(str(p) for p in SBCS_PAGES) + ", 0,", "};", "",
            "const std::uint16_t* const cp_table[] = {",
            "    " + ", ".join(f"uc{p}" for p in SBCS_PAGES) + ", nullptr,", "};", "",
            "}  // namespace zt_codepage", ""]
    return "\n".join(out)


def render_dbcs(page, uni2oem, oem2uni):
    note = DBCS_NOTES[page]
    wrapped, line = [], "//"
    for word in note.split():
        if len(line) + len(word) + 1 > 78:
            wrapped.append(line)
            line = "//"
        line += " " + word
    wrapped.append(line)
    out = [BANNER.format(sources=f"glibc iconv CP{page}"), *wrapped, "",
           '#include "text/tables/codepage_tables_generated.h"', "",
           "namespace zt_codepage {", "",
           f"const std::uint16_t uni2oem{page}[kPairs{page}][2] = {{",
           hex_rows(uni2oem, 6, "{{0x{:04X}, 0x{:04X}}}"), "};", "",
           f"const std::uint16_t oem2uni{page}[kPairs{page}][2] = {{",
           hex_rows(oem2uni, 6, "{{0x{:04X}, 0x{:04X}}}"), "};", "",
           "}  // namespace zt_codepage", ""]
    return "\n".join(out)


def render_upper(low, high):
    version = unicodedata.unidata_version
    out = [BANNER.format(sources=f"Unicode {version} simple upper-case mappings"),
           "// Commands: 0 list of values, 1 alternating upper/lower pairs,",
           "// 2: -16, 3: -32, 4: -48, 5: -26, 6: +8, 7: -80, 8: -0x1C60.",
           f"// 0x1000..0x{UPPER_HIGH_FIRST - 1:04X} are not mapped (the second table starts",
           f"// at U+{UPPER_HIGH_FIRST:04X}).", "",
           '#include "text/tables/codepage_tables_generated.h"', "",
           "namespace zt_codepage {", ""]
    for name, words in (("wtoupper_low", low), ("wtoupper_high", high)):
        out += [f"const std::uint16_t {name}[{len(words)}] = {{", hex_rows(words, 8), "};", ""]
    out += ["}  // namespace zt_codepage", ""]
    return "\n".join(out)


def generate():
    iconv = Iconv()
    files = {}
    sbcs = {page: sbcs_table(iconv, page) for page in SBCS_PAGES}
    files["sbcs_tables_generated.cpp"] = render_sbcs(sbcs)
    counts = {}
    for page in DBCS_PAGES:
        uni2oem, oem2uni = dbcs_pairs(iconv, page)
        assert len(uni2oem) == len(oem2uni)
        counts[page] = len(oem2uni)
        files[f"cp{page}_generated.cpp"] = render_dbcs(page, uni2oem, oem2uni)
    low, high, mapped = upper_tables()
    files["wtoupper_tables_generated.cpp"] = render_upper(low, high)
    files["codepage_tables_generated.h"] = render_header(counts, (len(low), len(high)))
    summary = ", ".join(f"{p}: {counts[p]}" for p in DBCS_PAGES)
    print(f"pairs {summary}; upper case: {mapped} mappings in "
          f"{len(low)} + {len(high)} words (Unicode {unicodedata.unidata_version})")
    return files


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--out", default=os.path.dirname(os.path.abspath(__file__)))
    parser.add_argument("--check", action="store_true",
                        help="compare with the files in --out instead of writing")
    args = parser.parse_args()
    files = generate()
    stale = []
    for name, text in files.items():
        path = os.path.join(args.out, name)
        if args.check:
            try:
                with open(path, encoding="ascii") as f:
                    if f.read() != text:
                        stale.append(name)
            except FileNotFoundError:
                stale.append(name)
        else:
            with open(path, "w", encoding="ascii", newline="\n") as f:
                f.write(text)
    if stale:
        sys.exit("out of date: " + ", ".join(stale))


if __name__ == "__main__":
    main()
