#pragma once

/// Reads and writes the device files of kernel drivers, each of which holds one decimal number. By
/// contract with the kernel drivers, a file that opens as descriptor 0 counts as not opened.
namespace devicefile {

/// The width of the widest record in a device file.
constexpr unsigned MAX_WIDTH = 16;

/// Whether the file can be opened for reading.
bool canOpen(const char* path);

/// Reads at most `width` bytes in one call and sets `number` to the decimal number that they begin
/// with, clamped to 32 bits. Without a number, or if the read fails, `number` becomes 0. Returns
/// false and leaves `number` alone if the file can't be opened.
bool readDecimal(const char* path, unsigned width, int& number);

/// Writes `number` as "%d" prints it, cut to `width` bytes or padded with zero bytes. Writes it in
/// one call and ignores the result. Returns false if the file can't be opened.
bool writeDecimal(const char* path, unsigned width, unsigned number);

} // namespace devicefile
