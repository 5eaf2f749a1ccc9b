#pragma once

#include <string>

namespace board {

/// Tells the init system what state the process is in, "READY=1" or "STOPPING=1", where it asks for
/// that with a socket in the environment variable NOTIFY_SOCKET. Throws Error where the socket
/// takes nothing; without one nothing is done.
void notifyInitSystem(const std::string& state);

} // namespace board
