// A host linked against the installed library.
#include <ztutil/base64.h>
#include <ztutil/component.h>

#include <cstdio>
#include <cstdlib>

int main() {
    unsigned char man[] = {'M', 'a', 'n'};
    char* text = ZTBase64Encode(man, 3);
    unsigned int length = 0;
    const int sizeResult = ZT_GetVersion(nullptr, &length);
    QObject* component = CreateComponent(QStringLiteral("ZTUTIL.ZTBase64.1"), QString());
    std::printf("%s %d %u %s\n", text ? text : "(null)", sizeResult, length,
                component ? "component" : "no-component");
    const bool ok = text != nullptr && component != nullptr;
    std::free(text);
    delete component;
    return ok ? 0 : 1;
}
