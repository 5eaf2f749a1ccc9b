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

/// What the sequencer held without a time limit, remembered for the next start of the service.
struct LedMemory {
    std::uint32_t table = 0; ///< `numberOf` the table that the holds belong to
    std::vector<LedHold> holds;
};

/// A checksum of the table's rows, by which a changed table is recognized.
std::uint32_t numberOf(const LedTable& table);

///@{
/// The memory as the content of a file: a header, then one line for each hold with its LEDs, the
/// marks "r" (rolls) and "g" (leads its group), the time, and the command line. Reading throws
/// Error with the number of the line that is wrong; the rest of the message says what was expected.
/// At most the newest few hundred holds are written.
std::string toText(const LedMemory& memory);
LedMemory ledMemoryFrom(const std::string& text);
///@}

/// The file with the memory. A thread of its own writes the file, so that a slow disk does not
/// delay a tick. The thread sleeps until something changes.
class LedMemoryFile : private TYRunnable {
public:
    /// Reads the file. Reports a fault if it can't be read or does not hold a memory. Creates the
    /// file if it is missing. Throws Error if the thread can't be created. `events` must outlive
    /// the object.
    LedMemoryFile(const std::string& path, EventQueue& events);
    /// Writes what has not been written yet.
    ~LedMemoryFile() override;

    /// What the file held; empty if it did not exist, was empty or could not be used.
    const std::optional<LedMemory>& former() const { return m_former; }

    /// Makes the thread replace the file's content with `text`, unless that is the newest content
    /// already. Never waits for the disk. A failure is reported once, as a fault. One thread at a
    /// time.
    void keep(std::string text);

private:
    XCode runThread() override;

    const std::string m_path;
    EventQueue& m_events;
    std::optional<LedMemory> m_former;
    std::string m_lastText; ///< the file's content, or what it will be
    std::mutex m_mutex;     ///< guards what follows
    std::condition_variable m_changed;
    std::optional<std::string> m_waiting;
    bool m_isEnding = false;
    TYThread m_thread;
};

} // namespace board
