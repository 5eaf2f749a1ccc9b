#pragma once

/// Conversion of the board descriptor's big-endian numbers. In the names, "c" means the chunk's
/// byte order and "h" the host's. Each function reads or writes exactly as many bytes as its type
/// has, at any address; `width` is ignored.
unsigned cntoh_uint(const char* p, int width);
unsigned long cntoh_uint32(const char* p, int width); ///< 32 bits, even if `long` has more
unsigned short cntoh_uint16(const char* p, int width);
void uint_htonc(unsigned v, char* p, int width);
void uint32_htonc(unsigned long v, char* p, int width);
void uint16_htonc(unsigned short v, char* p, int width);
