#include "http/Exchanges.h"

#include <algorithm>
#include <iterator>

#include <sys/socket.h>

namespace boardweb {

/// Ends the connection but leaves the descriptor open until the server has noticed, so that no
/// other connection gets the descriptor's number before then.
void Exchanges::shutDown(Exchange& exchange) {
    exchange.m_end.reset();
    exchange.m_isWaiting = false;
    ::shutdown(exchange.m_socket, SHUT_RDWR);
}

Exchange& Exchanges::add(MHD_Connection* connection, int socket) {
    const std::lock_guard lock(m_mutex);
    if (m_open.size() >= MOST - SPARE) {
        const auto oldest = std::find_if(m_open.begin(), m_open.end(),
                                         [](const Exchange& each) { return each.m_isWaiting; });
        if (oldest != m_open.end())
            shutDown(*oldest);
    }
    Exchange& exchange = m_open.emplace_back(connection, socket);
    exchange.m_place = std::prev(m_open.end());
    exchange.m_end = Clock::now() + REQUEST_LIMIT;
    return exchange;
}

void Exchanges::remove(Exchange& exchange) {
    const std::lock_guard lock(m_mutex);
    m_open.erase(exchange.m_place);
}

void Exchanges::begin(Exchange& exchange) {
    const std::lock_guard lock(m_mutex);
    exchange.m_isWaiting = false;
    exchange.m_end = Clock::now() + ANSWER_LIMIT;
}

void Exchanges::stream(Exchange& exchange) {
    const std::lock_guard lock(m_mutex);
    exchange.m_end.reset();
}

void Exchanges::finish(Exchange& exchange) {
    const std::lock_guard lock(m_mutex);
    exchange.m_answer.reset();
    exchange.m_isWaiting = true;
    exchange.m_end = Clock::now() + REQUEST_LIMIT;
    m_open.splice(m_open.end(), m_open,
                  exchange.m_place); // the one that has waited longest is first
}

std::optional<Exchanges::Clock::time_point> Exchanges::endOverdue() {
    const std::lock_guard lock(m_mutex);
    const auto now = Clock::now();
    std::optional<Clock::time_point> next;
    for (Exchange& exchange : m_open)
        if (exchange.m_end && *exchange.m_end <= now)
            shutDown(exchange);
        else if (exchange.m_end && (!next || *exchange.m_end < *next))
            next = exchange.m_end;
    return next;
}

} // namespace boardweb
