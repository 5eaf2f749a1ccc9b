#include "ByteOrder.h"

namespace {

// The cast is needed because plain `char` is signed on some machines and unsigned on the board.
unsigned byteAt(const char* p, int index) {
    return static_cast<unsigned char>(p[index]);
}

} // namespace

unsigned cntoh_uint(const char* p, int) {
    return byteAt(p, 0) << 24 | byteAt(p, 1) << 16 | byteAt(p, 2) << 8 | byteAt(p, 3);
}

unsigned long cntoh_uint32(const char* p, int width) {
    return cntoh_uint(p, width);
}

unsigned short cntoh_uint16(const char* p, int) {
    return static_cast<unsigned short>(byteAt(p, 0) << 8 | byteAt(p, 1));
}

void uint_htonc(unsigned v, char* p, int) {
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<char>(v >> (24 - 8 * i) & 0xFFU);
}

void uint32_htonc(unsigned long v, char* p, int width) {
    uint_htonc(static_cast<unsigned>(v), p, width);
}

void uint16_htonc(unsigned short v, char* p, int) {
    p[0] = static_cast<char>(v >> 8);
    p[1] = static_cast<char>(v & 0xFF);
}
