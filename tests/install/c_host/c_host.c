/* A C99 host (also built as C++ without Qt) linked against the installed
 * library. It includes every header of the plain function sets and checks
 * each set against published answers (SM3 and SM2 samples of GB/T 32905 and
 * GM/T 0003.5, SHA-1 of FIPS 180, RFC 4648 Base64, code page 936). Touching
 * the records from C (sm3_context, the DER node tree) checks that C sees the
 * library's layout. */
#include <ztutil/asn.h>
#include <ztutil/base64.h>
#include <ztutil/code_convert.h>
#include <ztutil/rsa.h>
#include <ztutil/sm2.h>
#include <ztutil/sm3.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures = 0;

static void expect_bytes(const char* what, const unsigned char* got, const char* hex) {
    char text[2 * 64 + 1] = "";
    size_t i;
    for (i = 0; i < strlen(hex) / 2; ++i)
        sprintf(text + 2 * i, "%02x", got[i]);
    if (strcmp(text, hex) != 0) {
        fprintf(stderr, "%s: got %s, expected %s\n", what, text, hex);
        ++failures;
    }
}

static void hex_to_bytes(const char* hex, unsigned char* out) {
    size_t i;
    for (i = 0; i < strlen(hex) / 2; ++i) {
        unsigned int byte = 0;
        sscanf(hex + 2 * i, "%2x", &byte);
        out[i] = (unsigned char)byte;
    }
}

static void check_sm3(void) {
    unsigned char abc[] = "abc";
    unsigned char digest[32];
    sm3_context ctx;
    ztutil_sm3(abc, 3, digest);
    expect_bytes("ztutil_sm3(abc)", digest,
                 "66c7f0f462eeedd9d1f2d46bdc10e4e24167c4875cf2f7a2297da02b8f4ba8e0");
    memset(digest, 0, sizeof digest);
    ztutil_sm3_starts(&ctx);
    ztutil_sm3_update(&ctx, abc, 1);
    ztutil_sm3_update(&ctx, abc + 1, 2);
    ztutil_sm3_finish(&ctx, digest);
    expect_bytes("streamed sm3(abc)", digest,
                 "66c7f0f462eeedd9d1f2d46bdc10e4e24167c4875cf2f7a2297da02b8f4ba8e0");
}

/* The sample of GM/T 0003.5 A.2: user ID 1234567812345678, message
 * "message digest", the key pair's public point and the signature (r, s). */
static void check_sm2(void) {
    unsigned char record[132] = {0};
    unsigned char message[] = "message digest";
    unsigned char e[32];
    unsigned char der[72] = {0x30, 0x46, 0x02, 0x21, 0x00};
    hex_to_bytes("09f9df311e5421a150dd7d161e4bc5c672179fad1833fc076bb08ff356f35020", record + 36);
    hex_to_bytes("ccea490ce26775a52dc6ea718cc1aa600aed05fbf35e084a6632f6072da9ad13", record + 100);
    if (ztutil_sm3_with_sm2(message, 14, record, 132, "1234567812345678", 16, e) != 1)
        ++failures;
    expect_bytes("ztutil_sm3_with_sm2", e,
                 "f0b43e94ba45accaace692ed534382eb17e6ab5a19ce7b31f4486fdfc0d28640");
    hex_to_bytes("f5a03b0648d2c4630eeac513e1bb81a15944da3827d5b74143ac7eaceee720b3", der + 5);
    der[37] = 0x02;
    der[38] = 0x21;
    hex_to_bytes("b1b6aa29df212fd8763182bc0d421ca1bb9038fd1f7f42d4840b69c485bbc1aa", der + 40);
    if (SM2Verify(record, 132, e, 32, der, sizeof der) != 0) {
        fprintf(stderr, "SM2Verify rejected the standard's sample signature\n");
        ++failures;
    }
    e[31] ^= 1;
    if (SM2Verify(record, 132, e, 32, der, sizeof der) != 1) {
        fprintf(stderr, "SM2Verify accepted a changed digest\n");
        ++failures;
    }
}

static void check_digest_choice(void) {
    unsigned char abc[] = "abc";
    unsigned char digest[32];
    unsigned int length = 0;
    enDigestType type = DIGEST_SHA1;
    if (ZTDigest(abc, 3, digest, &length, type) != 1 || length != 20)
        ++failures;
    expect_bytes("ZTDigest(abc, DIGEST_SHA1)", digest, "a9993e364706816aba3e25717850c26c9cd0d89d");
}

static void check_base64(void) {
    unsigned char man[] = "Man";
    long length = 0;
    char* text = ZTBase64Encode(man, 3);
    unsigned char* bytes = ZTBase64Decode("TWE=", &length);
    if (text == NULL || strcmp(text, "TWFu") != 0 || bytes == NULL || length != 2 ||
        memcmp(bytes, "Ma", 2) != 0) {
        fprintf(stderr, "Base64: encoded %s, decoded %ld bytes\n", text ? text : "(null)", length);
        ++failures;
    }
    free(text);
    free(bytes);
}

static void check_gbk(void) {
    char gbk[16] = {0};
    const int written = code_utf8_to_gbk("\xe4\xb8\xad\xe6\x96\x87", gbk); /* U+4E2D U+6587 */
    if (written != 4)
        ++failures;
    expect_bytes("code_utf8_to_gbk", (const unsigned char*)gbk, "d6d0cec4");
}

/* SEQUENCE { INTEGER 5, OCTET STRING "ab" } built, encoded, parsed back and
 * walked through the node fields. */
static void check_asn(void) {
    unsigned char encoded[16] = {0};
    stASN_BLOCK_HEADER* root = ASNAddStruct(0x30, NULL);
    stASN_BLOCK_HEADER* parsed;
    ASNSetBlockData(ASNAddSample(0x02, root), (const unsigned char*)"\x05", 1);
    ASNSetBlockData(ASNAddSample(0x04, root), (const unsigned char*)"ab", 2);
    ASNUpdate(root);
    if (root->blockLength != 9 || ASNBuildData(root, encoded, sizeof encoded) != 1)
        ++failures;
    expect_bytes("ASNBuildData", encoded, "300702010504026162");
    ASNDeleteBlock(root);

    parsed = ASNAddByData(NULL, encoded, 9);
    if (parsed == NULL || parsed->firstChild == NULL || parsed->firstChild->node->tag != 0x02 ||
        parsed->firstChild->node->dataLength != 1 || parsed->firstChild->node->data[0] != 5 ||
        parsed->lastChild->node->tag != 0x04 || parsed->lastChild->node->dataLength != 2) {
        fprintf(stderr, "the parsed DER tree does not read back from C\n");
        ++failures;
    }
    ASNDeleteBlock(parsed);
}

int main(void) {
    check_sm3();
    check_sm2();
    check_digest_choice();
    check_base64();
    check_gbk();
    check_asn();
    printf("\nc host: %s\n", failures == 0 ? "all checks passed" : "FAILED");
    return failures == 0 ? 0 : 1;
}
