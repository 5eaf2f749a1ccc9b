#pragma once

#include "client/Varlink.h"
#include "status/StatusAnswers.h"

namespace board {

/// The methods of a host's status socket: org.boarddrivers.Host and org.varlink.service.
class StatusCalls {
public:
    /// `answers` must outlive the object.
    explicit StatusCalls(const StatusAnswers& answers) : m_answers(answers) {}

    /// The reply to a call. For a call of Monitor or MonitorLeds, this is the first reply;
    /// `eventReply` and `litReply` make the others. Made even if the client wants no reply.
    varlink::Reply reply(const varlink::Request& request) const;

private:
    struct Method;
    static const Method METHODS[];

    varlink::Reply leds(const nlohmann::ordered_json& parameters) const;

    const StatusAnswers& m_answers;
};

/// A reply with an event, or with null, to a client that monitors events. `lost` is how many events
/// it missed before this one.
varlink::Reply eventReply(const nlohmann::ordered_json& event, unsigned lost);

/// A reply with the LEDs that are lit, to a client that monitors them.
varlink::Reply litReply(std::uint32_t lit);

/// The reply to a client that is one too many.
varlink::Reply tooManyClients(std::size_t maximum);

} // namespace board
