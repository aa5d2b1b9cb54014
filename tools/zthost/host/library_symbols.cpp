#include "host/library_symbols.h"

#include "cli/cli.h"
#include "host/library.h"

namespace {

struct SymbolEntry {
    Symbol symbol;
    const char* area;
    // Exported names, tried in order. The verification tools are C++ static
    // member functions, so their names are the Itanium-mangled ones; enum
    // AlgorithmId may be declared inside the class or beside it.
    const char* names[3];
};

const SymbolEntry kSymbols[] = {
    {Symbol::GetVersion, "entry points", {"ZT_GetVersion"}},
    {Symbol::ComponentInit, "entry points", {"ComponentInit"}},
    {Symbol::CreateComponent, "entry points", {"CreateComponent"}},
    {Symbol::ComponentDestroy, "entry points", {"ComponentDestroy"}},
    {Symbol::CreateComponentObject, "host dispatch", {"_Z21createComponentObject7QStringS_"}},
    {Symbol::NormalTable, "Base64", {"strNormalTable"}},
    {Symbol::Sm2Table, "Base64", {"strSM2Table"}},
    {Symbol::Base64SetTableCode, "Base64", {"ZTBase64SetTableCode"}},
    {Symbol::Base64Decode, "Base64", {"ZTBase64Decode"}},
    {Symbol::Sm3, "SM3", {"ztutil_sm3"}},
    {Symbol::Sm3Starts, "SM3", {"ztutil_sm3_starts"}},
    {Symbol::Sm3Update, "SM3", {"ztutil_sm3_update"}},
    {Symbol::Sm3Finish, "SM3", {"ztutil_sm3_finish"}},
    {Symbol::Sm3File, "SM3", {"ztutil_sm3_file"}},
    {Symbol::Sm3HmacStarts, "SM3", {"ztutil_sm3_hmac_starts"}},
    {Symbol::Sm3HmacUpdate, "SM3", {"ztutil_sm3_hmac_update"}},
    {Symbol::Sm3HmacFinish, "SM3", {"ztutil_sm3_hmac_finish"}},
    {Symbol::GbkToUnicode, "text conversion", {"code_gbk_to_unicode"}},
    {Symbol::GbkToUtf8, "text conversion", {"code_gbk_to_utf8"}},
    {Symbol::Utf8ToUnicode, "text conversion", {"code_utf8_to_unicode"}},
    {Symbol::Utf8ToGbk, "text conversion", {"code_utf8_to_gbk"}},
    {Symbol::UniToOem, "text conversion", {"ff_uni2oem"}},
    {Symbol::Sm3WithSm2, "SM2", {"ztutil_sm3_with_sm2"}},
    {Symbol::Sm2Verify, "SM2", {"SM2Verify"}},
    {Symbol::RsaVerify, "RSA verification", {"RsaVerify"}},
    {Symbol::VerifySignatureValue,
     "verification tools",
     {"_ZN13ZTVerifyTools20VerifySignatureValueE10QByteArrayS0_S0_12enAlgoIDType",
      "_ZN13ZTVerifyTools20VerifySignatureValueE10QByteArrayS0_S0_NS_12enAlgoIDTypeE",
      "_ZN13ZTVerifyTools20VerifySignatureValueERK10QByteArrayS2_S2_12enAlgoIDType"}},
    {Symbol::VerifyCertValidity,
     "verification tools",
     {"_ZN13ZTVerifyTools18VerifyCertValidityE10QByteArray",
      "_ZN13ZTVerifyTools18VerifyCertValidityERK10QByteArray"}},
    {Symbol::ConvertSignDataTo64,
     "verification tools",
     {"_ZN13ZTVerifyTools24ZTSM2ConvertSignDataTo64EPhjS0_j"}},
    {Symbol::ConvertSignDataTo128,
     "verification tools",
     {"_ZN13ZTVerifyTools25ZTSM2ConvertSignDataTo128EPhjS0_j"}},
    {Symbol::SignData64ToAsnData,
     "verification tools",
     {"_ZN13ZTVerifyTools24ZTSM2SignData64ToASNDataEPhjPj"}},
    {Symbol::SignDataTo70Ex,
     "verification tools",
     {"_ZN13ZTVerifyTools23ZTSM2ConvSignDataTo70ExEPhjS0_Pj"}},
    {Symbol::GetPubKeyByCert,
     "verification tools",
     {"_ZN13ZTVerifyTools17ZTGetPubKeyByCertEPhjS0_Pj"}},
};

const SymbolEntry& entryOf(Symbol symbol) {
    for (const SymbolEntry& entry : kSymbols) {
        if (entry.symbol == symbol)
            return entry;
    }
    return kSymbols[0];  // unreachable: every Symbol has a row
}

// Names as they read in messages: the C++ ones demangled by hand.
QString readableName(const SymbolEntry& entry) {
    const QString name = QString::fromLatin1(entry.names[0]);
    if (!name.startsWith(QLatin1String("_ZN13ZTVerifyTools")))
        return name;
    QString rest = name.mid(18);
    int digits = 0;
    while (digits < rest.size() && rest.at(digits).isDigit())
        ++digits;
    const int length = rest.left(digits).toInt();
    return QStringLiteral("ZTVerifyTools::") + rest.mid(digits, length);
}

}  // namespace

void* resolveSymbol(const ZtLibrary& library, Symbol symbol) {
    for (const char* name : entryOf(symbol).names) {
        if (name == nullptr)
            break;
        if (void* address = library.symbol(name))
            return address;
    }
    return nullptr;
}

const char* symbolName(Symbol symbol) {
    return entryOf(symbol).names[0];
}

const char* symbolArea(Symbol symbol) {
    return entryOf(symbol).area;
}

void* requireSymbolAddress(const ZtLibrary& library, Symbol symbol) {
    void* address = resolveSymbol(library, symbol);
    if (address == nullptr) {
        const SymbolEntry& entry = entryOf(symbol);
        throw MissingPiece(
                             QStringLiteral("this libZTUtil.so.1 does not export %1 (%2)")
                                 .arg(readableName(entry), QString::fromLatin1(entry.area)));
    }
    return address;
}

char* normalTable(const ZtLibrary& library) {
    return *static_cast<char**>(requireSymbolAddress(library, Symbol::NormalTable));
}

char* sm2Table(const ZtLibrary& library) {
    return *static_cast<char**>(requireSymbolAddress(library, Symbol::Sm2Table));
}
