#pragma once

namespace board {

/// The version of this program.
extern const char* const STATUS_VERSION;

/// The texts of org.boarddrivers.Host.varlink and org.varlink.service.varlink.
extern const char* const HOST_DESCRIPTION;
extern const char* const SERVICE_DESCRIPTION;

} // namespace board
