#pragma once

class IDriverRepository;

namespace DRIVER {

/// The process's driver repository. Never null; lives as long as the process. Any thread.
IDriverRepository* INSTANCE();

/// Replaces the process's repository by the host's own `repository`; null restores the default.
/// Returns the previous replacement, or null if the default was in use. Not counted: it must
/// outlive its use.
IDriverRepository* SET_INSTANCE(IDriverRepository* repository);

} // namespace DRIVER
