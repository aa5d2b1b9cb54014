#include "readers/der_builder.h"

namespace der {

QByteArray header(unsigned char tagOctet, int length) {
    QByteArray out(1, char(tagOctet));
    if (length < 0x80)
        return out + char(length);
    QByteArray octets;
    for (unsigned int rest = unsigned(length); rest > 0; rest >>= 8)
        octets.prepend(char(rest & 0xFF));
    return out + char(0x80 | octets.size()) + octets;
}

}  // namespace der
