#pragma once

#include <string>
#include <vector>

#include "base/Result.h"
#include "profile/Profile.h"
#include "sysfs/DeviceLocator.h"

namespace board {

/// A file that a board's profile names, as it was at one moment.
struct SnapshotFile {
    std::string key;  ///< the profile's entry, such as "fan[0].device"
    std::string path; ///< where it was found, or as the profile names it if it was not found
    Result<std::string> content = Fault{"has not been read"};
};

/// Reads every file that the profile names, in the order of its sections, except the button's
/// device: reading it would take messages away from the program that waits for them. Opens the
/// files for reading only, reads no pipe, and waits for nothing except the lock on the descriptor's
/// device. Instead of a simulated board's LED pipe, reads the state file beside it.
///
/// A file that can't be read, or is larger than 1 MiB, has a fault instead of its content.
std::vector<SnapshotFile> snapshotFiles(const Profile& profile,
                                        const DeviceLocator& locator = DeviceLocator());

} // namespace board
