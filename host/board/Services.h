#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Events.h"
#include "base/FileDescriptor.h"
#include "button/ButtonService.h"
#include "leds/LedService.h"
#include "profile/Profile.h"

namespace board {

/// The services of a hosted board, which run on threads of their own: the LED sequencer and the
/// button monitor. A service that can't be started is a failure and does not affect the other. The
/// destructor ends the button's thread first, then the LEDs'.
class Services {
public:
    /// `profile` and `events` must outlive the object. With `tellsLeds`, each change of an LED is
    /// an event. `ledMemory` is the file in which the LED sequencer remembers what LEDs hold over a
    /// restart; empty for none.
    Services(const Profile& profile, bool tellsLeds, EventQueue& events,
             const std::string& ledMemory = "");

    enum class Kind { LEDS, PIPE, BUTTON };

    /// A service that does not work, or works only in part.
    struct Failure {
        Kind service;
        std::string text;
    };
    const std::vector<Failure>& failures() const { return m_failures; }

    /// Null if the board has no LED tables or the sequencer can't run.
    const LedService* leds() const { return m_leds.get(); }
    bool watchesButton() const { return m_button && m_button->isWatching(); }

    /// Starts the LED sequencer if another host drove the LEDs and has ended. This is an event.
    /// Costs a few system calls while that host runs. True if the sequencer was started.
    bool lookAtLeds();

    /// Starts the button monitor if its device has appeared, or is another one than before. A
    /// change is an event.
    void lookAtButton();

private:
    void startLeds();
    std::optional<std::string> startButton();
    void forget(Kind service);

    const Profile& m_profile;
    const bool m_tellsLeds;
    const std::string m_ledMemory;
    EventQueue& m_events;
    std::optional<std::string> m_ledInUse; ///< the file of an LED that another host drives
    std::vector<Failure> m_failures;
    std::unique_ptr<LedService> m_leds;
    std::optional<FileIdentity> m_buttonFile; ///< when the monitor was started
    std::unique_ptr<ButtonService> m_button;  // last: it ends first
};

} // namespace board
