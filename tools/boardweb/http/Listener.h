#pragma once

#include <memory>
#include <string>

#include <netinet/in.h>

#include "base/FileDescriptor.h"
#include "base/LocalSocket.h"

namespace boardweb {

/// Where to listen.
struct ListenAddress {
    /// Parses "ADDRESS:PORT", with a numeric address, or "/PATH". Throws Error for other texts.
    explicit ListenAddress(const std::string& text);

    /// Whether only programs on this machine can connect.
    bool isLocal() const;

    std::string path; ///< of a Unix socket; empty for an internet address
    union {
        sockaddr any;
        sockaddr_in v4;
        sockaddr_in6 v6;
    } address{};
    socklen_t size = 0;
};

/// A socket that accepts connections of HTTP clients.
class Listener {
public:
    /// Throws Error if the system refuses. For a Unix socket, throws what board::LocalListener
    /// throws, and Error if the socket's folder is missing.
    explicit Listener(const ListenAddress& address);

    int descriptor() const { return m_local ? m_local->descriptor() : m_socket.number(); }

    /// For people: "http://127.0.0.1:8411/", or the path of the socket.
    std::string name() const;

private:
    std::unique_ptr<board::LocalListener> m_local; ///< null for an internet address
    board::FileDescriptor m_socket;
};

} // namespace boardweb
