#pragma once

#include <string>
#include <vector>

namespace board {

/// The folder that the init system has made for this service: the first one in $RUNTIME_DIRECTORY,
/// where systemd separates several by colons. boardctl.service keeps this folder during a
/// restart of the service. Empty if there is none.
std::string serviceFolder();

/// The paths of the sockets where a host of this profile may answer. A host listens on the first
/// one; a client tries them in order, because its environment may differ from the host's.
/// - "host" in the folder of the service, if there is one
/// - host.socket beside the profile, if the board is simulated
/// - $XDG_RUNTIME_DIR/boarddrivers/NAME.socket, if the variable is set; the name is derived from
///   the profile's path
/// - /run/boarddrivers/host
/// The host on the last socket may have any profile, so a client must check the profile that the
/// host reports.
std::vector<std::string> statusPlaces(const std::string& profile, bool isSimulated);

/// The absolute path of the profile without symbolic links, as a host reports it. Throws Error if
/// the file does not exist.
std::string reportedProfile(const std::string& profile);

} // namespace board
