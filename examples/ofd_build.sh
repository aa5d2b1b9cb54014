# Shell functions (sourced by make_examples.sh and the OFD fixture script)
# that write a small OFD package: one document, one page, and signatures
# whose Signature.xml lists the files they cover with their digests.
#
#   ofd_start DIR                      OFD.xml, Document.xml, one page
#   ofd_signature_xml DIR N METHOD     Doc_0/Signs/Sign_N/Signature.xml over
#                                      Document.xml and the page
#   ofd_add DIR ID TYPE BASELOC        an entry of Signatures.xml
#   ofd_zip DIR OUT                    the package of OFD.xml and Doc_0/
#                                      (python3's zipfile)

ofd_start() {
  local dir=$1
  mkdir -p "$dir/Doc_0/Pages/Page_0" "$dir/Doc_0/Signs"
  : > "$dir/.entries"
  cat > "$dir/OFD.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<ofd:OFD xmlns:ofd="http://www.ofdspec.org/2016" Version="1.0" DocType="OFD">
  <ofd:DocBody>
    <ofd:DocInfo><ofd:DocID>3f1c0e2a9b7d4e51a6c8d2f0b4e7a913</ofd:DocID><ofd:Title>zthost example invoice</ofd:Title></ofd:DocInfo>
    <ofd:DocRoot>Doc_0/Document.xml</ofd:DocRoot>
    <ofd:Signatures>Doc_0/Signs/Signatures.xml</ofd:Signatures>
  </ofd:DocBody>
</ofd:OFD>
XML
  cat > "$dir/Doc_0/Document.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<ofd:Document xmlns:ofd="http://www.ofdspec.org/2016">
  <ofd:CommonData><ofd:MaxUnitID>10</ofd:MaxUnitID><ofd:PageArea><ofd:PhysicalBox>0 0 210 140</ofd:PhysicalBox></ofd:PageArea></ofd:CommonData>
  <ofd:Pages><ofd:Page ID="1" BaseLoc="Pages/Page_0/Content.xml"/></ofd:Pages>
</ofd:Document>
XML
  cat > "$dir/Doc_0/Pages/Page_0/Content.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<ofd:Page xmlns:ofd="http://www.ofdspec.org/2016">
  <ofd:Content><ofd:Layer ID="2">
    <ofd:TextObject ID="3" Boundary="20 20 170 10" Font="4" Size="5"><ofd:TextCode X="0" Y="5">Invoice No. 2024-001: 1 x seal verification, 100.00 CNY</ofd:TextCode></ofd:TextObject>
  </ofd:Layer></ofd:Content>
</ofd:Page>
XML
}

# The Base64 digest of a file by CheckMethod (SM3 by OID, SHA256 by name).
ofd_check_value() {
  case $2 in
    SHA256) openssl dgst -sha256 -binary "$1" | openssl base64 -A ;;
    *) openssl dgst -sm3 -binary "$1" | openssl base64 -A ;;
  esac
}

ofd_signature_xml() {
  local dir=$1 n=$2 method=$3 sign="$1/Doc_0/Signs/Sign_$2"
  mkdir -p "$sign"
  local refs="" file
  for file in Doc_0/Document.xml Doc_0/Pages/Page_0/Content.xml; do
    refs="$refs      <ofd:Reference FileRef=\"/$file\"><ofd:CheckValue>$(ofd_check_value "$dir/$file" "$method")</ofd:CheckValue></ofd:Reference>
"
  done
  cat > "$sign/Signature.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<ofd:Signature xmlns:ofd="http://www.ofdspec.org/2016">
  <ofd:SignedInfo>
    <ofd:Provider ProviderName="zthost example" Version="1.0" Company="ZTUtil Demo"/>
    <ofd:SignatureMethod>1.2.156.10197.1.501</ofd:SignatureMethod>
    <ofd:SignatureDateTime>20240301093000Z</ofd:SignatureDateTime>
    <ofd:References CheckMethod="$method">
$refs    </ofd:References>
    <ofd:StampAnnot ID="1" PageRef="1" Boundary="140 90 40 40"/>
  </ofd:SignedInfo>
  <ofd:SignedValue>/Doc_0/Signs/Sign_$n/SignedValue.dat</ofd:SignedValue>
</ofd:Signature>
XML
}

ofd_add() {
  echo "    <ofd:Signature ID=\"$2\" Type=\"$3\" BaseLoc=\"$4\"/>" >> "$1/.entries"
}

ofd_zip() {
  local dir=$1 out=$2
  { echo '<?xml version="1.0" encoding="UTF-8"?>'
    echo '<ofd:Signatures xmlns:ofd="http://www.ofdspec.org/2016">'
    echo "  <ofd:MaxSignId>$(wc -l < "$dir/.entries")</ofd:MaxSignId>"
    cat "$dir/.entries"
    echo '</ofd:Signatures>'; } > "$dir/Doc_0/Signs/Signatures.xml"
  python3 - "$dir" "$out" <<'PY'
import os, sys, zipfile
root, out = sys.argv[1], sys.argv[2]
with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as package:
    paths = [os.path.join(root, "OFD.xml")]
    for folder, _, files in sorted(os.walk(os.path.join(root, "Doc_0"))):
        paths += [os.path.join(folder, name) for name in sorted(files)]
    for path in paths:
        info = zipfile.ZipInfo(os.path.relpath(path, root), date_time=(2024, 3, 1, 9, 30, 0))
        info.compress_type = zipfile.ZIP_DEFLATED
        with open(path, "rb") as source:
            package.writestr(info, source.read())
PY
}
