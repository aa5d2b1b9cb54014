#!/usr/bin/env bash
# Makes the inputs and expected outputs of the zthost tests from the files in
# examples/, with the openssl command and coreutils only (independently of
# the library). Run again after examples/make_examples.sh.
set -euo pipefail
cd "$(dirname "$0")"
ex=../../../examples
# shellcheck source=../../../examples/ses_genconf.sh
source "$ex/ses_genconf.sh"  # sm2_sign_short

hex() { od -An -v -tx1 | tr -d ' \n'; }

# A certificate as wrapped Base64 (64 characters a line), and cut short.
openssl base64 -in "$ex/sm2-cert.der" > sm2-cert-wrapped.b64
head -c 200 "$ex/sm2-cert.der" > sm2-cert-truncated.der

# The SM2 signature's r and s as openssl reads them, in the 64-byte and
# 128-byte forms (hex text; make_examples.sh keeps them 32 or 33 bytes).
mapfile -t ints < <(openssl asn1parse -inform DER -in "$ex/document.sm2.sig" |
                    sed -n 's/.*prim: INTEGER *://p')
pad64() { printf '%64s' "$1" | tr ' ' 0 | tr 'A-F' 'a-f'; }
r=$(pad64 "${ints[0]}"); s=$(pad64 "${ints[1]}")
r=${r: -64}; s=${s: -64}
echo "$r$s" > document.sm2.sig64.hex
zeros=$(printf '%064d' 0)
echo "$zeros$r$zeros$s" > document.sm2.sig128.hex

# Data and signatures with one changed byte.
sed 's/2024-001/2024-002/' "$ex/document.txt" > document-changed.txt
cp "$ex/document.rsa.sig" document.rsa-changed.sig
printf '\x55' | dd of=document.rsa-changed.sig bs=1 seek=100 conv=notrunc status=none

# HMAC-SM3 with a 16-byte and a 100-byte key.
short_key=000102030405060708090a0b0c0d0e0f
long_key=$(printf 'k%.0s' $(seq 100) | hex)
openssl dgst -sm3 -mac HMAC -macopt "hexkey:$short_key" -r "$ex/document.txt" | cut -d' ' -f1 > hmac-short.hex
openssl dgst -sm3 -mac HMAC -macopt "hexkey:$long_key" -r "$ex/document.txt" | cut -d' ' -f1 > hmac-long.hex
echo "$long_key" > hmac-long-key.hex

# Base64 of the seal with the standard alphabet, and with the SM2 alphabet
# (the same digits moved one place: "=" is 0, "/" pads).
openssl base64 -A -in "$ex/seal.der" > seal.b64
tr 'ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=' \
   '=ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/' < seal.b64 > seal.sm2.b64
printf 'TWFu TQ=\n' > bad.b64
printf 'TW!u' > bad-character.b64

# Text no GBK table maps, and bytes that are no GBK.
printf 'seal \xf0\x9f\x98\x80\n' > emoji-utf8.txt
printf 'ab\x81\x20cd\n' > bad-gbk.txt
printf 'ab\0cd\n' > nul.txt

# A GM structure whose signed property text was changed after signing.
cp "$ex/gm-seal.der" gm-seal-changed.der
offset=$(grep -abo 'zthost demo seal' gm-seal-changed.der | tail -1 | cut -d: -f1)
printf 'Z' | dd of=gm-seal-changed.der bs=1 seek="$offset" conv=notrunc status=none
head -c 300 "$ex/gm-seal.der" > gm-seal-truncated.der

# A DER element followed by two stray bytes.
{ cat "$ex/seal.der"; printf '\n\n'; } > seal-trailing.der

# SEQUENCE { INTEGER 5 } with a long-form length where the short form would do.
printf '\x30\x81\x03\x02\x01\x05' > long-length.der

# RSA signatures the library answers wrongly: SHA-256 over other data (it
# accepts any digest but SHA-1 without comparing), and SHA-1 with an
# exponent-3 key and with a 1536-bit key (it takes the exponent as 65537 and
# reads 1024- and 2048-bit keys only). One SHA-256 signature that holds.
openssl dgst -sha256 -sign "$ex/rsa.key" -out document.rsa-sha256-forged.sig document-changed.txt
openssl dgst -sha256 -sign "$ex/rsa.key" -out document.rsa-sha256.sig "$ex/document.txt"
openssl dgst -sha1 -sign ../rsa/rsa1024e3_key.pem -out document.rsa-e3.sig "$ex/document.txt"
openssl dgst -sha1 -sign ../rsa/rsa1536_key.pem -out document.rsa-1536.sig "$ex/document.txt"

# An SM2 signature the library misreads (an INTEGER shorter than 32
# bytes), and one with the signer ID alice@example.cn.
sm2_sign_short "$ex/sm2.key" "$ex/document.txt" document.sm2-short.sig
openssl dgst -sm3 -sign "$ex/sm2.key" -sigopt distid:alice@example.cn -out document.sm2-alice.sig "$ex/document.txt"
# The example signature with its SEQUENCE length in the long form (30 81
# nn): the same r and s, but no DER, so OpenSSL's SM2 refuses it.
{ printf '\x30\x81'; tail -c +2 "$ex/document.sm2.sig"; } > document.sm2-long-length.sig

# The signer's public key in every form verify --pubkey takes.
openssl pkey -in "$ex/sm2.key" -pubout -out sm2-pub.pem
openssl pkey -in "$ex/sm2.key" -pubout -outform DER -out sm2-pub.der
tail -c 65 sm2-pub.der > sm2-pub.point65
tail -c 64 sm2-pub.der | hex > sm2-pub.point64.hex
{ printf '\0\1\0\0'; head -c 32 /dev/zero; tail -c 64 sm2-pub.der | head -c 32
  head -c 32 /dev/zero; tail -c 32 sm2-pub.der; } > sm2-pub.record132
