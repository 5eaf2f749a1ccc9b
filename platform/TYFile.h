#pragma once

#include "String.h"
#include "XCode.h"

/// A file on which a framework thread can wait. Only one thread at a time may use an object.
class TYFile {
public:
    /// Does not open the file yet. With `closeAtEnd`, the destructor closes the file. With
    /// `create`, `open` creates a missing file.
    TYFile(const String& path, bool closeAtEnd, bool create);
    ~TYFile();
    TYFile(const TYFile&) = delete;
    TYFile& operator=(const TYFile&) = delete;

    /// Opens the file, after closing it if it is open. `flags` are those of open(2) (0 is
    /// read-only), and `extraFlags` are added to them; `mode` is the mode of a new file. The call
    /// may wait, for example for the writer of a pipe; a framework thread can be ended while it
    /// waits. A failure has a text.
    XCode open(int flags, unsigned mode, int extraFlags);

    /// Reads once, at most `size` bytes, and stores the number of bytes in `count`; 0 is the end of
    /// the file. With `wait`, waits for data; a framework thread can be ended while it waits.
    /// Without `wait`, `count` is also 0 if there is no data yet. On failure, the status has a text
    /// and `count` is 0.
    XCode readOnce(char* buffer, unsigned size, unsigned& count, bool wait);

    /// Closes the file. Drops the descriptor even if the system reports an error. Succeeds if the
    /// file is already closed.
    XCode close();

private:
    String m_path;
    bool m_closeAtEnd;
    bool m_create;
    int m_descriptor = -1;
};
