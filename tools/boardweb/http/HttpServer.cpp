#include "http/HttpServer.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "base/Error.h"
#include "base/File.h"

namespace boardweb {

namespace {

/// Enough for the cookies that a browser has from all programs on this machine: the browser sends
/// them to each of these programs.
constexpr std::size_t REQUEST_MEMORY = 16U << 10U;
constexpr unsigned MOST_SILENCE = 15; // seconds

/// Leaves escapes in paths as they are: no valid path needs one, and decoding an escaped zero byte
/// would end the path early.
std::size_t leaveEscaped(void*, MHD_Connection*, char* text) {
    return std::strlen(text);
}

MHD_Result countHeader(void* request, MHD_ValueKind, const char* name, const char*) {
    auto& head = *static_cast<RequestHead*>(request);
    if (::strcasecmp(name, MHD_HTTP_HEADER_HOST) == 0)
        ++head.hosts;
    if (::strcasecmp(name, MHD_HTTP_HEADER_CONTENT_LENGTH) == 0)
        ++head.lengths;
    return MHD_YES;
}

std::string_view headerOf(MHD_Connection* connection, const char* name) {
    const char* const value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
    return value ? value : "";
}

RequestHead headOf(MHD_Connection* connection, const char* method, const char* target) {
    RequestHead head;
    head.method = method;
    head.host = headerOf(connection, MHD_HTTP_HEADER_HOST);
    setTarget(head, target);
    MHD_get_connection_values(connection, MHD_HEADER_KIND, countHeader, &head);
    head.fetchSite = headerOf(connection, "Sec-Fetch-Site");
    head.fetchMode = headerOf(connection, "Sec-Fetch-Mode");
    const std::string_view length = headerOf(connection, MHD_HTTP_HEADER_CONTENT_LENGTH);
    // A request with two lengths counts as one with a body, because either length may be wrong.
    head.hasBody = head.lengths > 1 || length.find_first_not_of('0') != std::string_view::npos ||
                   !headerOf(connection, MHD_HTTP_HEADER_TRANSFER_ENCODING).empty();
    return head;
}

/// The object that `watch` created for the connection; null if memory was short.
Exchange* exchangeOf(MHD_Connection* connection) {
    const auto* const info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
    return info ? static_cast<Exchange*>(info->socket_context) : nullptr;
}

} // namespace

HttpServer::HttpServer(const Listener& listener, const Sources& sources,
                       std::vector<std::string> names)
    : m_sources(sources), m_routes(sources, std::move(names), m_exchanges),
      m_daemon(MHD_start_daemon(MHD_USE_EPOLL | MHD_USE_INTERNAL_POLLING_THREAD |
                                    MHD_ALLOW_SUSPEND_RESUME,
                                0, nullptr, nullptr, &HttpServer::handle, this,           //
                                MHD_OPTION_LISTEN_SOCKET, listener.descriptor(),          //
                                MHD_OPTION_CONNECTION_LIMIT, Exchanges::MOST,             //
                                MHD_OPTION_CONNECTION_MEMORY_LIMIT, REQUEST_MEMORY,       //
                                MHD_OPTION_CONNECTION_TIMEOUT, MOST_SILENCE,              //
                                MHD_OPTION_NOTIFY_CONNECTION, &HttpServer::watch, this,   //
                                MHD_OPTION_NOTIFY_COMPLETED, &HttpServer::complete, this, //
                                MHD_OPTION_UNESCAPE_CALLBACK, &leaveEscaped, nullptr,     //
                                MHD_OPTION_END)) {
    if (!m_daemon)
        throw board::Error("can't start the HTTP server: " + board::reasonOf(errno));
}

HttpServer::~HttpServer() {
    // The first call leaves the listening socket to its owner. The next two resume all paused
    // connections, because the library can't end paused ones.
    MHD_quiesce_daemon(m_daemon);
    m_sources.feed.end();
    m_sources.questions.end(
        {false, std::make_shared<const std::string>(R"({"error":"boardweb is shutting down"})")});
    MHD_stop_daemon(m_daemon);
}

void HttpServer::watch(void* server, MHD_Connection* connection, void** exchange,
                       MHD_ConnectionNotificationCode code) noexcept {
    Exchanges& exchanges = static_cast<HttpServer*>(server)->m_exchanges;
    if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
        if (*exchange)
            exchanges.remove(*static_cast<Exchange*>(*exchange));
        return;
    }
    const auto* const info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    try {
        if (info)
            *exchange = &exchanges.add(connection, info->connect_fd);
    } catch (...) { // no memory: `handle` ends the connection
    }
}

/// Called once when the headers are complete, again when the whole request is, and again when the
/// connection is resumed.
MHD_Result HttpServer::handle(void* server, MHD_Connection* connection, const char* target,
                              const char* method, const char*, const char*, std::size_t* bodySize,
                              void** request) noexcept {
    HttpServer& self = *static_cast<HttpServer*>(server);
    Exchange* const exchange = exchangeOf(connection);
    if (!exchange)
        return MHD_NO;
    try {
        const RequestHead head = headOf(connection, method, target);
        if (!*request) {
            *request = exchange;
            self.m_exchanges.begin(*exchange);
            return head.hasBody ? self.m_routes.refuse(*exchange, head) : MHD_YES;
        }
        if (*bodySize != 0)
            return MHD_NO;
        return self.m_routes.answer(*exchange, head);
    } catch (...) { // no memory
        return MHD_NO;
    }
}

void HttpServer::complete(void* server, MHD_Connection*, void** request,
                          MHD_RequestTerminationCode) noexcept {
    if (*request)
        static_cast<HttpServer*>(server)->m_exchanges.finish(*static_cast<Exchange*>(*request));
}

} // namespace boardweb
