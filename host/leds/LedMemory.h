#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "TYRunnable.h"
#include "TYThread.h"
#include "base/Events.h"
#include "leds/LedTrace.h"

namespace board {

/// What the sequencer held without a time, as it is remembered for the next start of the service.
struct LedMemory {
    std::uint32_t table = 0; ///< the number of the table that it belongs to
    std::vector<LedHold> holds;
};

/// A number that two tables share only if they have the same rows.
std::uint32_t numberOf(const LedTable& table);

///@{
/// The memory as the content of a file: a header, then one line for each hold with its LEDs, the
/// marks "r" (rolls) and "g" (leads its group), the time, and the command line. Reading throws
/// Error with the number of the line that is wrong; the rest of the message says what was expected.
/// At most the newest few hundred holds are written.
std::string toText(const LedMemory& memory);
LedMemory ledMemoryFrom(const std::string& text);
///@}

/// The file with the memory. A thread of its own writes it, so that a slow disk does not delay a
/// tick; it sleeps until something changes.
class LedMemoryFile : private TYRunnable {
public:
    /// Reads the file. One that can't be read, or holds something else, is a fault. Creates the
    /// file if it is missing. Throws Error if the thread can't be created. `events` must outlive
    /// the object.
    LedMemoryFile(const std::string& path, EventQueue& events);
    /// Writes what has not been written yet.
    ~LedMemoryFile() override;

    /// What the file held; empty if it did not exist, was empty or could not be used.
    const std::optional<LedMemory>& former() const { return m_former; }

    /// Replaces the file's content unless it is the same. Never waits for the disk. A failure is a
    /// fault, reported once. One thread at a time.
    void keep(std::string text);

private:
    XCode runThread() override;

    const std::string m_path;
    EventQueue& m_events;
    std::optional<LedMemory> m_former;
    std::string m_lastText; ///< as `keep` got it last
    std::mutex m_mutex;     ///< guards what follows
    std::condition_variable m_changed;
    std::optional<std::string> m_waiting;
    bool m_isEnding = false;
    TYThread m_thread;
};

} // namespace board
