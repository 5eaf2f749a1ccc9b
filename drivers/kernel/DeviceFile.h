#pragma once

/// The device files of kernel drivers: one decimal number, read or written in one call. Descriptor
/// 0 counts as a failure to open, which is part of the contract with these drivers.
namespace devicefile {

/// The width of the widest record in a device file.
constexpr unsigned MAX_WIDTH = 16;

/// Whether the file can be opened for reading.
bool canOpen(const char* path);

/// Reads at most `width` bytes in one call and parses the decimal number at the start of them.
/// Sets `number` to it, clamped to 32 bits, or to 0 if there is none or the read fails. Returns
/// false and leaves `number` alone if the file can't be opened.
bool readDecimal(const char* path, unsigned width, int& number);

/// Writes `number` as "%d" prints it, cut to `width` bytes or padded with zero bytes, in one write
/// whose result is ignored. Returns false if the file can't be opened.
bool writeDecimal(const char* path, unsigned width, unsigned number);

} // namespace devicefile
