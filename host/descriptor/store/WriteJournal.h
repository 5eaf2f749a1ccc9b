#pragma once

#include <optional>
#include <string>

namespace board {

/// A write that began and did not end, because the program was killed or the power failed.
struct UnfinishedWrite {
    std::string old;   ///< all bytes of the device when it was last whole
    std::string found; ///< its bytes just before the write: `old`, unless that was a repair
    std::string image; ///< what was to be written from the device's start
};

/// What is about to be written to a device, kept in a file of the state folder until the device
/// holds it whole. The device is locked as long as this exists.
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

/// Finds the write that left `bytes` on the locked device: they begin with the new image and go on
/// with the bytes before it. Content that some other unit has on the same device is never such a
/// mixture, so it is left alone. Unless `isReading`, removes the journals of writes that left the
/// device whole.
std::optional<UnfinishedWrite> findUnfinished(const std::string& device, const std::string& bytes,
                                              bool isReading);

} // namespace board
