#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "base/Error.h"
#include "base/FileDescriptor.h"
#include "client/Varlink.h"

namespace board {

/// No host listens.
struct NoHost : Error {
    using Error::Error;
};

/// A connection to a running host's status socket. One thread.
class StatusClient {
public:
    using Clock = std::chrono::steady_clock;

    /// Waits until `end`, if there is one, or until the descriptor is readable; may return early.
    /// True if the program has been asked to end.
    using Wait = std::function<bool(std::optional<Clock::time_point> end, int descriptor)>;

    /// How long to wait for the host. While the client connects, it does not call `wait`. During
    /// that time, it notices a request to end only if a signal interrupts the connecting, which
    /// throws Error.
    struct Limits {
        std::chrono::milliseconds accept{5000}; ///< to accept a connection; more than 0
        std::chrono::milliseconds answer{5000}; ///< to answer a call
    };

    /// The host answered with an error that its interface description declares.
    struct CallError : Error {
        CallError(const std::string& text, const varlink::Reply& reply)
            : Error(text), name(reply.error), parameters(reply.parameters) {}
        std::string name;
        nlohmann::ordered_json parameters;
    };

    /// Connects to the host at `path`. Throws NoHost if none listens there, and Error if the
    /// connection is not accepted in time.
    StatusClient(std::string path, Wait wait, Limits limits);
    StatusClient(std::string path, Wait wait)
        : StatusClient(std::move(path), std::move(wait), {}) {}

    const std::string& path() const { return m_path; }

    /// Calls a method of org.boarddrivers.Host. Throws CallError, and Error if the host does not
    /// answer in time, has ended or does not speak Varlink, or if the program is asked to end.
    nlohmann::ordered_json
    call(const std::string& method,
         const nlohmann::ordered_json& parameters = nlohmann::ordered_json::object());

    /// What happened on the board.
    struct Event {
        nlohmann::ordered_json event; ///< null if this only reports lost events
        long long lost;               ///< how many were missed before this event
    };
    /// Asks the host for events. Once this returns, the host sends every event. No call may follow.
    void monitor();
    /// Waits for the next event; empty if the program is asked to end. Throws Error if the host has
    /// ended.
    std::optional<Event> next();

    /// Calls a method that replies again and again, and returns the first reply. Throws as `call`
    /// does. No other call may follow.
    nlohmann::ordered_json begin(const std::string& method);
    /// The next reply of such a method, if it has arrived; never waits. Throws CallError, and Error
    /// if the host has ended.
    std::optional<nlohmann::ordered_json> tryNext();
    /// Readable if another reply may have arrived. Call `tryNext` before waiting for this
    /// descriptor.
    int descriptor() const { return m_socket.number(); }

private:
    void send(const varlink::Request& request);
    varlink::Reply awaitReply();
    /// The next reply, if it is there or can be read without waiting.
    std::optional<varlink::Reply> tryReceive();
    std::optional<varlink::Reply> receive(std::optional<Clock::time_point> end);
    [[noreturn]] void fail(const std::string& what) const;

    const std::string m_path;
    const Wait m_wait;
    const Clock::duration m_answerLimit;
    FileDescriptor m_socket;
    varlink::MessageBuffer m_input;
};

/// A host that answers, and the reply to its method Status.
struct FoundHost {
    StatusClient client;
    nlohmann::ordered_json status;
};

/// Connects to the host of a profile. Throws NoHost if none answers; the message says how to start
/// one. Throws Error if a host that may be the right one can't be asked.
FoundHost findHost(const std::string& profile, bool isSimulated, const StatusClient::Wait& wait,
                   StatusClient::Limits limits = {});

} // namespace board
