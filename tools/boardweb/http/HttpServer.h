#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <microhttpd.h>

#include "http/Exchanges.h"
#include "http/Listener.h"
#include "http/Routes.h"

namespace boardweb {

/// Serves HTTP on a thread of its own. Limits the number of connections, the memory and time of
/// each, and the size of a request.
class HttpServer {
public:
    /// Starts to serve. Throws Error if the system refuses.
    HttpServer(const Listener& listener, const Sources& sources, std::vector<std::string> names);
    /// Ends all connections.
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// Ends connections that take too long. Call it at the time that it returned last, and at least
    /// every few seconds. Can be called on any thread.
    std::optional<Exchanges::Clock::time_point> endOverdue() { return m_exchanges.endOverdue(); }

private:
    static void watch(void* server, MHD_Connection* connection, void** exchange,
                      MHD_ConnectionNotificationCode code) noexcept;
    static MHD_Result handle(void* server, MHD_Connection* connection, const char* path,
                             const char* method, const char* version, const char* body,
                             std::size_t* bodySize, void** request) noexcept;
    static void complete(void* server, MHD_Connection* connection, void** request,
                         MHD_RequestTerminationCode code) noexcept;

    const Sources m_sources;
    Exchanges m_exchanges;
    const Routes m_routes;
    MHD_Daemon* m_daemon;
};

} // namespace boardweb
