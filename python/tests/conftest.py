"""Keys, certificates and signatures made by the openssl command, the
outside reference the module's results are checked against."""
import pathlib
import subprocess

import pytest

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
USER_ID = "1234567812345678"


def openssl(*args, data=None):
    return subprocess.run(["openssl", *map(str, args)], input=data, stdout=subprocess.PIPE,
                          check=True).stdout


def der_integers(der):
    """r and s of a DER signature as openssl asn1parse reads them."""
    lines = openssl("asn1parse", "-inform", "DER", data=der).decode().splitlines()
    return [bytes.fromhex(line.split(":")[-1].rjust(64, "0"))
            for line in lines if "INTEGER" in line]


class Signer:
    """An SM2 key pair with a self-signed certificate, signing with openssl."""

    def __init__(self, folder):
        self.key = folder / "sm2.key"
        openssl("genpkey", "-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:SM2", "-out", self.key)
        # The last 65 bytes of SubjectPublicKeyInfo are the point 04 || x || y.
        self.point = openssl("pkey", "-in", self.key, "-pubout", "-outform", "DER")[-65:]
        self.certificate = openssl("req", "-x509", "-new", "-key", self.key, "-sm3", "-sigopt",
                                   f"distid:{USER_ID}", "-subj", "/CN=ztutil python test",
                                   "-days", "2", "-outform", "DER")

    def sign(self, data):
        return openssl("dgst", "-sm3", "-sign", self.key, "-sigopt", f"distid:{USER_ID}", data=data)


@pytest.fixture(scope="session")
def signer(tmp_path_factory):
    return Signer(tmp_path_factory.mktemp("sm2"))
