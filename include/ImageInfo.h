#pragma once

#include "BOARD_API.h"
#include "String.h"
#include "XCode.h"

/// The version of the installed firmware image, read from a small text file that the build of the
/// image wrote.
///
/// Only one thread at a time may use an object. The order of the members is part of the binary
/// interface.
class BOARD_API ImageInfo {
public:
    /// `path` names the information file. The path is copied; the file is not read yet.
    explicit ImageInfo(const String& path);
    virtual ~ImageInfo();

    /// Reads lines 1 to 3 and 6 to 8 of the file and composes `versionString`. A line is cut at its
    /// first zero byte. A line of 127 bytes or more, including its newline, is read as several
    /// lines of at most 126 bytes; the last of these lines may be the newline alone. A member whose
    /// line is missing keeps its value. A directory counts as an empty file.
    ///
    /// If the file can't be opened, fails with code -1, puts "OPEN '%s' FAILED" with the path into
    /// `error` and changes no member. Success leaves `error` alone.
    XCode init(String& error);

private:
    String m_path;

public:
    ///@{
    /// The lines without white space at either end; empty before `init`. Line 2 states the kind of
    /// build.
    String line1;
    String line2;
    String line3;
    String line6;
    String line7;
    String line8;
    ///@}

    /// The version: "<line 1>-<line 7>/<line 3>" if line 2 is "Branch", "<line 1>/<line 3>" if it
    /// is "Test", otherwise line 1 alone.
    String versionString;
};

/// Reads the number at the start of a small file, such as a kernel attribute file. White space and
/// a sign may precede the number. The number is read as hexadecimal after 0x, as octal after 0,
/// otherwise as decimal, and is clamped to -2147483648..2147483647. Only the first 10 bytes are
/// read; if they hold no number, the call succeeds and leaves `value` unchanged. If the file is
/// empty or can't be opened or read, fails with code -1 and no text, and leaves `value` unchanged.
/// Any thread may call this function.
BOARD_API XCode readValueFromFile(const String& path, int& value);
