#pragma once

#include <string>

#include "client/StatusClient.h"

namespace boardweb {

/// Which host to ask.
struct HostPlace {
    std::string socket;  ///< the host's status socket; empty if the profile determines it
    std::string profile; ///< the board's profile; if empty, the profile that boardctl would use.
                         ///< If there is none either, the usual socket is asked
};

/// How long a host may take. A host answers from memory, so one that takes longer counts as gone.
/// Until a host accepts the connection, the program can't end; until it answers, clients wait.
constexpr board::StatusClient::Limits LIMITS{std::chrono::milliseconds(200),
                                             std::chrono::milliseconds(2000)};

/// Connects to the host, and makes sure that it answers. Throws Error if it does not.
board::StatusClient connectTo(const HostPlace& place, const board::StatusClient::Wait& wait);

} // namespace boardweb
