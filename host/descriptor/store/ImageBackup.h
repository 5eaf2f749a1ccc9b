#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/files/NewFile.h"

namespace board {

/// Writes the bytes of an image to a backup file and syncs it. Returns the file's name. `access` is
/// that of the image: whoever may not read the image may not read the backup either. The backup
/// gets its name when it is complete. Until then it has a temporary name, derived from the image's
/// (see NewFile), so that the next backup of that image in the same folder can remove what a killed
/// program has left.
///
/// `file` must be missing, be empty or hold these bytes already, as after an interrupted command
/// that is now repeated. If no `file` is named, the backup goes to the state folder; its name
/// contains the name of `image` (a device or file), the unit's serial number if the image holds
/// one, and the date and time (UTC). Throws Error if the backup can't be written.
std::string keepImage(const std::string& bytes, const std::string& image, const FileAccess& access,
                      const std::string& file);

/// A backup in the state folder.
struct Backup {
    std::string file;   ///< its path
    std::string device; ///< the device or file that was backed up: "1-0050-eeprom"
    std::string serial; ///< of the unit; empty if the image holds none
    std::string time;   ///< when it was made, in UTC: "20261122T130000Z"
    std::size_t size;   ///< in bytes
    std::size_t tags;   ///< how many load
};

struct UnreadableBackup {
    std::string file;  ///< its path
    std::string error; ///< a message that names the file
};

struct BackupList {
    std::vector<Backup> backups; ///< the newest first
    std::vector<UnreadableBackup> unreadable;
};

/// The backups in the state folder. Without that folder, there are none. Throws Error if the folder
/// can't be read.
BackupList listBackups();

/// The backups to remove so that each device keeps its newest `count`. `all` is in the order of
/// `listBackups`.
std::vector<Backup> backupsBeyond(const std::vector<Backup>& all, std::size_t count);

} // namespace board
