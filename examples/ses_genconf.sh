# Shell functions (sourced by make_examples.sh and the OFD fixture script)
# that lay out electronic seals and seal signatures with
# `openssl asn1parse -genconf` and sign them with `openssl dgst -sm3`
# (SM2, user ID 1234567812345678), independently of libZTUtil and zthost.
#
# A structure is built from config sections; a seal's sections are kept in
# a file so that a seal signature can embed the very same seal.

SM2_USER_ID="1234567812345678"
SM2_WITH_SM3="1.2.156.10197.1.501"

hexof() { od -An -v -tx1 "$1" | tr -d ' \n'; }
texthex() { printf '%s' "$1" | od -An -v -tx1 | tr -d ' \n'; }

# genconf CONFIG OUT: the DER that CONFIG describes ("asn1 = ..." first).
genconf() { openssl asn1parse -genconf "$1" -out "$2" >/dev/null; }

# sm2_sign KEY IN OUT: an SM2 signature (DER) over IN.
sm2_sign() { openssl dgst -sm3 -sign "$1" -sigopt "distid:$SM2_USER_ID" -out "$3" "$2"; }

# sm2_raw SIG.der: r || s as 128 hex digits.
sm2_raw() {
  openssl asn1parse -inform DER -in "$1" | sed -n 's/.*prim: INTEGER *://p' |
    while read -r value; do printf '%064s' "$value" | tr ' ' 0; done | tr 'A-F' 'a-f'
}

# sm2_sign_short KEY IN OUT: like sm2_sign, but tries until r or s has a
# DER INTEGER shorter than 32 bytes (about one signature in 128).
sm2_sign_short() {
  local tries=0
  while [ $tries -lt 5000 ]; do
    sm2_sign "$1" "$2" "$3"
    openssl asn1parse -inform DER -in "$3" | grep -q 'l= *\(3[01]\|[12][0-9]\) prim: INTEGER' && return 0
    tries=$((tries + 1))
  done
  echo "no short signature after $tries tries" >&2
  return 1
}

# seal_sections DIR LAYOUT VERSION ID NAME SIGNER_CERT START END PICTURE
# Writes DIR/sealinfo.sections: [sealinfo] and what it uses. LAYOUT v4
# writes GeneralizedTime and a certificate list type, v1 UTCTime; START and
# END are YYYYMMDDhhmmssZ.
seal_sections() {
  local dir=$1 layout=$2 version=$3 id=$4 name=$5 signer=$6 start=$7 end=$8 picture=$9
  local time=GENTIME from=$start to=$end listtype=""
  if [ "$layout" = v1 ]; then time=UTCTIME; from=${start:2}; to=${end:2}; else listtype="certlisttype = INTEGER:1"; fi
  cat > "$dir/sealinfo.sections" <<CNF
[sealinfo]
header = SEQUENCE:sealheader
esid = IA5STRING:$id
property = SEQUENCE:sealproperty
picture = SEQUENCE:sealpicture
[sealheader]
id = IA5STRING:ES
version = INTEGER:$version
vid = IA5STRING:ZTHOST
[sealproperty]
type = INTEGER:1
name = FORMAT:UTF8,UTF8String:$name
$listtype
certlist = SEQUENCE:sealcerts
createdate = $time:$from
validstart = $time:$from
validend = $time:$to
[sealcerts]
cert = FORMAT:HEX,OCTETSTRING:$(hexof "$signer")
[sealpicture]
type = IA5STRING:PNG
data = FORMAT:HEX,OCTETSTRING:$(hexof "$picture")
width = INTEGER:40
height = INTEGER:40
CNF
}

# make_seal DIR LAYOUT MAKER_KEY MAKER_CERT OUT: the seal of
# DIR/sealinfo.sections signed by the maker (v4: over the seal information;
# v1: over SEQUENCE { information, maker certificate, algorithm }). Leaves
# DIR/seal.sections, the whole seal as sections ([seal] first).
make_seal() {
  local dir=$1 layout=$2 key=$3 cert=$4 out=$5
  local certline="cert = FORMAT:HEX,OCTETSTRING:$(hexof "$cert")"
  if [ "$layout" = v1 ]; then
    { echo "asn1 = SEQUENCE:signed"; echo "[signed]"; echo "info = SEQUENCE:sealinfo"; echo "$certline"
      echo "alg = OID:$SM2_WITH_SM3"; cat "$dir/sealinfo.sections"; } > "$dir/signed.cnf"
  else
    { echo "asn1 = SEQUENCE:sealinfo"; cat "$dir/sealinfo.sections"; } > "$dir/signed.cnf"
  fi
  genconf "$dir/signed.cnf" "$dir/maker-signed.der"
  sm2_sign "$key" "$dir/maker-signed.der" "$dir/maker.sig"
  if [ "$layout" = v1 ]; then
    cat > "$dir/seal.sections" <<CNF
[seal]
info = SEQUENCE:sealinfo
signinfo = SEQUENCE:sealsigninfo
[sealsigninfo]
$certline
alg = OID:$SM2_WITH_SM3
sig = FORMAT:HEX,BITSTRING:$(hexof "$dir/maker.sig")
CNF
  else
    cat > "$dir/seal.sections" <<CNF
[seal]
info = SEQUENCE:sealinfo
$certline
alg = OID:$SM2_WITH_SM3
sig = FORMAT:HEX,BITSTRING:$(hexof "$dir/maker.sig")
CNF
  fi
  cat "$dir/sealinfo.sections" >> "$dir/seal.sections"
  { echo "asn1 = SEQUENCE:seal"; cat "$dir/seal.sections"; } > "$dir/seal.cnf"
  genconf "$dir/seal.cnf" "$out"
}

# signed_value SIG.der RAW: the BITSTRING line of a signature, DER or, with
# RAW=raw, the 64-byte r || s.
signature_line() {
  if [ "$2" = raw ]; then echo "sig = FORMAT:HEX,BITSTRING:$(sm2_raw "$1")"
  else echo "sig = FORMAT:HEX,BITSTRING:$(hexof "$1")"; fi
}

# ses_v4 DIR KEY CERT TIME HASHHEX PROPERTY OUT [ext] [timestamp] [raw] [short]
# A GB/T 38540 seal signature over the seal of DIR/seal.sections: version 4,
# GeneralizedTime TIME, data hash HASHHEX; optionally with extension data,
# a time stamp, the signature as 64-byte r || s, or a signature with a
# short INTEGER.
ses_v4() {
  local dir=$1 key=$2 cert=$3 time=$4 hash=$5 property=$6 out=$7; shift 7
  local ext="" stamp="" form=der sign=sm2_sign
  for option in "$@"; do
    case $option in ext) ext=1 ;; timestamp) stamp=1 ;; raw) form=raw ;; short) sign=sm2_sign_short ;; esac
  done
  {
    echo "[tbs]"
    echo "version = INTEGER:4"
    echo "seal = SEQUENCE:seal"
    echo "time = GENTIME:$time"
    echo "datahash = FORMAT:HEX,BITSTRING:$hash"
    echo "property = IA5STRING:$property"
    [ -n "$ext" ] && printf '%s\n' "ext = EXPLICIT:0,SEQUENCE:extdatas" "[extdatas]" "e1 = SEQUENCE:extdata" \
      "[extdata]" "id = OID:1.2.156.10197.6.1.4.9" "critical = BOOLEAN:FALSE" "value = FORMAT:HEX,OCTETSTRING:0102"
    cat "$dir/seal.sections"
  } > "$dir/tbs.sections"
  { echo "asn1 = SEQUENCE:tbs"; cat "$dir/tbs.sections"; } > "$dir/tbs.cnf"
  genconf "$dir/tbs.cnf" "$dir/tbs.der"
  $sign "$key" "$dir/tbs.der" "$dir/tbs.sig"
  {
    echo "asn1 = SEQUENCE:whole"
    echo "[whole]"
    echo "tbs = SEQUENCE:tbs"
    echo "cert = FORMAT:HEX,OCTETSTRING:$(hexof "$cert")"
    echo "alg = OID:$SM2_WITH_SM3"
    signature_line "$dir/tbs.sig" "$form"
    [ -n "$stamp" ] && echo "stamp = EXPLICIT:0,FORMAT:HEX,BITSTRING:$(texthex "a stand-in time stamp token")"
    cat "$dir/tbs.sections"
  } > "$dir/whole.cnf"
  genconf "$dir/whole.cnf" "$out"
}

# ses_v1 DIR VERSION KEY CERT TIME HASHHEX PROPERTY OUT: a GM/T 0031 seal
# signature with the time text in a BIT STRING, as producers write it.
ses_v1() {
  local dir=$1 version=$2 key=$3 cert=$4 time=$5 hash=$6 property=$7 out=$8
  {
    echo "[tbs]"
    echo "version = INTEGER:$version"
    echo "seal = SEQUENCE:seal"
    echo "time = FORMAT:HEX,BITSTRING:$(texthex "$time")"
    echo "datahash = FORMAT:HEX,BITSTRING:$hash"
    echo "property = IA5STRING:$property"
    echo "cert = FORMAT:HEX,OCTETSTRING:$(hexof "$cert")"
    echo "alg = OID:$SM2_WITH_SM3"
    cat "$dir/seal.sections"
  } > "$dir/tbs.sections"
  { echo "asn1 = SEQUENCE:tbs"; cat "$dir/tbs.sections"; } > "$dir/tbs.cnf"
  genconf "$dir/tbs.cnf" "$dir/tbs.der"
  sm2_sign "$key" "$dir/tbs.der" "$dir/tbs.sig"
  { echo "asn1 = SEQUENCE:whole"; echo "[whole]"; echo "tbs = SEQUENCE:tbs"; signature_line "$dir/tbs.sig" der
    cat "$dir/tbs.sections"; } > "$dir/whole.cnf"
  genconf "$dir/whole.cnf" "$out"
}
