#!/usr/bin/env python3
"""Regenerates the seeds of this folder's fuzz targets, one folder per target
(fuzz/seeds/<target>): certificates (a few CA certificates of Debian's
ca-certificates converted to DER, the library's test and example
certificates), handmade DER for the engine, Base64, text and seal-field
inputs laid out the way each target reads its bytes, and pairs of 256-bit
numbers around the SM2 prime p and order n with a wNAF width byte. Seeds of targets not
listed here are kept as they are."""
import os
import re
import shutil
import struct
import subprocess

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
SEEDS = os.path.join(HERE, "seeds")
SM2_P = 2**256 - 2**224 - 2**96 + 2**64 - 1
SM2_N = 0xFFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFF7203DF6B21C6052B53BBF40939D54123
CA_CERTS = ["ACCVRAIZ1", "Amazon_Root_CA_3", "Amazon_Root_CA_4", "Certainly_Root_E1",
            "GlobalSign_ECC_Root_CA_-_R4", "ISRG_Root_X1"]
OWN_CERTS = ["tests/data/asn_sm2_cert.der", "tests/data/cert/rsa1024.der",
             "tests/data/cert/sm2_bmp_name.der", "tests/data/cert/sm2_two_cn_gentime.der",
             "tests/data/cert/sm2_v1.der", "examples/sm2-expired-cert.der"]


def read(path):
    with open(os.path.join(ROOT, path), "rb") as f:
        return f.read()


def length(n):
    if n < 0x80:
        return bytes([n])
    digits = n.to_bytes((n.bit_length() + 7) // 8, "big")
    return bytes([0x80 | len(digits)]) + digits


def tlv(tag, content):
    return bytes([tag]) + length(len(content)) + content


def field(data):
    """One string as FuzzedDataProvider.ConsumeRandomLengthString reads it."""
    return data.replace(b"\\", b"\\\\") + b"\\x"


def certificates():
    certs = {}
    for name in CA_CERTS:
        der = subprocess.run(["openssl", "x509", "-in", f"/etc/ssl/certs/{name}.pem", "-outform", "DER"],
                             check=True, capture_output=True).stdout
        certs["ca_" + re.sub(r"[^a-z0-9]", "_", name.lower())] = der
    for path in OWN_CERTS:
        certs[os.path.splitext(os.path.basename(path))[0]] = read(path)
    return certs


def asn_seeds(certs):
    seeds = {"cert_" + name: der for name, der in certs.items() if name.startswith("ca_")}
    seeds["length_forms"] = tlv(0x30, b"\x04\x81\x03abc" + b"\x04\x82\x00\x01z" +
                                b"\x04\x83\x00\x00\x01y" + b"\x04\x84\x00\x00\x00\x01x" + b"\x30\x80")
    seeds["bad_child"] = bytes.fromhex("300602010502050000")
    deep = b""
    for level in range(160):
        deep = tlv(0x30 if level % 2 else 0xA0, deep)
    seeds["deep"] = deep
    seeds["wide"] = tlv(0x31, b"".join(tlv(2, bytes([i & 0x7F])) for i in range(300)))
    values = tlv(0x30, tlv(0x17, b"491231235959Z") + tlv(0x17, b"080101120000+0800") +
                 tlv(0x18, b"20080101120000.5Z") + tlv(0x18, b"20080101120000") +
                 tlv(6, bytes.fromhex("2a864886f70d010901")) + tlv(3, bytes.fromhex("00abcd")) +
                 tlv(30, "Seal 印章".encode("utf-16-be")) + tlv(2, b"\x01\x00"))
    seeds["values"] = values
    # The bytes after the element drive edits: block, tag, operation, data.
    seeds["values_edited"] = values + bytes([0, 2, 0]) + b"\x80\x01" + bytes([1, 0x31, 3]) + \
        field(tlv(6, b"\x2a\x03")) + bytes([2, 6, 2]) + field(b"1.2.156.10197.1.301")
    seeds["oid_text"] = b"1.2.840.113549.1.1.11"
    # Arcs at the edges of 1 to 5 base-128 groups.
    seeds["oid_text_arcs"] = b"2.39.127.128.16383.16384.2097152.268435455.268435456.4294967295"
    seeds["utc_text"] = b"491231235959Z"
    seeds["generalized_text"] = b"20491231235959Z"
    return seeds


def certificate_seeds(certs):
    seeds = dict(certs)
    seeds["pem_text"] = read("tests/data/cert/sm2_v3.pem")
    return seeds


def base64_seeds():
    # First byte: 0 standard alphabet, 1 SM2 alphabet, 2 an alphabet of its own.
    return {"man": b"\x00Man", "zero_sm2": b"\x01\x00", "own_alphabet": b"\x02" + bytes(range(1, 40)),
            "text_padded": b"\x00TWE=", "text_sm2": b"\x01==//", "text_lenient": b"\x00TW!u",
            "text_short": b"\x00TWFuTQ"}


def text_seeds():
    # Two bytes of limits (unit limit, output size), then the text.
    seeds = {"chinese": "中文 text".encode(), "emoji": "😀 and 中".encode(),
             "gbk": bytes.fromhex("d6d0cec4804142"), "narrow_two_byte": bytes.fromhex("c280c2a9"),
             "long_forms": bytes.fromhex("f8888080 80fc8480808080".replace(" ", "")),
             # Stray continuation bytes then a broken lead: the longest GBK output.
             "worst_case_gbk": b"\x80" * 12 + b"\xc2",
             "wide": "A中😀".encode("utf-32-le"), "surrogate": bytes.fromhex("eda080")}
    return {name: bytes([63, 5]) + text for name, text in seeds.items()}


def seal_seeds():
    seal = read("examples/seal.der")
    cert = read("examples/sm2-cert.der")
    signature = read("examples/document.sm2.sig")

    def fields(seal_bytes, method, sig, version=b"\x02"):
        return b"".join(field(f) for f in (seal_bytes, b"property", bytes(range(32)), cert,
                                           b"20240101120000Z", method, sig, version))
    return {"gm_raw_signature": fields(seal, b"", bytes(range(0x80, 0xC0))),
            "zw_der_signature": fields(seal, b"1.2.156.10197.1.501", signature),
            "short_signature": fields(tlv(0x30, b""), b"1.2.3", b"\x81" * 40),
            "method_text": fields(seal, b"not.an.oid", b"\x30" * 64, b"")}


def verify_seeds(certs):
    # First byte: 0 signature forms, 1 certificate, 2 time text, 3 algorithm choices.
    return {"signature_der": b"\x00" + read("examples/document.sm2.sig"),
            "certificate": b"\x01" + certs["asn_sm2_cert"],
            "time_text": b"\x02" + b"20491231235959",
            "algorithm_out_of_range": b"\x03" + struct.pack("<ii", 2, 5) + b"abc",
            "algorithm_negative": b"\x03" + struct.pack("<ii", -1, 0) + b"abc",
            "algorithm_rsa": b"\x03" + struct.pack("<ii", 1, 1) + read("tests/data/cert/rsa1024.der")}


def sm2_arith_seeds():
    # Two 256-bit numbers, then the wNAF width byte.
    def number(value):
        return value.to_bytes(32, "big")
    return {name: number(a) + number(b) + bytes([width])
            for name, a, b, width in [("p", SM2_P - 1, SM2_P + 1, 3), ("n", SM2_N - 1, SM2_N - 2, 6),
                                      ("top", 2**256 - 1, 2**256 - 1, 0), ("small", 1, 0, 4)]}


def write(target, seeds):
    folder = os.path.join(SEEDS, target)
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    for name, data in seeds.items():
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)


def main():
    certs = certificates()
    write("asn", asn_seeds(certs))
    write("certificate", certificate_seeds(certs))
    write("base64", base64_seeds())
    write("text", text_seeds())
    write("seal", seal_seeds())
    write("verify", verify_seeds(certs))
    write("sm2_arith", sm2_arith_seeds())


if __name__ == "__main__":
    main()
