#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include <sys/types.h>

#include "base/FileDescriptor.h"

/// Stream sockets between programs of one machine, each with a name in the file system. A path may
/// be longer than a socket's address, as long as the folder's file name is not. As in File.h, `try`
/// functions leave the reason of a failure in `errno`.
namespace board {

/// A socket that accepts connections, and its file. The destructor removes the file, unless another
/// one has taken its place.
class LocalListener {
public:
    /// Makes the file for its owner and group only (mode 0660), in a folder that is made (mode
    /// 0750) if it is missing. Replaces the socket file of a program that has ended. Throws Error
    /// if another program listens there, if something other than a socket has that name, if another
    /// program locks the folder for longer than `patience`, or if the system fails.
    explicit LocalListener(const std::string& path,
                           std::chrono::milliseconds patience = std::chrono::seconds(3));
    ~LocalListener();
    LocalListener(const LocalListener&) = delete;
    LocalListener& operator=(const LocalListener&) = delete;

    /// Readable while a program waits to be accepted.
    int descriptor() const { return m_socket.number(); }
    const std::string& path() const { return m_path; }

    /// The next connection, which does not wait. Not open if no program waits (`errno` is EAGAIN)
    /// or if the system fails.
    FileDescriptor tryAccept() const;

private:
    const std::string m_path;
    FileDescriptor m_socket;
    dev_t m_device = 0; ///< of the file
    ino_t m_inode = 0;
};

/// A connection to the program that listens at `path`. It does not wait, but making it waits for at
/// most `limit`, unless a signal interrupts it, if the program has many connections to accept.
/// `errno` is ENOENT or ECONNREFUSED if no program listens.
FileDescriptor tryConnect(const std::string& path, std::chrono::milliseconds limit);

/// Sends as many bytes as fit without waiting. Returns -1 on failure; a peer that has gone is
/// EPIPE, without a signal.
ssize_t trySend(const FileDescriptor& socket, const void* bytes, std::size_t size);

} // namespace board
