#pragma once

#include <string>
#include <vector>

namespace board {

/// The paths of the sockets where a host of this profile may answer. A host listens on the first
/// one; a client tries them in order, because its environment may differ from the host's.
/// - $RUNTIME_DIRECTORY/host, if the variable is set, as systemd does
/// - host.socket beside the profile, if the board is simulated
/// - $XDG_RUNTIME_DIR/boarddrivers/NAME.socket, if the variable is set; the name is derived from
///   the profile's path
/// - /run/boarddrivers/host
/// The last one serves any profile, so a client must look at which one its host reports.
std::vector<std::string> statusPlaces(const std::string& profile, bool isSimulated);

/// The absolute path of the profile without symbolic links, as a host reports it. Throws Error if
/// the file does not exist.
std::string reportedProfile(const std::string& profile);

} // namespace board
