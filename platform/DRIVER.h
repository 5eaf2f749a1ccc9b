#pragma once

class IDriverRepository;

namespace DRIVER {

/// The process's driver repository. Never null; lives as long as the process. Any thread.
IDriverRepository* INSTANCE();

/// Puts `repository` in the place of the process's own, null puts the own one back. Returns what
/// stood there before, null for the own one. Not counted: it must outlive its use. For hosts that
/// bring their own.
IDriverRepository* SET_INSTANCE(IDriverRepository* repository);

} // namespace DRIVER
