#pragma once

#include <optional>
#include <string>
#include <vector>

namespace board {

/// The line that a file gets when a write is done.
struct RecordLine {
    std::string file; ///< its path, not relative
    std::string line;
};

/// A write that began and did not end, because the program was killed or the power failed.
struct UnfinishedWrite {
    std::string old;   ///< all bytes of the device when it was last whole
    std::string found; ///< its bytes just before the write: `old`, unless that was a repair
    std::string image; ///< what was to be written from the device's start
    std::optional<RecordLine> record; ///< what the write is recorded with
};

/// What is about to be written to a device, kept in a file of the state folder until the device
/// holds it whole and the write is recorded. A write of an image file that is recorded has one too;
/// then only `image` and `record` count. The device or file is locked as long as this exists.
class WriteJournal {
public:
    /// Writes the journal. Throws Error if that is not possible; nothing may be written to the
    /// device then.
    WriteJournal(const std::string& device, const UnfinishedWrite& write);

    /// Removes the journal, and those of interrupted writes that this one has repaired: the device
    /// is whole again. Returns what a message must add: nothing, or that a file could not be
    /// removed. Not called by a destructor: a journal stays if a device could not be restored.
    std::string remove() const;

private:
    const std::string m_device;
    const UnfinishedWrite m_write;
    const std::string m_file;
};

/// What the journals of a device or image file tell.
struct JournalFindings {
    std::optional<UnfinishedWrite> unfinished; ///< the write that left the bytes on the device
    std::vector<std::string> notes; ///< for the user: records that were completed, or can't be
};

/// Finds the write that left `bytes` on the locked device: they begin with the new image and go on
/// with the bytes before it. Content that some other unit has on the same device is never such a
/// mixture, so it is left alone. An image file is never left like that.
///
/// Removes the journals of writes that left the device or file whole. If such a write ended before
/// its line was in the record, appends the line first; if that fails, its journal stays.
JournalFindings readJournals(const std::string& device, const std::string& bytes, bool isDevice);

/// The same without changing anything, so without notes.
std::optional<UnfinishedWrite> findUnfinished(const std::string& device, const std::string& bytes);

} // namespace board
