#pragma once

#include <chrono>
#include <list>
#include <mutex>
#include <optional>

#include <microhttpd.h>

#include "link/Questions.h"

namespace boardweb {

/// A client's connection and the state of its present request.
class Exchange final : public Questions::Asker {
public:
    using Clock = std::chrono::steady_clock;

    Exchange(MHD_Connection* connection, int socket) : m_connection(connection), m_socket(socket) {}

    MHD_Connection* connection() const { return m_connection; }
    int socket() const { return m_socket; }

    void pause() override { MHD_suspend_connection(m_connection); }
    void resume(const Answer& answer) override {
        m_answer = answer;
        MHD_resume_connection(m_connection);
    }
    /// The host's answer that the client waited for; empty if it has not asked the host.
    const std::optional<Answer>& answer() const { return m_answer; }

private:
    friend class Exchanges;

    MHD_Connection* const m_connection;
    const int m_socket;
    std::optional<Answer> m_answer;
    std::list<Exchange>::iterator m_place;
    std::optional<Clock::time_point> m_end; ///< when to end the connection; empty for event streams
    bool m_isWaiting = true;                ///< no complete headers have arrived
};

/// All connections. Ends those that take too long, and makes room for new ones: a client can't keep
/// others out by holding connections open. Can be used on any thread.
class Exchanges {
public:
    using Clock = Exchange::Clock;
    static constexpr unsigned MOST = 128;
    /// If no more than this many places are free, a new connection ends one that waits for a
    /// request.
    static constexpr unsigned SPARE = 16;
    /// How long the headers of a request may take to arrive, counted from the start of the
    /// connection or the end of the previous answer.
    static constexpr std::chrono::seconds REQUEST_LIMIT{10};
    /// How long it may take from the complete headers until the answer is sent.
    static constexpr std::chrono::seconds ANSWER_LIMIT{60};

    /// `socket` must not be closed before `remove`. The returned object exists until then.
    Exchange& add(MHD_Connection* connection, int socket);
    void remove(Exchange& exchange);

    /// Call it when the request's headers are complete.
    void begin(Exchange& exchange);
    /// Call it if the answer is a stream that does not end.
    void stream(Exchange& exchange);
    /// Call it when the answer has been sent, or could not be sent.
    void finish(Exchange& exchange);

    /// Ends the connections whose time has run out. The result is when the next connection must be
    /// ended; empty if no connection has a limit.
    std::optional<Clock::time_point> endOverdue();

private:
    static void shutDown(Exchange& exchange);

    std::mutex m_mutex;
    std::list<Exchange> m_open;
};

} // namespace boardweb
