#pragma once

#include "BD.h"
#include "BOARD_API.h"
#include "String.h"
#include "TString.h"
#include "XCode.h"

namespace BD {

/// One tag of the board descriptor. Numbers in the data are big-endian.
struct BOARD_API Tag {
    /// A tag without data.
    explicit Tag(TagId tagId = 0) : id(tagId) {}

    /// Replaces the data by a copy of `bytes`; `length` follows. Always succeeds; where memory runs
    /// out the tag is left empty.
    XCode setData(const TString<char>& bytes);

    /// The same for `n` bytes. With null the data becomes empty and `length` becomes `n` all the
    /// same, so `length` may exceed what is held: numbers and addresses count the missing bytes as
    /// 0, texts and dumps end with what is held.
    XCode setData(const char* bytes, unsigned n);

    ///@{
    /// The number where `length` is what the kind needs (1, 2, 4), else 0.
    char getDataChar() const;
    unsigned short getDataUInt16() const;
    unsigned long getDataUInt32() const;
    ///@}
    /// The number for a `length` of 1, 2 or 4, else 0.
    unsigned getDataUInt() const;

    /// Sets `out` to the first `length` bytes, as far as they are held, and returns it.
    String& getDataString(String& out) const;

    /// Sets `out` to the bytes held, as lower-case pairs of digits with blanks between ("0a 1b
    /// ff"), and returns it.
    String& getDataAsHexString(String& out) const;

    TagId id;            ///< what the tag means; 0 is the terminator
    unsigned length = 0; ///< count of data bytes
    TString<char> data;  ///< the bytes held
};

} // namespace BD
