#!/usr/bin/env bash
# Makes the certificate fixtures of the certificate tests with the openssl
# command (OpenSSL 3). The outputs are committed; run again only to replace
# them (keys and signatures change on every run, the tests do not depend on
# their values, only on what `openssl x509` reports about the files).
set -euo pipefail
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sm2_key() { openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:SM2 -out "$1" 2>/dev/null; }
rsa_key() { openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:"$2" -out "$1" 2>/dev/null; }
to_der() { openssl x509 -in "$1" -outform DER -out "$2"; }

sm2_key "$work/sm2.key"

# Version 3, SM2, full subject with e-mail; serial 0x8A is encoded 00 8A.
openssl req -new -x509 -key "$work/sm2.key" -sm3 -set_serial 0x8A -days 8000 \
  -subj "/C=CN/O=Test Org/OU=Seal Unit/CN=Seal Signer/emailAddress=signer@example.cn" \
  -out "$work/sm2_v3.pem"
to_der "$work/sm2_v3.pem" sm2_v3.der

# Version 1 (no extensions, no [0] version field), issued by the one above.
openssl req -new -key "$work/sm2.key" -sm3 -subj "/C=CN/O=Test Org/CN=Version One" \
  -out "$work/v1.csr"
openssl x509 -req -in "$work/v1.csr" -CA "$work/sm2_v3.pem" -CAkey "$work/sm2.key" -sm3 \
  -set_serial 1 -days 8000 -out "$work/sm2_v1.pem" 2>/dev/null
to_der "$work/sm2_v1.pem" sm2_v1.der

# Two CN values; validity past 2049, so notAfter is a GeneralizedTime.
openssl req -new -x509 -key "$work/sm2.key" -sm3 -set_serial 2 -days 11000 \
  -subj "/O=Twin Org/CN=First Name/CN=Second Name" -out "$work/two_cn.pem"
to_der "$work/two_cn.pem" sm2_two_cn_gentime.der

# A name written in BMPString.
cat > "$work/bmp.cnf" <<'CNF'
[req]
distinguished_name = dn
string_mask = MASK:0x800
utf8 = yes
prompt = no
[dn]
CN = 电子印章
O = BMP Org
CNF
openssl req -new -x509 -key "$work/sm2.key" -sm3 -set_serial 3 -days 8000 \
  -config "$work/bmp.cnf" -out "$work/bmp.pem"
to_der "$work/bmp.pem" sm2_bmp_name.der

# RSA 1024 and 2048.
for bits in 1024 2048; do
  rsa_key "$work/rsa$bits.key" "$bits"
  openssl req -new -x509 -key "$work/rsa$bits.key" -sha256 -set_serial 4 -days 8000 \
    -subj "/C=CN/O=RSA Org/OU=Unit $bits/CN=RSA $bits" -out "$work/rsa$bits.pem"
  to_der "$work/rsa$bits.pem" "rsa$bits.der"
done
cp "$work/sm2_v3.pem" sm2_v3.pem
