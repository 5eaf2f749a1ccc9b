#pragma once

#include <optional>
#include <string>
#include <vector>

namespace board {

/// The line that is appended to a file when a write is done.
struct RecordLine {
    std::string file; ///< its path, not relative
    std::string line;
};

/// A write that began and did not end, because the program was killed or the power failed.
struct UnfinishedWrite {
    std::string old;   ///< all bytes of the device when it was last whole
    std::string found; ///< its bytes just before the write: `old`, unless the write was a repair
    std::string image; ///< what was to be written from the device's start
    std::optional<RecordLine> record; ///< the line that records the write
};

/// What is about to be written to a device, kept in a file of the state folder until the device
/// holds it whole and the write is recorded. A recorded write of an image file has a journal too,
/// of which only `image` and `record` are used. The device or file must be locked as long as this
/// object exists.
class WriteJournal {
public:
    /// Writes the journal. Throws Error if that fails; nothing may be written to the device then.
    WriteJournal(const std::string& device, const UnfinishedWrite& write);

    /// Removes the journal, and those of interrupted writes that this write has repaired. Returns
    /// text for the end of a message if a file could not be removed; otherwise "". No destructor
    /// calls this, because the journal must stay if the device could not be restored.
    std::string remove() const;

private:
    const std::string m_device;
    const UnfinishedWrite m_write;
    const std::string m_file;
};

/// What the journals of a device or image file show.
struct JournalFindings {
    /// The interrupted write that left the device's bytes; empty if none did.
    std::optional<UnfinishedWrite> unfinished;
    /// For the user: which lines were added to a record, and which could not be.
    std::vector<std::string> notes;
};

/// Finds the interrupted write that left `bytes` on the locked device: in each sector, they begin
/// with the new bytes and go on with the old ones. The content of another unit at the same path is
/// not such a mixture, so it is left alone. An image file is never left like that.
///
/// Removes the journals of writes that left the device or file whole. If such a write was
/// completed but its line is missing in its record, appends the line first; if that fails, the
/// journal stays.
JournalFindings readJournals(const std::string& device, const std::string& bytes, bool isDevice);

/// Finds the same write, but changes nothing and so has no notes.
std::optional<UnfinishedWrite> findUnfinished(const std::string& device, const std::string& bytes);

} // namespace board
