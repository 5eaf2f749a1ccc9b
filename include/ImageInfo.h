#pragma once

#include "BOARD_API.h"
#include "String.h"
#include "XCode.h"

/// What the installed firmware image says of itself, read from a small text file that its build
/// wrote.
///
/// Any thread, one at a time for one object. The order of the members is part of the binary face.
class BOARD_API ImageInfo {
public:
    /// `path` is the information file, copied; nothing is read yet.
    explicit ImageInfo(const String& path);
    virtual ~ImageInfo();

    /// Reads the file's lines 1 to 3 and 6 to 8 and composes `versionString`. A line is cut at its
    /// first zero byte; of a line of 127 bytes and more, each further 126 count as a line of their
    /// own. What the file is too short for keeps what it held: nothing, the first time. A folder
    /// counts as an empty file. Fails with the code -1, no text of its own, "OPEN '%s' FAILED" with
    /// the path in `error`, and no member changed when the file can't be opened; `error` is
    /// otherwise left alone.
    XCode init(String& error);

private:
    String m_path;

public:
    ///@{
    /// The lines without blanks at both ends; empty before `init`. Line 2 names the kind of build.
    String line1;
    String line2;
    String line3;
    String line6;
    String line7;
    String line8;
    ///@}

    /// By the kind of build: "Branch" gives "<line 1>-<line 7>/<line 3>", "Test" "<line 1>/<line
    /// 3>", any other line 1 alone.
    String versionString;
};

/// Reads the number at the start of a small file, such as an attribute file of the kernel: decimal,
/// hexadecimal after 0x or octal after 0, with a sign, after blanks, clamped to
/// -2147483648..2147483647. The first 10 bytes count. Where they hold no number it succeeds and
/// leaves `value` alone. Fails with the code -1, no text and `value` left alone when the file can't
/// be opened or read, or is empty. Any thread.
BOARD_API XCode readValueFromFile(const String& path, int& value);
