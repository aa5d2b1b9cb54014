#!/usr/bin/env python3
"""Regenerates fuzz/seeds: a few CA certificates of Debian's ca-certificates
converted to DER, the SM2 test certificate, and handmade DER covering every
length form, the indefinite form, a bad child, deep and wide nesting, and
time, OID, BIT STRING, BMPString and INTEGER leaves."""
import os
import re
import shutil
import subprocess

HERE = os.path.dirname(os.path.abspath(__file__))
SEEDS = os.path.join(HERE, "seeds")
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


if __name__ == "__main__":
    main()
