#!/bin/sh
# Regenerates the DER fixtures of the ASN tests and benchmarks with the
# openssl command (OpenSSL 3): a self-signed SM2/SM3 certificate whose
# organisation is a BMPString and whose common name is a UTF8String.
# Usage: tests/data/make_asn_fixtures.sh   (writes next to this script)
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat > "$work/req.cnf" <<'CNF'
[req]
distinguished_name = dn
x509_extensions = ext
prompt = no
utf8 = yes
string_mask = default
[dn]
C = CN
O = 电子印章测试单位
CN = Seal Signer 01
[ext]
basicConstraints = critical, CA:FALSE
keyUsage = critical, digitalSignature, nonRepudiation
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
CNF

openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:SM2 -out "$work/key.pem"
openssl req -x509 -new -config "$work/req.cnf" -key "$work/key.pem" -sm3 \
    -set_serial 0x0123456789ABCDEF -days 3650 -outform DER -out "$here/asn_sm2_cert.der"
