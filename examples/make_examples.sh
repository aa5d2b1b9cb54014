#!/usr/bin/env bash
# Makes the example files of `zthost demo` and of the zthost tests with the
# openssl command (OpenSSL 3) and coreutils. The outputs are committed; run
# again only to replace them (keys and SM2 signatures change on every run;
# nothing depends on their values, only on their consistency). Keys and
# certificates are kept when they exist, so that the certificates embedded
# in the committed files stay the same; delete them to make new ones.
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
#   maker.key, maker-cert.der             the seal maker's SM2 key and
#                                         certificate
#   seal.der                              an electronic seal (GB/T 38540)
#                                         made by the maker for the SM2 signer
#   gm-tbs.der, gm-tbs.sig, gm-seal.der   GM seal signature: to-be-signed
#                                         part, its SM2 signature, the whole
#   zw-tbs.der, zw-tbs.sig, zw-seal.der   the same, government-affairs form
#   text-utf8.txt, text-gbk.txt           one text in UTF-8 and in GBK
#   invoice.ofd                           an OFD document with a seal
#                                         signature and a plain SM2 signature
#                                         (PKCS #7 signedData laid out by
#                                         signed_data.py)
#
# The seal structures are laid out here with `openssl asn1parse -genconf`,
# independently of the library, so that zthost can compare what the library
# builds from the same fields with them.
set -euo pipefail
cd "$(dirname "$0")"
source ./ses_genconf.sh
source ./ofd_build.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The seal fields shared with `zthost demo`.
SEAL_TIME="20240101120000Z"
SEAL_PROPERTY="zthost demo seal"
hex() { hexof "$1"; }

# The library reads the INTEGERs of a DER SM2 signature as 32 bytes (33 with
# a sign octet); a value that happens to be shorter (about 1 signature in
# 128) would not verify there. Such signatures are simply made again.
sm2_sign_checked() {  # key, input, output
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
[ -f sm2.key ] || openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:SM2 -out sm2.key
[ -f maker.key ] || openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:SM2 -out maker.key
openssl pkey -in sm2.key -pubout -out "$work/sm2.pub"
[ -f rsa.key ] || openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out rsa.key 2>/dev/null

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

self_signed() {  # key, digest, subject, start, end, serial, output (DER); kept if present
  [ -f "$7" ] && return 0
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
self_signed maker.key sm3 "/C=CN/O=ZTUtil Demo/OU=Seal Office/CN=Demo Seal Maker" \
  240101000000Z 491231235959Z 1005 maker-cert.der
self_signed rsa.key sha256 "/C=CN/O=ZTUtil Demo/OU=Seal Office/CN=Demo RSA Signer" \
  240101000000Z 491231235959Z 1004 rsa-cert.der

# --- data and plain signatures ---------------------------------------------
printf 'Contract No. 2024-001\nThe parties agree to the terms above.\n' > document.txt
openssl dgst -sm3 -binary -out document.sm3 document.txt
sm2_sign_checked sm2.key document.txt document.sm2.sig
openssl dgst -sha1 -sign rsa.key -out document.rsa.sig document.txt
openssl dgst -sha1 -verify <(openssl pkey -in rsa.key -pubout) \
  -signature document.rsa.sig document.txt >/dev/null

# --- seal structures ----------------------------------------------------------
# The seal: made by the maker for the SM2 signer, valid 2024..2049.
printf '\x89PNG\r\n\x1a\n\0\0\0\rIHDR zthost demo seal picture' > "$work/seal.png"
seal_sections "$work" v4 4 ES-DEMO-0001 "$SEAL_PROPERTY" sm2-cert.der 20240101000000Z 20491231235959Z "$work/seal.png"
make_seal "$work" v4 maker.key maker-cert.der seal.der
seal_section() { cat "$work/seal.sections"; }

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
sm2_sign_checked sm2.key gm-tbs.der gm-tbs.sig
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
sm2_sign_checked sm2.key zw-tbs.der zw-tbs.sig
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

# --- an OFD document: a seal signature and a plain SM2 signature ----------------
ofd="$work/ofd"
ofd_start "$ofd"
ofd_signature_xml "$ofd" 0 1.2.156.10197.1.401
ofd_add "$ofd" 1 Seal Sign_0/Signature.xml
cp "$work/seal.sections" "$ofd/seal.sections"
ses_v4 "$ofd" sm2.key sm2-cert.der 20240301093000Z \
  "$(openssl dgst -sm3 -binary "$ofd/Doc_0/Signs/Sign_0/Signature.xml" | od -An -v -tx1 | tr -d ' \n')" \
  /Doc_0/Signs/Sign_0/Signature.xml "$ofd/Doc_0/Signs/Sign_0/SignedValue.dat"
ofd_signature_xml "$ofd" 1 1.2.156.10197.1.401
ofd_add "$ofd" 2 Sign Sign_1/Signature.xml
# PKCS #7 with signed attributes, detached: the signature covers the
# attributes, whose messageDigest is the SM3 of Signature.xml.
openssl dgst -sm3 -binary -out "$work/ofd-digest" "$ofd/Doc_0/Signs/Sign_1/Signature.xml"
python3 signed_data.py attributes PKCS7 "$work/ofd-digest" "$work/ofd-attributes"
sm2_sign sm2.key "$work/ofd-attributes" "$work/ofd-attributes.sig"
python3 signed_data.py build PKCS7 sm2-cert.der "$work/ofd-attributes.sig" "$ofd/Doc_0/Signs/Sign_1/SignedValue.dat" \
  --attributes "$work/ofd-attributes"
ofd_zip "$ofd" invoice.ofd
