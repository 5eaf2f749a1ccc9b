#pragma once

/// The device files of kernel drivers: one decimal number, read or written in one go. A descriptor
/// of 0 counts as a failure to open, as everywhere in the contract with these drivers.
namespace devicefile {

/// The widest record that a device file has.
constexpr unsigned MAX_WIDTH = 16;

/// Whether the file can be opened for reading.
bool canOpen(const char* path);

/// Reads once, at most `width` bytes, and sets `number` to the decimal number they begin with,
/// clamped to 32 bits; 0 where there is none, also where the read fails. False, and `number` as it
/// was, when the file can't be opened.
bool readDecimal(const char* path, unsigned width, int& number);

/// Writes the digits of `number` as "%d" prints them, cut to `width` bytes or filled up with zero
/// bytes, in one write whose result is not looked at. False when the file can't be opened.
bool writeDecimal(const char* path, unsigned width, unsigned number);

} // namespace devicefile
