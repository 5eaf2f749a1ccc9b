#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/files/NewFile.h"

namespace board {

/// Writes the bytes of an image to a backup file and syncs it. Returns the file's name. `access` is
/// that of the image: whoever may not read that may not read the backup either. The backup gets its
/// name when it is complete; see NewFile for what a killed program leaves, which is named after the
/// image and removed by the next backup of that image in the same folder.
///
/// `file` must not exist yet, be empty, or hold these bytes already, as it does if the command was
/// interrupted and is repeated. If no `file` is named, the backup goes to the state
/// folder; its name tells the device or file `image`, the unit's serial number if the image holds
/// one, and the date. Throws Error if the backup can't be written.
std::string keepImage(const std::string& bytes, const std::string& image, const FileAccess& access,
                      const std::string& file);

/// A backup in the state folder.
struct Backup {
    std::string file;   ///< its path
    std::string device; ///< what it is a backup of, with its folder: "1-0050-eeprom"
    std::string serial; ///< of the unit; empty if the image holds none
    std::string time;   ///< when it was made, in UTC: "20261122T130000Z"
    std::size_t size;   ///< in bytes
    std::size_t tags;   ///< how many load
};

struct UnreadableBackup {
    std::string file;  ///< its path
    std::string error; ///< a message that names it
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
