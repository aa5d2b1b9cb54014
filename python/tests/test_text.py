import base64
import os

import pytest

import ztutil

STANDARD = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="
SM2 = "=" + STANDARD[:-1]  # "=" is the digit 0, "/" pads
TO_SM2 = str.maketrans(STANDARD, SM2)


@pytest.mark.parametrize("length", [0, 1, 2, 3, 4, 5, 57, 1000])
def test_base64_matches_python(length):
    data = os.urandom(length)
    reference = base64.b64encode(data).decode()
    for alphabet, text in (("standard", reference), ("sm2", reference.translate(TO_SM2))):
        assert ztutil.b64encode(data, alphabet) == text
        assert ztutil.b64decode(text, alphabet) == data


@pytest.mark.parametrize("text,alphabet", [
    ("TWE", "standard"), ("TW!u", "standard"), ("TQ=A", "standard"), ("T===", "standard"),
    ("TQ/=", "sm2"), ("TWFu", "hex"),
])
def test_base64_refuses_what_is_not_base64(text, alphabet):
    with pytest.raises(ValueError):
        ztutil.b64decode(text, alphabet)


def test_gbk_matches_python_codec():
    text = "电子印章 GBK 转换：中文、全角，ＡＢＣ 123"
    assert ztutil.utf8_to_gbk(text) == text.encode("gbk")
    assert ztutil.gbk_to_utf8(text.encode("gbk")) == text
    assert ztutil.gbk_to_utf8(b"\xd6\xd0\x80") == "中€"


@pytest.mark.parametrize("call,error", [
    (lambda: ztutil.utf8_to_gbk("caf\u00e9"), UnicodeEncodeError),  # C3 A9: refused by the reader
    (lambda: ztutil.utf8_to_gbk("\U0001F600"), UnicodeEncodeError),  # no GBK code
    (lambda: ztutil.utf8_to_gbk("a\0b"), ValueError),
    (lambda: ztutil.gbk_to_utf8(b"\xd6"), UnicodeDecodeError),  # lead byte at the end
    (lambda: ztutil.gbk_to_utf8(b"\x80A"), UnicodeDecodeError),  # the library drops the A
    (lambda: ztutil.gbk_to_utf8(b"\xff\xff"), UnicodeDecodeError),  # no character
])
def test_gbk_refuses_what_the_library_would_lose(call, error):
    with pytest.raises(error):
        call()
