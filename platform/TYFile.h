#pragma once

#include "String.h"
#include "XCode.h"

/// A file that a framework thread can wait on. Used by one thread at a time.
class TYFile {
public:
    /// `closeAtEnd`: the destructor closes the file. `create`: opening makes a missing file. Opens
    /// nothing.
    TYFile(const String& path, bool closeAtEnd, bool create);
    ~TYFile();
    TYFile(const TYFile&) = delete;
    TYFile& operator=(const TYFile&) = delete;

    /// Opens the file: `flags` as open(2) takes them (0 is read-only), `mode` for a file that is
    /// made, `extraFlags` added to `flags`. An open file is closed first. May wait, as on a pipe
    /// without a writer; a framework thread can be ended in the wait. Fails with a text.
    XCode open(int flags, unsigned mode, int extraFlags);

    /// One read of at most `size` bytes; `count` gets what was read, 0 at the end of the file.
    /// `wait`: waits for data (a framework thread can be ended in the wait); otherwise no data is
    /// count 0 at once. Fails with a text and count 0.
    XCode readOnce(char* buffer, unsigned size, unsigned& count, bool wait);

    /// Closes the file. The descriptor is forgotten whatever the system says; closed already:
    /// success.
    XCode close();

private:
    String m_path;
    bool m_closeAtEnd;
    bool m_create;
    int m_descriptor = -1;
};
