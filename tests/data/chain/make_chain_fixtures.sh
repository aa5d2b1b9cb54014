#!/usr/bin/env bash
# Makes the certificate chains of the zthost tests with the openssl command
# (OpenSSL 3) only. The outputs are committed; run again only to replace
# them (keys and signatures change on every run; the tests depend on the
# names, dates and extensions set here and on the fingerprints recorded).
#
#   root.pem                SM2 root CA, self-signed, 2024-01-01 .. 2049-12-31
#   intermediate.pem        SM2 CA issued by the root, pathlen 0
#   leaf.pem, leaf.key      SM2 signer issued by the intermediate; its CN is
#                           a UTF8String (中文测试), with alternative names
#   leaf.fingerprints       openssl x509 -fingerprint -sha256 and -sm3 of it
#   document.leaf.sig       SM2 signature of examples/document.txt by leaf.key
#   wrong-root.pem          another key under the root's name, no key id
#   expired-intermediate.pem  the intermediate's name and key, valid 2020 only
#   bundle.pem              root and intermediate in one file
#   leaf-under-leaf.pem     a certificate issued by the leaf (no CA)
#   rsa-root.pem, rsa-leaf.pem   RSA root and signer (SHA-256)
#   version1-expired.pem    a version-1 certificate (no extensions) of the
#                           key examples/sm2.key, valid in 2000 only
set -euo pipefail
cd "$(dirname "$0")"
ex=../../../examples
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ID=1234567812345678

sm2_key() { openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:SM2 -out "$1"; }

mkdir -p "$work/ca"
cat > "$work/ca.cnf" <<CNF
[ca]
default_ca = chain
[chain]
dir = $work/ca
database = \$dir/index.txt
new_certs_dir = \$dir
serial = \$dir/serial
policy = names
unique_subject = no
copy_extensions = none
[names]
countryName = optional
organizationName = optional
commonName = supplied
[req]
distinguished_name = dn
prompt = no
utf8 = yes
string_mask = utf8only
[dn]
CN = unused
[root]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
[intermediate]
basicConstraints = critical, CA:TRUE, pathlen:0
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
[wrong_root]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = none
[leaf]
basicConstraints = CA:FALSE
keyUsage = critical, digitalSignature, nonRepudiation
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
subjectAltName = DNS:seal.example.cn, email:signer@example.cn
CNF

# issue KEY DIGEST SUBJECT START END EXTENSIONS OUT [ISSUER_CERT ISSUER_KEY]
# Self-signed without an issuer; EXTENSIONS "" makes a version-1 certificate.
issue() {
  local key=$1 md=$2 subject=$3 start=$4 end=$5 extensions=$6 out=$7
  : > "$work/ca/index.txt"
  openssl rand -hex 8 > "$work/ca/serial"
  local options=(-selfsign -keyfile "$key")
  [ $# -gt 7 ] && options=(-cert "$8" -keyfile "$9")
  [ "$md" = sm3 ] && options+=(-sigopt "distid:$ID")
  [ -n "$extensions" ] && options+=(-extensions "$extensions")
  openssl req -new -key "$key" -"$md" -subj "$subject" -config "$work/ca.cnf" -out "$work/req.csr"
  openssl ca -batch -config "$work/ca.cnf" "${options[@]}" -md "$md" -in "$work/req.csr" \
    -startdate "$start" -enddate "$end" -notext -utf8 -out "$out" 2>/dev/null
}

sm2_key "$work/root.key"
sm2_key "$work/intermediate.key"
sm2_key leaf.key
sm2_key "$work/wrong.key"

issue "$work/root.key" sm3 "/C=CN/O=ZTUtil Test/CN=Test Root CA" 240101000000Z 491231235959Z root root.pem
issue "$work/intermediate.key" sm3 "/C=CN/O=ZTUtil Test/CN=Test Intermediate CA" 240101000000Z 491231235959Z \
  intermediate intermediate.pem root.pem "$work/root.key"
issue leaf.key sm3 "/C=CN/O=ZTUtil Test/CN=中文测试" 240101000000Z 491231235959Z \
  leaf leaf.pem intermediate.pem "$work/intermediate.key"
issue "$work/wrong.key" sm3 "/C=CN/O=ZTUtil Test/CN=Test Root CA" 240101000000Z 491231235959Z \
  wrong_root wrong-root.pem
issue "$work/intermediate.key" sm3 "/C=CN/O=ZTUtil Test/CN=Test Intermediate CA" 200101000000Z 210101000000Z \
  intermediate expired-intermediate.pem root.pem "$work/root.key"
issue "$work/wrong.key" sm3 "/C=CN/O=ZTUtil Test/CN=Below The Leaf" 240101000000Z 491231235959Z \
  leaf leaf-under-leaf.pem leaf.pem leaf.key
issue "$ex/sm2.key" sm3 "/CN=Version One Signer" 000101000000Z 010101000000Z "" version1-expired.pem
cat root.pem intermediate.pem > bundle.pem

openssl x509 -in leaf.pem -noout -fingerprint -sha256 > leaf.fingerprints
openssl x509 -in leaf.pem -noout -fingerprint -sm3 >> leaf.fingerprints
openssl dgst -sm3 -sign leaf.key -sigopt "distid:$ID" -out document.leaf.sig "$ex/document.txt"

openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out "$work/rsa-root.key" 2>/dev/null
openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out "$work/rsa-leaf.key" 2>/dev/null
issue "$work/rsa-root.key" sha256 "/C=CN/O=ZTUtil Test/CN=Test RSA Root" 240101000000Z 491231235959Z root rsa-root.pem
issue "$work/rsa-leaf.key" sha256 "/C=CN/O=ZTUtil Test/CN=Test RSA Signer" 240101000000Z 491231235959Z \
  leaf rsa-leaf.pem rsa-root.pem "$work/rsa-root.key"

# What openssl itself says of the links. OpenSSL 3.0's `openssl verify`
# checks SM2 certificate signatures without the default ID, so each SM2 link
# is checked with `openssl dgst` on the to-be-signed bytes instead.
link_verifies() {  # CHILD ISSUER
  openssl x509 -in "$1" -outform DER -out "$work/child.der"
  local tbs sig
  tbs=$(openssl asn1parse -inform DER -in "$work/child.der" | sed -n '2s/^ *\([0-9]*\):d=1 *hl= *\([0-9]*\) l= *\([0-9]*\).*/\1 \2 \3/p')
  set -- "$1" "$2" $tbs
  dd if="$work/child.der" of="$work/tbs.der" bs=1 skip="$3" count=$(($4 + $5)) status=none
  sig=$(openssl asn1parse -inform DER -in "$work/child.der" | tail -1 | sed 's/^ *\([0-9]*\):.*hl= *\([0-9]*\).*/\1 \2/')
  set -- "$1" "$2" $sig
  dd if="$work/child.der" of="$work/sig.der" bs=1 skip=$(($3 + $4 + 1)) status=none
  openssl x509 -in "$2" -pubkey -noout > "$work/issuer.pub"
  openssl dgst -sm3 -verify "$work/issuer.pub" -sigopt "distid:$ID" -signature "$work/sig.der" "$work/tbs.der" >/dev/null
}
link_verifies intermediate.pem root.pem
link_verifies leaf.pem intermediate.pem
link_verifies leaf.pem expired-intermediate.pem
if link_verifies intermediate.pem wrong-root.pem 2>/dev/null; then
  echo "wrong-root.pem verifies the intermediate" >&2
  exit 1
fi
openssl verify -CAfile rsa-root.pem rsa-leaf.pem
