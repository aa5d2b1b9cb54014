#!/usr/bin/env bash
# Makes the OFD packages, seals and seal signatures of the zthost tests,
# with openssl (SM2 signatures with the default user ID, `asn1parse -genconf`
# for the seal structures) and python3 (zip archives, and signedData, which
# embeds a certificate as genconf cannot: examples/signed_data.py), from the
# keys and certificates of examples/. Nothing here uses libZTUtil or zthost. The outputs are committed; run again only
# to replace them (signatures change on every run).
#
#   v4.ofd               GB/T 38540 seal signature with extension data and a
#                        time stamp; the seal lists the signer
#   v1.ofd               three GM/T 0031 seal signatures, versions 1, 4 and 5,
#                        over a v1 seal (UTCTime); one with SHA256 references
#   raw64.ofd            the signature as 64-byte r || s
#   short-integer.ofd    a DER signature with an INTEGER shorter than 32 bytes
#   sign-attributes.ofd  Type="Sign": PKCS #7 signedData with signed
#                        attributes, detached
#   sign-gm.ofd          Type="Sign": GM/T 0010 signedData without signed
#                        attributes over the SM3 of Signature.xml
#   sign-no-time.ofd     the same without a signing time, by an expired
#                        certificate
#   changed-page.ofd, changed-signature-xml.ofd, flipped-bit.ofd,
#   missing-file.ofd, wrong-datahash.ofd, expired-seal.ofd, not-a-zip.ofd,
#   malformed-xml.ofd, bomb.ofd, escape.ofd, duplicate-entry.ofd,
#   ambiguous-path.ofd, other-docroot.ofd, two-docroots.ofd,
#   two-signature-lists.ofd, unsigned-document.ofd
#                                                damaged variants
#   seal-v4.esl, seal-v1.esl, ses-v4.der, ses-v1.der   the parts on their own
#   picture.png          the picture inside the seals (a stand-in)
set -euo pipefail
cd "$(dirname "$0")"
ex=../../../examples
# shellcheck source=../../../examples/ses_genconf.sh
source "$ex/ses_genconf.sh"
# shellcheck source=../../../examples/ofd_build.sh
source "$ex/ofd_build.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

KEY=$ex/sm2.key CERT=$ex/sm2-cert.der MAKER_KEY=$ex/maker.key MAKER=$ex/maker-cert.der
TIME=20240301093000Z
PROPERTY="/Doc_0/Signs/Sign_0/Signature.xml"
printf '\x89PNG\r\n\x1a\n\0\0\0\rIHDR zthost seal picture' > picture.png

# Seals: v4 valid 2024..2049 (a name outside the BMP), v1, and an expired v4.
mkdir -p "$work/seal4" "$work/seal1" "$work/expired"
seal_sections "$work/seal4" v4 4 ES-V4-0001 "zthost 演示印章 😀" "$CERT" 20240101000000Z 20491231235959Z picture.png
make_seal "$work/seal4" v4 "$MAKER_KEY" "$MAKER" seal-v4.esl
seal_sections "$work/seal1" v1 1 ES-V1-0001 "zthost v1 印章" "$CERT" 20240101000000Z 20491231235959Z picture.png
make_seal "$work/seal1" v1 "$MAKER_KEY" "$MAKER" seal-v1.esl
seal_sections "$work/expired" v4 4 ES-OLD-0001 "expired seal" "$CERT" 20100101000000Z 20201231235959Z picture.png
make_seal "$work/expired" v4 "$MAKER_KEY" "$MAKER" "$work/expired.esl"

sm3hex() { openssl dgst -sm3 -binary "$1" | od -An -v -tx1 | tr -d ' \n'; }

# seal_ofd NAME SEALDIR [ses_v4 options]: one v4 seal signature (REFS_SED
# edits Signature.xml before it is signed).
seal_ofd() {
  local name=$1 seal=$2; shift 2
  local dir=$work/$name
  ofd_start "$dir"
  ofd_signature_xml "$dir" 0 1.2.156.10197.1.401
  [ -z "${REFS_SED:-}" ] || sed -i "$REFS_SED" "$dir/Doc_0/Signs/Sign_0/Signature.xml"
  ofd_add "$dir" 1 Seal Sign_0/Signature.xml
  cp "$seal/seal.sections" "$dir/seal.sections"
  ses_v4 "$dir" "$KEY" "$CERT" "$TIME" "$(sm3hex "$dir/Doc_0/Signs/Sign_0/Signature.xml")" "$PROPERTY" \
    "$dir/Doc_0/Signs/Sign_0/SignedValue.dat" "$@"
  ofd_zip "$dir" "$name.ofd"
}

seal_ofd v4 "$work/seal4" ext timestamp
cp "$work/v4/Doc_0/Signs/Sign_0/SignedValue.dat" ses-v4.der
seal_ofd raw64 "$work/seal4" raw
seal_ofd short-integer "$work/seal4" short
seal_ofd expired-seal "$work/expired"
# Root paths written without "/", as some producers write them; then a copy
# of the signed page where the same text points relative to Signature.xml,
# and the page itself changed.
REFS_SED='s|FileRef="/|FileRef="|' seal_ofd ambiguous-path "$work/seal4"
dir=$work/ambiguous-path
mkdir -p "$dir/Doc_0/Signs/Sign_0/Doc_0/Pages/Page_0"
cp "$dir/Doc_0/Pages/Page_0/Content.xml" "$dir/Doc_0/Signs/Sign_0/Doc_0/Pages/Page_0/"
sed -i 's/100.00 CNY/900.00 CNY/' "$dir/Doc_0/Pages/Page_0/Content.xml"
ofd_zip "$dir" ambiguous-path.ofd

# v1: versions 1, 4 and 5 side by side; the third with SHA256 references.
dir=$work/v1
ofd_start "$dir"
cp "$work/seal1/seal.sections" "$dir/seal.sections"
n=0
for version in 1 4 5; do
  method=1.2.156.10197.1.401
  [ $version = 5 ] && method=SHA256
  ofd_signature_xml "$dir" $n $method
  ofd_add "$dir" "v1-$version" Seal "/Doc_0/Signs/Sign_$n/Signature.xml"
  ses_v1 "$dir" $version "$KEY" "$CERT" "$TIME" "$(sm3hex "$dir/Doc_0/Signs/Sign_$n/Signature.xml")" \
    "/Doc_0/Signs/Sign_$n/Signature.xml" "$dir/Doc_0/Signs/Sign_$n/SignedValue.dat"
  n=$((n + 1))
done
cp "$dir/Doc_0/Signs/Sign_0/SignedValue.dat" ses-v1.der
ofd_zip "$dir" v1.ofd

# Type="Sign", PKCS #7 with signed attributes, detached: the signature
# covers the attributes, whose messageDigest is the SM3 of Signature.xml.
sign_ofd() {  # NAME [SED-SCRIPT for Signature.xml], then what differs
  dir=$work/$1
  ofd_start "$dir"
  ofd_signature_xml "$dir" 0 1.2.156.10197.1.401
  [ -z "${2:-}" ] || sed -i "$2" "$dir/Doc_0/Signs/Sign_0/Signature.xml"
  ofd_add "$dir" 1 Sign Sign_0/Signature.xml
  openssl dgst -sm3 -binary -out "$work/digest" "$dir/Doc_0/Signs/Sign_0/Signature.xml"
}
sign_ofd sign-attributes
python3 "$ex/signed_data.py" attributes PKCS7 "$work/digest" "$work/attributes"
sm2_sign "$KEY" "$work/attributes" "$work/attributes.sig"
python3 "$ex/signed_data.py" build PKCS7 "$CERT" "$work/attributes.sig" "$dir/Doc_0/Signs/Sign_0/SignedValue.dat" \
  --attributes "$work/attributes"
ofd_zip "$dir" sign-attributes.ofd

# Type="Sign", GM/T 0010 without signed attributes: the content is the SM3
# of Signature.xml, and the signature covers it.
sign_ofd sign-gm
sm2_sign "$KEY" "$work/digest" "$work/digest.sig"
python3 "$ex/signed_data.py" build GM "$CERT" "$work/digest.sig" "$dir/Doc_0/Signs/Sign_0/SignedValue.dat" \
  --content "$work/digest"
ofd_zip "$dir" sign-gm.ofd

# The same without a SignatureDateTime, by a certificate that expired in
# 2001: with no signing time stated, the certificate must be valid now.
sign_ofd sign-no-time /SignatureDateTime/d
sm2_sign "$KEY" "$work/digest" "$work/digest.sig"
python3 "$ex/signed_data.py" build GM "$ex/sm2-expired-cert.der" "$work/digest.sig" \
  "$dir/Doc_0/Signs/Sign_0/SignedValue.dat" --content "$work/digest"
ofd_zip "$dir" sign-no-time.ofd

# --- damaged variants, each from a copy of v4 -----------------------------
damaged() {  # NAME: a fresh copy of v4's folder in $dir
  dir=$work/damaged-$1
  rm -rf "$dir"
  cp -r "$work/v4" "$dir"
}
damaged changed-page
sed -i 's/100.00 CNY/900.00 CNY/' "$dir/Doc_0/Pages/Page_0/Content.xml"
ofd_zip "$dir" changed-page.ofd
damaged changed-signature-xml
sed -i 's/20240301093000Z/20240302093000Z/' "$dir/Doc_0/Signs/Sign_0/Signature.xml"
ofd_zip "$dir" changed-signature-xml.ofd
damaged flipped-bit
# One bit of the signature value (its last byte) inside the BIT STRING.
python3 - "$dir/tbs.sig" "$dir/Doc_0/Signs/Sign_0/SignedValue.dat" <<'PY'
import sys
signature, path = open(sys.argv[1], "rb").read(), sys.argv[2]
data = bytearray(open(path, "rb").read())
at = data.find(signature) + len(signature) - 1
data[at] ^= 1
open(path, "wb").write(data)
PY
ofd_zip "$dir" flipped-bit.ofd
damaged missing-file
rm "$dir/Doc_0/Pages/Page_0/Content.xml"
ofd_zip "$dir" missing-file.ofd
# Signatures.xml that is not well-formed.
python3 - malformed-xml.ofd <<'PY'
import sys, zipfile
out = sys.argv[1]
with zipfile.ZipFile("v4.ofd") as good, zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as bad:
    for item in good.infolist():
        data = good.read(item)
        if item.filename == "Doc_0/Signs/Signatures.xml":
            data = data.replace(b"</ofd:Signatures>", b"</ofd:Signature>")
        bad.writestr(item, data)
PY
# Signature.xml inflates to 64 MiB (declared in the archive, as real bombs do).
python3 - bomb.ofd <<'PY'
import sys, zipfile
with zipfile.ZipFile("v4.ofd") as good, zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as bomb:
    for item in good.infolist():
        data = good.read(item)
        if item.filename == "Doc_0/Signs/Sign_0/Signature.xml":
            data = data + b" " * (64 * 1024 * 1024)
        bomb.writestr(item, data, compress_type=zipfile.ZIP_DEFLATED, compresslevel=9)
PY
# A signature entry pointing out of the package.
python3 - escape.ofd <<'PY'
import sys, zipfile
with zipfile.ZipFile("v4.ofd") as good, zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as bad:
    for item in good.infolist():
        data = good.read(item)
        if item.filename == "Doc_0/Signs/Signatures.xml":
            data = data.replace(b'BaseLoc="Sign_0/Signature.xml"', b'BaseLoc="../../../etc/passwd"')
        bad.writestr(item, data)
PY
# The page twice: the signed one, then a changed one under "\" separators,
# which a lenient viewer may show instead.
python3 - duplicate-entry.ofd <<'PY'
import sys, zipfile
page = "Doc_0/Pages/Page_0/Content.xml"
with zipfile.ZipFile("v4.ofd") as good, zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as bad:
    for item in good.infolist():
        data = good.read(item)
        bad.writestr(item, data)
        if item.filename == page:
            bad.writestr(page.replace("/", "\\"), data.replace(b"100.00 CNY", b"900.00 CNY"))
PY
# OFD.xml pointed at a second, unsigned document with a changed page, in
# place of the signed one or as the first of two DocRoots; or a second
# Signatures list named first. The signatures over the first stay intact.
python3 - <<'PY'
import zipfile
root, signatures = b"<ofd:DocRoot>Doc_0/", b"<ofd:Signatures>"
edits = {"other-docroot.ofd": (root, b"<ofd:DocRoot>Doc_1/"),
         "two-docroots.ofd": (root, b"<ofd:DocRoot>Doc_1/Document.xml</ofd:DocRoot>" + root),
         "two-signature-lists.ofd": (signatures, b"<ofd:Signatures>Doc_1/Signatures.xml</ofd:Signatures>" + signatures)}
for name, (old, new) in edits.items():
    with zipfile.ZipFile("v4.ofd") as good, zipfile.ZipFile(name, "w", zipfile.ZIP_DEFLATED) as bad:
        document, page = good.read("Doc_0/Document.xml"), good.read("Doc_0/Pages/Page_0/Content.xml")
        for item in good.infolist():
            data = good.read(item)
            if item.filename == "OFD.xml":
                data = data.replace(old, new)
            bad.writestr(item, data)
        bad.writestr("Doc_1/Document.xml", document)
        bad.writestr("Doc_1/Pages/Page_0/Content.xml", page.replace(b"100.00 CNY", b"900.00 CNY"))
PY
# An unsigned document with a changed page put first in OFD.xml, where a
# reader opens it; the signed one follows intact.
python3 - unsigned-document.ofd <<'PY'
import sys, zipfile
first = b"<ofd:DocBody><ofd:DocRoot>Doc_1/Document.xml</ofd:DocRoot></ofd:DocBody>\n  <ofd:DocBody>"
with zipfile.ZipFile("v4.ofd") as good, zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as bad:
    document, page = good.read("Doc_0/Document.xml"), good.read("Doc_0/Pages/Page_0/Content.xml")
    for item in good.infolist():
        data = good.read(item)
        if item.filename == "OFD.xml":
            data = data.replace(b"<ofd:DocBody>", first, 1)
        bad.writestr(item, data)
    bad.writestr("Doc_1/Document.xml", document)
    bad.writestr("Doc_1/Pages/Page_0/Content.xml", page.replace(b"100.00 CNY", b"900.00 CNY"))
PY
# Correctly signed, but the data hash is not that of Signature.xml.
dir=$work/wrong-datahash
cp -r "$work/v4" "$dir"
ses_v4 "$dir" "$KEY" "$CERT" "$TIME" "$(sm3hex "$dir/Doc_0/Document.xml")" "$PROPERTY" \
  "$dir/Doc_0/Signs/Sign_0/SignedValue.dat"
ofd_zip "$dir" wrong-datahash.ofd
printf 'This is a text file, not an OFD package.\n' > not-a-zip.ofd
