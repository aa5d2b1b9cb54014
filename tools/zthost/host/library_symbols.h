// The plain exported functions and data of libZTUtil.so.1 that zthost calls,
// with the C types a host declares for them. Every exported name zthost
// looks up with dlsym is in library_symbols.cpp, nowhere else.
#ifndef ZTHOST_LIBRARY_SYMBOLS_H
#define ZTHOST_LIBRARY_SYMBOLS_H

#include <QByteArray>
#include <QObject>
#include <QString>
#include <cstdint>

class ZtLibrary;

// The library's SM3 / HMAC-SM3 state record, field for field.
struct Sm3Context {
    std::uint32_t total[2];
    std::uint32_t state[8];
    unsigned char buffer[64];
    unsigned char ipad[64];
    unsigned char opad[64];
};

// enAlgoIDType of the verification tools.
enum AlgorithmId { kAlgoSm2 = 0, kAlgoRsa = 1 };

namespace fn {
// Entry points.
using GetVersion = int (*)(unsigned char*, unsigned int*);
using ComponentInit = int (*)(QObject*);
using CreateComponent = QObject* (*)(const QString&, const QString&);
using ComponentDestroy = void (*)();
using CreateComponentObject = QObject* (*)(QString, QString);
// Base64.
using SetTableCode = char* (*)(char*);
using Base64Decode = unsigned char* (*)(const char*, long*);
// SM3.
using Sm3 = void (*)(unsigned char*, int, unsigned char*);
using Sm3Starts = void (*)(Sm3Context*);
using Sm3Update = void (*)(Sm3Context*, unsigned char*, int);
using Sm3Finish = void (*)(Sm3Context*, unsigned char*);
using Sm3File = int (*)(char*, unsigned char*);
using Sm3HmacStarts = void (*)(Sm3Context*, unsigned char*, int);
// Text conversion.
using GbkToUnicode = int (*)(const char*, unsigned int*, int);
using GbkToUtf8 = int (*)(const char*, char*, int);
using Utf8ToUnicode = int (*)(const char*, unsigned int*, int);
using Utf8ToGbk = int (*)(const char*, char*);
using UniToOem = unsigned short (*)(unsigned int, unsigned short);
// SM2.
using Sm3WithSm2 = int (*)(unsigned char*, int, unsigned char*, int, const char*, int, unsigned char*);
using Sm2Verify = int (*)(unsigned char*, unsigned int, unsigned char*, unsigned int, unsigned char*, unsigned int);
// RSA.
using RsaVerify = int (*)(unsigned char*, unsigned int, unsigned char*, unsigned int,
                          unsigned char*, unsigned int);
// Static functions of ZTVerifyTools (QByteArray by value and by const
// reference are both passed as a pointer to the array, so one type fits both).
using VerifySignatureValue = int (*)(QByteArray, QByteArray, QByteArray, int);
using VerifyCertValidity = int (*)(QByteArray);
using ConvertSignData = int (*)(unsigned char*, unsigned int, unsigned char*, unsigned int);
using SignData64ToAsn = unsigned char* (*)(unsigned char*, unsigned int, unsigned int*);
using SignDataTo70Ex = int (*)(unsigned char*, unsigned int, unsigned char*, unsigned int*);
using GetPubKeyByCert = int (*)(unsigned char*, unsigned int, unsigned char*, unsigned int*);
}  // namespace fn

enum class Symbol {
    GetVersion,
    ComponentInit,
    CreateComponent,
    ComponentDestroy,
    CreateComponentObject,
    NormalTable,
    Sm2Table,
    Base64SetTableCode,
    Base64Decode,
    Sm3,
    Sm3Starts,
    Sm3Update,
    Sm3Finish,
    Sm3File,
    Sm3HmacStarts,
    Sm3HmacUpdate,
    Sm3HmacFinish,
    GbkToUnicode,
    GbkToUtf8,
    Utf8ToUnicode,
    Utf8ToGbk,
    UniToOem,
    Sm3WithSm2,
    Sm2Verify,
    RsaVerify,
    VerifySignatureValue,
    VerifyCertValidity,
    ConvertSignDataTo64,
    ConvertSignDataTo128,
    SignData64ToAsnData,
    SignDataTo70Ex,
    GetPubKeyByCert,
};

// The address of `symbol` in the loaded library, or null when this build of
// the library does not export it.
void* resolveSymbol(const ZtLibrary& library, Symbol symbol);

// The exported name looked for first, and what the symbol belongs to (for
// messages such as "no ztutil_sm3_file (SM3) in this libZTUtil.so.1").
const char* symbolName(Symbol symbol);
const char* symbolArea(Symbol symbol);

// The symbol as a function pointer; throws CommandFailure when it is absent.
void* requireSymbolAddress(const ZtLibrary& library, Symbol symbol);
template <typename Function>
Function requireSymbol(const ZtLibrary& library, Symbol symbol) {
    return reinterpret_cast<Function>(requireSymbolAddress(library, symbol));
}

// The alphabets, read through their exported pointers.
char* normalTable(const ZtLibrary& library);
char* sm2Table(const ZtLibrary& library);

#endif
