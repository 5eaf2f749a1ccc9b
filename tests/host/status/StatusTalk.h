#pragma once

#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/LocalSocket.h"
#include "host/status/CannedAnswers.h"
#include "status/StatusServer.h"
#include "support/TempDir.h"

namespace support {

/// Whether the server's `serve` has something to do.
inline bool isBusy(const board::StatusServer& server) {
    pollfd ready{server.descriptor(), POLLIN, 0};
    return ::poll(&ready, 1, 0) > 0;
}

/// Serves until nothing is left to do, and fails if that never happens.
inline void settle(board::StatusServer& server) {
    for (int round = 0; isBusy(server); ++round) {
        server.serve();
        ASSERT_LT(round, 100000) << "the server is woken again and again";
    }
}

/// A client of a server in the same thread.
class ScriptedClient {
public:
    explicit ScriptedClient(board::StatusServer& server)
        : m_server(server), m_socket(board::tryConnect(server.path(), std::chrono::seconds(5))) {
        EXPECT_TRUE(m_socket.isOpen());
        settle(server);
    }

    /// Sends bytes and lets the server handle them. Returns how many it could send.
    std::size_t say(const std::string& bytes) {
        std::size_t done = 0;
        for (ssize_t sent = 1; done < bytes.size() && sent > 0;) {
            sent = board::trySend(m_socket, bytes.data() + done, bytes.size() - done);
            done += sent > 0 ? static_cast<std::size_t>(sent) : 0;
            settle(m_server);
        }
        return done;
    }

    /// The next message; "" if there is none, and "END" if the server has ended the connection.
    std::string hear() {
        for (;;) {
            const auto end = m_heard.find('\0');
            if (end != std::string::npos) {
                std::string message = m_heard.substr(0, end);
                m_heard.erase(0, end + 1);
                return message;
            }
            std::array<char, 65536> chunk;
            const ssize_t count = ::read(m_socket.number(), chunk.data(), chunk.size());
            if (count == 0 || (count < 0 && errno == ECONNRESET))
                return "END";
            if (count < 0)
                return "";
            m_heard.append(chunk.data(), static_cast<std::size_t>(count));
            settle(m_server);
        }
    }

    /// The reply to one call.
    std::string ask(const std::string& request) {
        say(request + '\0');
        return hear();
    }

    void endSending() {
        ::shutdown(m_socket.number(), SHUT_WR);
        settle(m_server);
    }

private:
    board::StatusServer& m_server;
    const board::FileDescriptor m_socket;
    std::string m_heard;
};

/// The message that calls a method of the host. `more` is text with further members.
inline std::string callOf(const std::string& method, const std::string& more = "") {
    return R"({"method":"org.boarddrivers.Host.)" + method + '"' + more + "}";
}

} // namespace support
