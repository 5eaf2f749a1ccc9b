#pragma once

#include "BD.h"
#include "BOARD_API.h"
#include "String.h"
#include "TString.h"
#include "XCode.h"

namespace BD {

/// One tag of the board descriptor. Numbers in the data are big-endian.
struct BOARD_API Tag {
    /// Creates a tag without data.
    explicit Tag(TagId tagId = 0) : id(tagId) {}

    /// Replaces the data with a copy of `bytes` and sets `length` to the number of bytes. Always
    /// returns success; if memory runs out, the tag is left empty.
    XCode setData(const TString<char>& bytes);

    /// Does the same with the `n` bytes at `bytes`. If `bytes` is null, the data becomes empty, but
    /// `length` becomes `n`. A number or an address is then read as if the missing bytes were 0; a
    /// text or a dump ends where the data ends.
    XCode setData(const char* bytes, unsigned n);

    ///@{
    /// Return the data as a number if `length` is the width of the number (1, 2 or 4 bytes),
    /// otherwise 0.
    char getDataChar() const;
    unsigned short getDataUInt16() const;
    unsigned long getDataUInt32() const;
    ///@}
    /// Returns the data as a number if `length` is 1, 2 or 4, otherwise 0.
    unsigned getDataUInt() const;

    /// Sets `out` to the first `length` bytes, or to the whole data if it is shorter, and returns
    /// `out`.
    String& getDataString(String& out) const;

    /// Sets `out` to the data in lower-case hexadecimal pairs separated by blanks ("0a 1b ff"), and
    /// returns `out`.
    String& getDataAsHexString(String& out) const;

    TagId id;            ///< defines what the tag means; 0 for a terminator
    unsigned length = 0; ///< number of data bytes
    TString<char> data;  ///< the data bytes
};

} // namespace BD
