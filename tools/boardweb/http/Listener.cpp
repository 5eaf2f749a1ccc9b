#include "http/Listener.h"

#include <cerrno>
#include <charconv>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"

namespace boardweb {

namespace {

constexpr int MOST_WAITING = 128;

std::string nameOf(const ListenAddress& at) {
    char address[INET6_ADDRSTRLEN] = "";
    if (at.address.any.sa_family == AF_INET) {
        ::inet_ntop(AF_INET, &at.address.v4.sin_addr, address, sizeof address);
        return "http://" + std::string(address) + ":" +
               std::to_string(ntohs(at.address.v4.sin_port)) + "/";
    }
    ::inet_ntop(AF_INET6, &at.address.v6.sin6_addr, address, sizeof address);
    return "http://[" + std::string(address) +
           "]:" + std::to_string(ntohs(at.address.v6.sin6_port)) + "/";
}

} // namespace

ListenAddress::ListenAddress(const std::string& text) {
    if (!text.empty() && text[0] == '/') {
        path = text;
        return;
    }
    const auto colon = text.rfind(':');
    const std::string host = text.substr(0, colon);
    const char* const end = text.data() + text.size();
    const char* const digits = colon == std::string::npos ? end : text.data() + colon + 1;
    std::uint16_t port = 0;
    const auto [rest, error] = std::from_chars(digits, end, port);
    const bool hasPort = error == std::errc() && rest == end;
    const bool hasBrackets = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (hasPort && ::inet_pton(AF_INET, host.c_str(), &address.v4.sin_addr) == 1) {
        address.v4.sin_family = AF_INET;
        address.v4.sin_port = htons(port);
        size = sizeof address.v4;
    } else if (hasPort && hasBrackets &&
               ::inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(),
                           &address.v6.sin6_addr) == 1) {
        address.v6.sin6_family = AF_INET6;
        address.v6.sin6_port = htons(port);
        size = sizeof address.v6;
    } else {
        throw board::Error("can't listen on '" + board::printable(text) +
                           "' (expected ADDRESS:PORT such as 127.0.0.1:8411 or [::1]:8411, or "
                           "/PATH of a Unix socket)");
    }
}

bool ListenAddress::isLocal() const {
    constexpr in_addr_t LOOPBACK = 0x7F, SHIFT = 24;
    if (!path.empty())
        return true;
    if (address.any.sa_family == AF_INET)
        return ntohl(address.v4.sin_addr.s_addr) >> SHIFT == LOOPBACK;
    return IN6_IS_ADDR_LOOPBACK(&address.v6.sin6_addr);
}

Listener::Listener(const ListenAddress& at) {
    if (!at.path.empty()) {
        // A missing folder is a mistake in the path, but LocalListener would create the folder.
        const std::string folder = board::folderOf(at.path);
        board::openFile(folder, O_PATH | O_DIRECTORY, "can't open the folder of the socket");
        m_local = std::make_unique<board::LocalListener>(at.path);
        return;
    }
    m_socket = board::FileDescriptor(
        ::socket(at.address.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int yes = 1;
    if (!m_socket.isOpen() ||
        ::setsockopt(m_socket.number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
        ::bind(m_socket.number(), &at.address.any, at.size) != 0 ||
        ::listen(m_socket.number(), MOST_WAITING) != 0)
        board::failWith(nameOf(at), "can't listen", errno);
}

std::string Listener::name() const {
    if (m_local)
        return m_local->path();
    ListenAddress bound("0.0.0.0:0");
    bound.size = sizeof bound.address;
    if (::getsockname(m_socket.number(), &bound.address.any, &bound.size) != 0)
        throw board::Error("can't tell the address of the socket: " + board::reasonOf(errno));
    return nameOf(bound);
}

} // namespace boardweb
