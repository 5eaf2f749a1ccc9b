#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include <sys/types.h>

#include "base/FileDescriptor.h"

/// Stream sockets between programs on one machine. Each socket has a name in the file system. A
/// path that is too long for a socket address works too if its file name is short enough. As in
/// File.h, `try` functions leave the reason of a failure in `errno`.
namespace board {

/// A socket that accepts connections, and the socket's file. The destructor removes the file,
/// unless another file has taken its place.
class LocalListener {
public:
    /// Makes the file, which only its owner and group may use (mode 0660), and its folder (mode
    /// 0750) if that is missing. Replaces the socket file of a program that has ended. Throws Error
    /// if another program listens at `path`, if something other than a socket is there, if another
    /// program locks the folder for longer than `patience`, or if a system call fails.
    explicit LocalListener(const std::string& path,
                           std::chrono::milliseconds patience = std::chrono::seconds(3));
    ~LocalListener();
    LocalListener(const LocalListener&) = delete;
    LocalListener& operator=(const LocalListener&) = delete;

    /// Readable while a program waits to be accepted.
    int descriptor() const { return m_socket.number(); }
    const std::string& path() const { return m_path; }

    /// Accepts the next connection, which is non-blocking. The result is not open if no program
    /// waits (`errno` is EAGAIN) or if the system call fails.
    FileDescriptor tryAccept() const;

private:
    const std::string m_path;
    FileDescriptor m_socket;
    dev_t m_device = 0; ///< of the file
    ino_t m_inode = 0;
};

/// Connects to the program that listens at `path`. The connection is non-blocking. If the program
/// has too many connections to accept, waits for at most `limit`, or until a signal that this
/// program handles. The result is not open on failure; `errno` is ENOENT or ECONNREFUSED if no
/// program listens.
FileDescriptor tryConnect(const std::string& path, std::chrono::milliseconds limit);

/// Sends as many bytes as fit without waiting. Returns -1 on failure. If the peer is gone, `errno`
/// is EPIPE, and no signal is sent.
ssize_t trySend(const FileDescriptor& socket, const void* bytes, std::size_t size);

} // namespace board
