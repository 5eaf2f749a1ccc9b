#pragma once

#include <string>

#include "client/StatusClient.h"

namespace boardweb {

/// Which host to ask.
struct HostPlace {
    std::string socket;  ///< its status socket; empty if that depends on the profile
    std::string profile; ///< the board's profile; empty for the usual one, or for any host if
                         ///< there is none
};

/// How long a host may take. It answers from memory, so one that takes longer is treated as gone:
/// clients wait for its answers, and the program could not end either.
constexpr board::StatusClient::Limits LIMITS{std::chrono::milliseconds(200),
                                             std::chrono::milliseconds(2000)};

/// Connects to the host, and makes sure that it answers. Throws Error if it does not.
board::StatusClient connectTo(const HostPlace& place, const board::StatusClient::Wait& wait);

} // namespace boardweb
