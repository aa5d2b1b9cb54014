#!/usr/bin/env bash
# Makes the example files of `zthost demo` and of the zthost tests with the
# openssl command (OpenSSL 3) and coreutils. The outputs are committed; run
# again only to replace them (keys and SM2 signatures change on every run;
# nothing depends on their values, only on their consistency).
#
#   sm2.key, sm2-cert.pem, sm2-cert.der   SM2 key and a version-3 certificate,
#                                         valid 2024-01-01 .. 2049-12-31
#   sm2-expired-cert.der                  valid 2000-01-01 .. 2001-01-01
#   sm2-future-cert.der                   valid 2090-01-01 .. 2091-01-01
#   rsa.key, rsa-cert.der                 RSA 2048 key and certificate
#   document.txt                          the signed data
#   document.sm3                          its SM3 digest (32 raw bytes)
#   document.sm2.sig                      SM2 signature (DER), SM3, user ID
#                                         1234567812345678
#   document.rsa.sig                      RSA PKCS#1 v1.5 signature with SHA-1
#   seal.der                              a stand-in seal element (one DER
#                                         SEQUENCE; not a real seal picture)
#   gm-tbs.der, gm-tbs.sig, gm-seal.der   GM seal signature: to-be-signed
#                                         part, its SM2 signature, the whole
#   zw-tbs.der, zw-tbs.sig, zw-seal.der   the same, government-affairs form
#   text-utf8.txt, text-gbk.txt           one text in UTF-8 and in GBK
#
# The seal structures are laid out here with `openssl asn1parse -genconf`,
# independently of the library, so that zthost can compare what the library
# builds from the same fields with them.
set -euo pipefail
cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The seal fields shared with `zthost demo`.
SEAL_TIME="20240101120000Z"
SEAL_PROPERTY="zthost demo seal"
SM2_USER_ID="1234567812345678"

hex() { od -An -v -tx1 "$1" | tr -d ' \n'; }

# The library reads the INTEGERs of a DER SM2 signature as 32 bytes (33 with
# a sign octet); a value that happens to be shorter (about 1 signature in
# 128) would not verify there. Such signatures are simply made again.
sm2_sign() {  # key, input, output
  local lengths
  while :; do
    openssl dgst -sm3 -sign "$1" -sigopt "distid:$SM2_USER_ID" -out "$3" "$2"
    lengths=$(openssl asn1parse -inform DER -in "$3" | grep -c 'l=  3[23] prim: INTEGER' || true)
    [ "$lengths" = 2 ] && break
  done
  openssl dgst -sm3 -verify "$work/sm2.pub" -sigopt "distid:$SM2_USER_ID" \
    -signature "$3" "$2" >/dev/null
}

# --- keys and certificates ---------------------------------------------------
openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:SM2 -out sm2.key
openssl pkey -in sm2.key -pubout -out "$work/sm2.pub"
openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out rsa.key 2>/dev/null

# `openssl ca` is used for its fixed start and end dates.
mkdir -p "$work/ca"
touch "$work/ca/index.txt"
cat > "$work/ca.cnf" <<CNF
[ca]
default_ca = demo
[demo]
dir = $work/ca
database = \$dir/index.txt
new_certs_dir = \$dir
serial = \$dir/serial
policy = names
unique_subject = no
[names]
countryName = optional
organizationName = optional
organizationalUnitName = optional
commonName = supplied
[req]
distinguished_name = dn
prompt = no
[dn]
CN = unused
[leaf]
basicConstraints = CA:FALSE
keyUsage = digitalSignature, nonRepudiation
CNF

self_signed() {  # key, digest, subject, start, end, serial, output (DER)
  echo "$6" > "$work/ca/serial"
  local sigopt=()
  [ "$2" = sm3 ] && sigopt=(-sigopt "distid:$SM2_USER_ID")
  openssl req -new -key "$1" -"$2" -subj "$3" -config "$work/ca.cnf" -out "$work/req.csr"
  openssl ca -batch -config "$work/ca.cnf" -selfsign -keyfile "$1" -md "$2" "${sigopt[@]}" \
    -in "$work/req.csr" -startdate "$4" -enddate "$5" -extensions leaf -notext \
    -out "$work/cert.pem" 2>/dev/null
  openssl x509 -in "$work/cert.pem" -outform DER -out "$7"
}

self_signed sm2.key sm3 "/C=CN/O=ZTUtil Demo/OU=Seal Office/CN=Demo SM2 Signer" \
  240101000000Z 491231235959Z 1001 sm2-cert.der
openssl x509 -inform DER -in sm2-cert.der -out sm2-cert.pem
self_signed sm2.key sm3 "/C=CN/O=ZTUtil Demo/CN=Expired Signer" \
  000101000000Z 010101000000Z 1002 sm2-expired-cert.der
self_signed sm2.key sm3 "/C=CN/O=ZTUtil Demo/CN=Future Signer" \
  20900101000000Z 20910101000000Z 1003 sm2-future-cert.der
self_signed rsa.key sha256 "/C=CN/O=ZTUtil Demo/OU=Seal Office/CN=Demo RSA Signer" \
  240101000000Z 491231235959Z 1004 rsa-cert.der

# --- data and plain signatures ---------------------------------------------
printf 'Contract No. 2024-001\nThe parties agree to the terms above.\n' > document.txt
openssl dgst -sm3 -binary -out document.sm3 document.txt
sm2_sign sm2.key document.txt document.sm2.sig
openssl dgst -sha1 -sign rsa.key -out document.rsa.sig document.txt
openssl dgst -sha1 -verify <(openssl pkey -in rsa.key -pubout) \
  -signature document.rsa.sig document.txt >/dev/null

# --- seal structures ----------------------------------------------------------
seal_section() {
  cat <<SECT
[seal]
id = IA5STRING:ES-DEMO-0001
name = UTF8String:zthost demo seal
picture = FORMAT:HEX,OCTETSTRING:89504E470D0A1A0A
SECT
}

{ echo "asn1 = SEQUENCE:seal"; seal_section; } > "$work/seal.cnf"
openssl asn1parse -genconf "$work/seal.cnf" -out seal.der >/dev/null

time_hex=$(printf '%s' "$SEAL_TIME" | od -An -v -tx1 | tr -d ' \n')
digest_hex=$(hex document.sm3)
cert_hex=$(hex sm2-cert.der)

# GM: version 2, seal, time (BIT STRING), digest (BIT STRING), property,
# certificate, SM2-with-SM3 OID; then { to-be-signed, BIT STRING signature }.
cat > "$work/gm-tbs.cnf" <<CNF
asn1 = SEQUENCE:tbs
[tbs]
version = INTEGER:2
seal = SEQUENCE:seal
time = FORMAT:HEX,BITSTRING:$time_hex
digest = FORMAT:HEX,BITSTRING:$digest_hex
property = IA5STRING:$SEAL_PROPERTY
cert = FORMAT:HEX,OCTETSTRING:$cert_hex
method = OID:1.2.156.10197.1.501
$(seal_section)
CNF
openssl asn1parse -genconf "$work/gm-tbs.cnf" -out gm-tbs.der >/dev/null
sm2_sign sm2.key gm-tbs.der gm-tbs.sig
cat > "$work/gm-seal.cnf" <<CNF
asn1 = SEQUENCE:whole
[whole]
tbs = SEQUENCE:tbs
signature = FORMAT:HEX,BITSTRING:$(hex gm-tbs.sig)
$(sed -n '/^\[tbs\]/,$p' "$work/gm-tbs.cnf")
CNF
openssl asn1parse -genconf "$work/gm-seal.cnf" -out gm-seal.der >/dev/null

# ZW: version 4, seal, time (GeneralizedTime), digest (BIT STRING), property;
# then { to-be-signed, certificate, algorithm OID, BIT STRING signature }.
cat > "$work/zw-tbs.cnf" <<CNF
asn1 = SEQUENCE:tbs
[tbs]
version = INTEGER:4
seal = SEQUENCE:seal
time = GENTIME:$SEAL_TIME
digest = FORMAT:HEX,BITSTRING:$digest_hex
property = IA5STRING:$SEAL_PROPERTY
$(seal_section)
CNF
openssl asn1parse -genconf "$work/zw-tbs.cnf" -out zw-tbs.der >/dev/null
sm2_sign sm2.key zw-tbs.der zw-tbs.sig
cat > "$work/zw-seal.cnf" <<CNF
asn1 = SEQUENCE:whole
[whole]
tbs = SEQUENCE:tbs
cert = FORMAT:HEX,OCTETSTRING:$cert_hex
method = OID:1.2.156.10197.1.501
signature = FORMAT:HEX,BITSTRING:$(hex zw-tbs.sig)
$(sed -n '/^\[tbs\]/,$p' "$work/zw-tbs.cnf")
CNF
openssl asn1parse -genconf "$work/zw-seal.cnf" -out zw-seal.der >/dev/null

# --- text ---------------------------------------------------------------------
printf '电子印章 seal 验证通过\n中华人民共和国 2024\n' > text-utf8.txt
iconv -f UTF-8 -t GBK text-utf8.txt > text-gbk.txt
