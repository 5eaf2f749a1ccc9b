#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Error.h"
#include "base/Events.h"
#include "base/FileDescriptor.h"
#include "base/files/HostLock.h"
#include "leds/LedStates.h"
#include "leds/LedTable.h"

namespace board {

/// Another host drives the LEDs.
struct LedsInUse : Error {
    LedsInUse(const std::string& what, std::string file) : Error(what), path(std::move(file)) {}
    std::string path; ///< the LED's file that the other host has locked
};

/// The right to drive the LEDs of a board: a lock for the first LED file that can be opened. Every
/// host that drives LEDs from a profile takes this lock. One thread at a time.
class LedClaim {
public:
    /// Throws LedsInUse if another host has the right. Locks nothing if no file can be opened.
    explicit LedClaim(const std::vector<Led>& leds);

    /// Locks again if the locked file was replaced or none is locked. Throws as the constructor
    /// does.
    void renew();

    /// True if no host holds the lock for this file, or if the file can't be opened. Costs a few
    /// system calls.
    static bool isFree(const std::string& path);

private:
    void lock();

    const std::vector<Led>& m_leds;
    FileDescriptor m_file; ///< while it is open, no other file gets its identity
    HostLock m_lock;
    std::string m_path;
};

/// Notices when an LED's file goes, because its driver was removed, and when it comes back. Used by
/// one thread at a time.
class LedFileWatch {
public:
    /// All arguments must outlive the object.
    LedFileWatch(const std::vector<Led>& leds, LedClaim& claim, LedStates& states,
                 EventQueue& events)
        : m_leds(leds), m_claim(claim), m_states(states), m_events(events), m_files(leds.size()) {}

    /// Call it when the sequencer has opened the files. Reports an event for each file that is
    /// missing or can't be written.
    void begin();

    /// Checks each LED's path, with one system call per LED if nothing has changed. Reports an
    /// event for each file that is gone or is back. True if the sequencer must open the files
    /// again.
    bool look();

private:
    struct File {
        std::optional<FileIdentity> opened; ///< empty while it is gone
        std::string fault;                  ///< why it is gone, as it was last reported
    };

    bool lookAt(std::size_t index);
    void report(std::size_t index, const std::string& fault);

    const std::vector<Led>& m_leds;
    LedClaim& m_claim;
    LedStates& m_states;
    EventQueue& m_events;
    std::vector<File> m_files; ///< in the order of the LEDs
};

} // namespace board
