#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "TYRunnable.h"
#include "TYThread.h"
#include "base/Events.h"
#include "leds/LedTable.h"

namespace board {

/// What the LEDs of a board show, found out from their files, on a thread of its own.
///
/// A LED's file of the system is read. A pipe, as a simulated board has them, is drained, so that
/// whoever writes to it never finds it full; the state goes into a file of the same name with
/// ".state" behind it, where there is one, so that other programs see it too. An ordinary file
/// shows what was written last.
class LedStates : private TYRunnable {
public:
    /// `tellsChanges`: each change goes to `events`; without it files are left alone and only pipes
    /// drained. Throws Error where no thread can be had.
    LedStates(const std::vector<Led>& leds, std::uint32_t tickMs, bool tellsChanges,
              EventQueue& events);
    ~LedStates() override;

    struct State {
        std::string name;
        std::optional<bool> isLit; ///< nothing where it is not known
    };
    /// In the order of the LEDs. Any thread.
    std::vector<State> states() const;

private:
    struct Source {
        std::string path;
        int pipe = -1;      ///< its reading end; -1 for other files
        int stateFile = -1; ///< for other programs; -1 where there is none
    };

    LedStates(std::uint32_t tickMs, bool tellsChanges, EventQueue& events);

    XCode runThread() override;
    void openPipe(Source& source);
    void drain(std::size_t index);
    void look(std::size_t index);
    void set(std::size_t index, bool isLit);

    const std::uint32_t m_tickMs;
    const bool m_tellsChanges;
    EventQueue& m_events;
    std::vector<Source> m_sources;
    mutable std::mutex m_mutex; // guards the states
    std::vector<State> m_states;
    const int m_end; // readable when the thread shall end
    TYThread m_thread;
};

} // namespace board
