#!/usr/bin/env python3
"""Lays out a signedData (GM/T 0010 or PKCS #7 object identifiers) around an
SM2 signature made elsewhere (openssl dgst -sm3 -sign), for the example and
test documents: openssl cms cannot sign with SM2 keys in OpenSSL 3.0.

  signed_data.py attributes GM|PKCS7 DIGEST OUT
      the signed attributes as the signature covers them: SET { contentType,
      messageDigest DIGEST }
  signed_data.py build GM|PKCS7 CERT SIGNATURE OUT [--content FILE] [--attributes SET]
      ContentInfo { signedData { ..., certificates [0] { CERT },
      signerInfos { issuerAndSerialNumber of CERT, SM3, [0] attributes,
      SM2, SIGNATURE } } }; detached unless --content is given
"""
import sys

OIDS = {
    "GM": {"signed": "1.2.156.10197.6.1.4.2.2", "data": "1.2.156.10197.6.1.4.2.1"},
    "PKCS7": {"signed": "1.2.840.113549.1.7.2", "data": "1.2.840.113549.1.7.1"},
}
SM3, SM2 = "1.2.156.10197.1.401", "1.2.156.10197.1.301.1"
CONTENT_TYPE, MESSAGE_DIGEST = "1.2.840.113549.1.9.3", "1.2.840.113549.1.9.4"


def tlv(tag, body):
    n = len(body)
    if n < 0x80:
        return bytes([tag, n]) + body
    size = (n.bit_length() + 7) // 8
    return bytes([tag, 0x80 | size]) + n.to_bytes(size, "big") + body


def oid(dotted):
    arcs = [int(a) for a in dotted.split(".")]
    body = bytes([arcs[0] * 40 + arcs[1]])
    for arc in arcs[2:]:
        chunk = [arc & 0x7F]
        arc >>= 7
        while arc:
            chunk.insert(0, 0x80 | (arc & 0x7F))
            arc >>= 7
        body += bytes(chunk)
    return tlv(0x06, body)


def children(element):
    """The elements inside a constructed element."""
    first = element[1]
    at = 2 + (first & 0x7F if first & 0x80 else 0)
    items = []
    while at < len(element):
        start, first = at, element[at + 1]
        at += 2
        size = first
        if first & 0x80:
            count = first & 0x7F
            size = int.from_bytes(element[at:at + count], "big")
            at += count
        items.append(element[start:at + size])
        at += size
    return items


def attributes(kind, digest):
    content_type = tlv(0x30, oid(CONTENT_TYPE) + tlv(0x31, oid(OIDS[kind]["data"])))
    message_digest = tlv(0x30, oid(MESSAGE_DIGEST) + tlv(0x31, tlv(0x04, digest)))
    return tlv(0x31, content_type + message_digest)


def build(kind, cert, signature, content=None, signed_attributes=None):
    fields = children(children(cert)[0])
    serial, issuer = fields[1], fields[3]  # after the [0] version
    sm3 = tlv(0x30, oid(SM3))
    implicit = b"" if signed_attributes is None else b"\xa0" + signed_attributes[1:]
    signer = tlv(0x30, tlv(0x02, b"\x01") + tlv(0x30, issuer + serial) + sm3 + implicit +
                 tlv(0x30, oid(SM2)) + tlv(0x04, signature))
    inner = oid(OIDS[kind]["data"]) + (b"" if content is None else tlv(0xA0, tlv(0x04, content)))
    signed = tlv(0x30, tlv(0x02, b"\x01") + tlv(0x31, sm3) + tlv(0x30, inner) + tlv(0xA0, cert) + tlv(0x31, signer))
    return tlv(0x30, oid(OIDS[kind]["signed"]) + tlv(0xA0, signed))


def read(path):
    with open(path, "rb") as f:
        return f.read()


def main(args):
    if args[0] == "attributes":
        result = attributes(args[1], read(args[2]))
        out = args[3]
    else:
        kind, cert, signature, out = args[1:5]
        options = dict(zip(args[5::2], args[6::2]))
        content = read(options["--content"]) if "--content" in options else None
        set_ = read(options["--attributes"]) if "--attributes" in options else None
        result = build(kind, read(cert), read(signature), content, set_)
    with open(out, "wb") as f:
        f.write(result)


if __name__ == "__main__":
    main(sys.argv[1:])
