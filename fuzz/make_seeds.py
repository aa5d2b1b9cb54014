#!/usr/bin/env python3
"""Regenerates fuzz/seeds: a few CA certificates of Debian's ca-certificates
converted to DER, the SM2 test certificate, and handmade DER covering every
length form, the indefinite form, a bad child, deep and wide nesting, and
time, OID, BIT STRING, BMPString and INTEGER leaves; and pairs of 256-bit
numbers around the SM2 prime p and order n with a wNAF width byte."""
import os
import re
import shutil
import subprocess

HERE = os.path.dirname(os.path.abspath(__file__))
SEEDS = os.path.join(HERE, "seeds")
SM2_P = 2**256 - 2**224 - 2**96 + 2**64 - 1
SM2_N = 0xFFFFFFFEFFFFFFFFFFFFFFFFFFFFFFFF7203DF6B21C6052B53BBF40939D54123
CERTS = ["ACCVRAIZ1", "Amazon_Root_CA_3", "Amazon_Root_CA_4", "Certainly_Root_E1",
         "GlobalSign_ECC_Root_CA_-_R4", "ISRG_Root_X1"]


def length(n):
    if n < 0x80:
        return bytes([n])
    digits = n.to_bytes((n.bit_length() + 7) // 8, "big")
    return bytes([0x80 | len(digits)]) + digits


def tlv(tag, content):
    return bytes([tag]) + length(len(content)) + content


def write(name, data):
    with open(os.path.join(SEEDS, name), "wb") as f:
        f.write(data)


def main():
    os.makedirs(SEEDS, exist_ok=True)
    for name in CERTS:
        out = "cert_" + re.sub(r"[^a-z0-9]", "_", name.lower()) + ".der"
        subprocess.run(["openssl", "x509", "-in", f"/etc/ssl/certs/{name}.pem", "-outform", "DER",
                        "-out", os.path.join(SEEDS, out)], check=True)
    shutil.copy(os.path.join(HERE, "..", "tests", "data", "asn_sm2_cert.der"),
                os.path.join(SEEDS, "cert_sm2_seal_signer.der"))

    write("length_forms.der", tlv(0x30, b"\x04\x81\x03abc" + b"\x04\x82\x00\x01z" +
                                  b"\x04\x83\x00\x00\x01y" + b"\x04\x84\x00\x00\x00\x01x" + b"\x30\x80"))
    write("bad_child.der", bytes.fromhex("300602010502050000"))
    deep = b""
    for level in range(160):
        deep = tlv(0x30 if level % 2 else 0xA0, deep)
    write("deep.der", deep)
    write("wide.der", tlv(0x31, b"".join(tlv(2, bytes([i & 0x7F])) for i in range(300))))
    write("values.der", tlv(0x30, tlv(0x17, b"491231235959Z") + tlv(0x17, b"080101120000+0800") +
                            tlv(0x18, b"20080101120000.5Z") + tlv(0x18, b"20080101120000") +
                            tlv(6, bytes.fromhex("2a864886f70d010901")) + tlv(3, bytes.fromhex("00abcd")) +
                            tlv(30, "Seal 印章".encode("utf-16-be")) + tlv(2, b"\x01\x00")))

    number = lambda value: value.to_bytes(32, "big")
    for name, a, b, width in [("p", SM2_P - 1, SM2_P + 1, 3), ("n", SM2_N - 1, SM2_N - 2, 6),
                              ("top", 2**256 - 1, 2**256 - 1, 0), ("small", 1, 0, 4)]:
        write(f"sm2_arith_{name}.bin", number(a) + number(b) + bytes([width]))


if __name__ == "__main__":
    main()
