#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

#include "base/LocalSocket.h"
#include "client/Varlink.h"
#include "status/StatusCalls.h"

namespace board {

/// Answers Varlink calls on a host's status socket, without ever waiting for a client.
///
/// At most 64 clients are connected. A further client gets an error and is disconnected. A client
/// that sends something other than a request, or a message of more than 4 KiB, is disconnected.
/// Requests of one client are answered in order. The next request is handled once the client has
/// read all replies, so a client that does not read costs only the memory of one reply.
///
/// For a client that monitors events and does not read, the server keeps up to 64 KiB of events, in
/// addition to what the socket holds. Later events are only counted, and the client is told the
/// number as soon as it reads again. A client that monitors the LEDs and does not read gets their
/// latest state as soon as it has read what its socket holds. The server reads nothing more from a
/// client that monitors something.
///
/// One thread.
class StatusServer {
public:
    static constexpr std::size_t MOST_CLIENTS = 64;
    static constexpr std::size_t LARGEST_REQUEST = 4096;
    static constexpr std::size_t MOST_WAITING_EVENTS = 65536; ///< in bytes, for one client

    /// Listens on `path`. `answers` must outlive the server. Throws Error as LocalListener does.
    StatusServer(const std::string& path, const StatusAnswers& answers);

    /// Readable while `serve` has something to do.
    int descriptor() const { return m_poll.number(); }
    const std::string& path() const { return m_listener.path(); }
    std::size_t clients() const { return m_clients.size(); }

    /// Handles part of what is ready: at most one request per client, for a limited number of
    /// clients.
    void serve();

    /// Sends an event to all clients that monitor events. See above for those that do not read.
    void publish(const nlohmann::ordered_json& event);

    /// Whether a client monitors the LEDs.
    bool isAskedForLeds() const;
    /// Sends the LEDs that are lit to each client that monitors them, unless its last reply was the
    /// same.
    void publishLeds(std::uint32_t lit);

private:
    enum class Interest { NONE, EVENTS, LEDS };

    struct Client {
        explicit Client(FileDescriptor accepted) : socket(std::move(accepted)) {}

        FileDescriptor socket; ///< not open once the connection has ended
        varlink::MessageBuffer input{LARGEST_REQUEST};
        std::string output;                 ///< what the socket had no room for
        bool hasSentAll = false;            ///< the client will send nothing more
        Interest interest = Interest::NONE; ///< what it monitors
        unsigned lost = 0;                  ///< events that it missed since its last reply
        std::uint32_t lit = 0;              ///< the LEDs in its last reply
        std::uint32_t litNow = 0;           ///< the LEDs that its next reply is to report
        unsigned awaited = 0;               ///< the epoll events that it is registered for
    };

    void acceptClients();
    void attend(Client& client, unsigned events);
    static void receive(Client& client);
    void answerNext(Client& client) const;
    static std::string newsFor(Client& client);
    static void send(Client& client);
    void awaitMore(Client& client);
    void removeEnded();

    const StatusCalls m_calls;
    const LocalListener m_listener;
    const FileDescriptor m_poll; ///< of the listener and all clients
    std::list<Client> m_clients;
    bool m_mayAccept = true; ///< a client may be waiting to be accepted
};

} // namespace board
