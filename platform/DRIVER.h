#pragma once

class IDriverRepository;

namespace DRIVER {

/// The process's driver repository, never null. The default repository lives as long as the
/// process. Any thread may call this function.
IDriverRepository* INSTANCE();

/// Replaces the process's repository with the host's own `repository`; null restores the default.
/// Returns the previous replacement, or null if the default was in use. `repository` is not owned
/// and must exist as long as it is in use.
IDriverRepository* SET_INSTANCE(IDriverRepository* repository);

} // namespace DRIVER
