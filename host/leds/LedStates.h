#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "TYRunnable.h"
#include "TYThread.h"
#include "base/Events.h"
#include "base/FileDescriptor.h"
#include "leds/LedTable.h"

namespace board {

/// Watches what the LEDs of a board show. Its thread reads the LEDs' files.
///
/// A kernel LED's file begins with the state. In an ordinary file, the last byte written is the
/// state. Pipes, which a simulated board uses, are drained so that they never fill up. If a file
/// with the pipe's name plus ".state" exists, the state is copied into that file for other
/// programs.
///
/// The sequencer writes 0 and 1. If an LED needs another number to be lit, the sequencer writes
/// into a pipe of this object, and this object writes each change to the LED's file. A write that
/// fails is tried again in each tick, but reported once.
class LedStates : private TYRunnable {
public:
    /// With `tellsChanges`, each change becomes an event. Without it, only pipes are read, and the
    /// states of other LEDs stay unknown. Throws Error if a thread can't be created.
    LedStates(const std::vector<Led>& leds, std::uint32_t tickMs, bool tellsChanges,
              EventQueue& events);
    ~LedStates() override;

    struct State {
        std::string name;
        std::optional<bool> isLit; ///< empty if it is not known
    };
    /// In the order of the LEDs. Any thread.
    std::vector<State> states() const;

    /// Call it when the file of LED `index` is gone: the LED's state is then unknown, and the LED
    /// is left alone until `renew`. Any thread.
    void lose(std::size_t index);

    /// Call it when LED `index` has a new file: opens the file if it is a pipe, and reports and
    /// passes on the LED's state once more even if it has not changed. Any thread.
    void renew(std::size_t index);

    /// The path that the sequencer must write to instead of the file of LED `index`; null if it
    /// writes to that file. Valid as long as this object.
    const char* relayOf(std::size_t index) const;

private:
    enum class Presence { HERE, GONE, RENEWED };
    struct Source {
        std::string path;
        unsigned on;
        FileDescriptor pipe;                ///< not open for other kinds of files
        FileDescriptor stateFile;           ///< not open if there is none
        FileDescriptor writeEnd;            ///< of a pipe that relays to the file; else not open
        std::string relay;                  ///< the path of the relaying pipe
        bool isFaulty = false;              ///< the last change could not be passed on
        Presence presence = Presence::HERE; ///< of the file; guarded by the mutex
    };

    LedStates(std::uint32_t tickMs, bool tellsChanges, EventQueue& events);

    XCode runThread() override;
    bool hasEnded();
    void mark(std::size_t index, Presence presence);
    void reopen();
    bool isHere(std::size_t index) const;
    static void openPipe(Source& source);
    bool passOn(std::size_t index, bool isLit);
    void drain(std::size_t index);
    void look(std::size_t index);
    bool isNews(std::size_t index, bool isLit) const; ///< the mutex is held
    void set(std::size_t index, bool isLit);

    const std::uint32_t m_tickMs;
    const bool m_tellsChanges;
    EventQueue& m_events;
    std::vector<Source> m_sources;
    mutable std::mutex m_mutex; // guards the states and the presence of each file
    std::vector<State> m_states;
    bool m_isEnding = false;       // guarded by the mutex
    const FileDescriptor m_notice; // readable when a source changes or the thread must end
    TYThread m_thread;
};

} // namespace board
