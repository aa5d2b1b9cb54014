#!/bin/sh
# Makes the RSA certificate fixtures of the verification tests with the
# openssl command: self-signed version-3 certificates (DER) with their
# private keys (PEM), for 1024- and 2048-bit keys with exponent 65537, a
# 1024-bit key with exponent 3 and a 1536-bit key (key blocks of sizes the
# verification does not take).
#
# Usage: tests/data/rsa/make_rsa_fixtures.sh   (writes next to itself)
set -eu
cd "$(dirname "$0")"

make_pair() {  # name bits exponent
    openssl genpkey -algorithm RSA -pkeyopt rsa_keygen_bits:"$2" \
        -pkeyopt rsa_keygen_pubexp:"$3" -out "$1_key.pem" 2>/dev/null
    openssl req -x509 -new -key "$1_key.pem" -sha256 -days 36500 -outform DER \
        -subj "/C=CN/O=ZTUtil Test/CN=$1" -out "$1_cert.der"
}

make_pair rsa1024 1024 65537
make_pair rsa2048 2048 65537
make_pair rsa1024e3 1024 3
make_pair rsa1536 1536 65537
