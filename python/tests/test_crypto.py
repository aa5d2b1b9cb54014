import pytest

import ztutil
from conftest import EXAMPLES, der_integers, openssl

# GB/T 32905 samples, and the SM2 sample of GM/T 0003.5 (annex A.2): the key,
# the message "message digest", e with user ID 1234567812345678, (r, s).
SM3_SAMPLES = [
    (b"abc", "66c7f0f462eeedd9d1f2d46bdc10e4e24167c4875cf2f7a2297da02b8f4ba8e0"),
    (b"abcd" * 16, "debe9ff92275b8a138604889c18e5a4d6fdb70e5387e5765293dcba39c0c5732"),
    (b"", "1ab21d8355cfa17f8e61194831e81a8f22bec8c728fefb747ed035eb5082aa2b"),
]
SAMPLE_POINT = bytes.fromhex(
    "09f9df311e5421a150dd7d161e4bc5c672179fad1833fc076bb08ff356f35020"
    "ccea490ce26775a52dc6ea718cc1aa600aed05fbf35e084a6632f6072da9ad13")
SAMPLE_E = "f0b43e94ba45accaace692ed534382eb17e6ab5a19ce7b31f4486fdfc0d28640"
SAMPLE_RS = bytes.fromhex(
    "f5a03b0648d2c4630eeac513e1bb81a15944da3827d5b74143ac7eaceee720b3"
    "b1b6aa29df212fd8763182bc0d421ca1bb9038fd1f7f42d4840b69c485bbc1aa")


@pytest.mark.parametrize("data,digest", SM3_SAMPLES)
def test_sm3_samples(data, digest):
    assert ztutil.sm3(data).hex() == digest


@pytest.mark.parametrize("key_length", [1, 16, 64, 65, 100])
def test_hmac_sm3_matches_openssl(key_length):
    key, data = bytes(range(7, 7 + key_length)), b"the data" * 20
    reference = openssl("mac", "-digest", "SM3", "-macopt", f"hexkey:{key.hex()}", "-binary",
                        "HMAC", data=data)
    assert ztutil.hmac_sm3(key, data) == reference


def test_standard_sample_in_every_key_and_signature_form():
    record = ztutil.public_key_record(SAMPLE_POINT)
    assert ztutil.sm3_with_sm2(b"message digest", record).hex() == SAMPLE_E
    for key in (SAMPLE_POINT, b"\x04" + SAMPLE_POINT, record):
        for signature in (SAMPLE_RS, ztutil.signature_to_128(SAMPLE_RS),
                          ztutil.signature_to_der(SAMPLE_RS)):
            assert ztutil.sm2_verify(key, b"message digest", signature)
    assert not ztutil.sm2_verify(SAMPLE_POINT, b"message digesT", SAMPLE_RS)
    assert not ztutil.sm2_verify(SAMPLE_POINT, b"message digest", SAMPLE_RS[32:] + SAMPLE_RS[:32])


def test_openssl_signatures(signer):
    assert ztutil.certificate_public_key(signer.certificate) == signer.point
    for index in range(8):
        data = b"document %d" % index
        der = signer.sign(data)
        r, s = der_integers(der)
        assert ztutil.sm2_verify(signer.point, data, der)
        assert ztutil.sm2_verify_certificate(signer.certificate, data, r + s)
        assert not ztutil.sm2_verify(signer.point, data + b".", der)
        if all(value[0] != 0 for value in (r, s)):  # minimal DER keeps 32 or 33 bytes
            assert ztutil.signature_to_64(der) == r + s
            assert ztutil.signature_to_128(der) == bytes(32) + r + bytes(32) + s
            assert ztutil.signature_to_der(r + s) == der


def test_rsa_signature_made_by_openssl():
    certificate = (EXAMPLES / "rsa-cert.der").read_bytes()
    signature = openssl("dgst", "-sha1", "-sign", EXAMPLES / "rsa.key", data=b"rsa data")
    assert ztutil.rsa_verify(certificate, b"rsa data", signature)
    assert not ztutil.rsa_verify(certificate, b"other data", signature)


def test_library_messages_on_standard_output(capfd):
    assert ztutil.sm2_verify(SAMPLE_POINT, b"message digest", SAMPLE_RS)
    assert capfd.readouterr().out == "[SM2Verify] call in ... \n"
    assert not ztutil.sm2_verify(SAMPLE_POINT, b"other", SAMPLE_RS)
    assert capfd.readouterr().out == "[SM2Verify] call in ... \nSM2_verify failed"


@pytest.mark.parametrize("call,error", [
    (lambda: ztutil.sm3("text"), TypeError),
    (lambda: ztutil.public_key_record(bytes(63)), ValueError),
    (lambda: ztutil.public_key_record(b"\x02" + bytes(64)), ValueError),
    (lambda: ztutil.sm3_with_sm2(b"m", SAMPLE_POINT, user_id=b""), ValueError),
    (lambda: ztutil.sm3_with_sm2(b"m", SAMPLE_POINT, user_id=bytes(8192)), ValueError),
    (lambda: ztutil.sm2_verify(SAMPLE_POINT, b"m", bytes(70)), ValueError),
    (lambda: ztutil.signature_to_64(bytes.fromhex("3006020101020101")), ValueError),
    (lambda: ztutil.certificate_public_key(b"not a certificate"), ValueError),
    (lambda: ztutil.rsa_verify(b"", b"data", b"sig"), ValueError),
])
def test_misuse_raises(call, error):
    with pytest.raises(error):
        call()
