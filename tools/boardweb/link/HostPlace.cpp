#include "link/HostPlace.h"

#include <cerrno>
#include <cstdlib>

#include "base/File.h"

using board::StatusClient;

namespace boardweb {

namespace {

constexpr char USUAL_PROFILE[] = "/etc/boarddrivers/board.toml";
constexpr char USUAL_SOCKET[] = "/run/boarddrivers/host";

/// The profile of the call, or else the one that boardctl would work on; empty if there is none.
std::string profileFor(const HostPlace& place) {
    if (!place.profile.empty())
        return place.profile;
    const char* const named = std::getenv("BOARDCTL_BOARD");
    if (named && *named)
        return named;
    const bool isThere = board::kindOf(USUAL_PROFILE) != board::FileKind::MISSING ||
                         (errno != ENOENT && errno != ENOTDIR);
    return isThere ? USUAL_PROFILE : "";
}

} // namespace

StatusClient connectTo(const HostPlace& place, const StatusClient::Wait& wait) {
    const std::string profile = place.socket.empty() ? profileFor(place) : "";
    if (profile.empty()) {
        StatusClient client(place.socket.empty() ? USUAL_SOCKET : place.socket, wait, LIMITS);
        static_cast<void>(client.call("Status")); // throws if that is not a host
        return client;
    }
    // `true` means that the board may be simulated. This saves reading the profile. For other
    // boards, it only adds a place where no host listens.
    return board::findHost(profile, true, wait, LIMITS).client;
}

} // namespace boardweb
