// One half of a byte as an upper-case hexadecimal digit.
#include "ztutil/sm2.h"

int int2char(int value, int high) {
    const int nibble = (high != 0 ? value >> 4 : value) & 0x0F;
    return nibble < 10 ? '0' + nibble : 'A' + nibble - 10;
}
