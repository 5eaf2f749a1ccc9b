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
/// button monitor. A service that can't be started is listed in `failures` and does not affect the
/// other. The destructor ends the button's thread first, then the LED sequencer's.
class Services {
public:
    /// `profile` and `events` must outlive the object. If `tellsLeds` is true, each change of an
    /// LED is an event. `ledMemory` is the path of a file that keeps, across a restart, what
    /// lines have set or started without a time limit: LED states and rolls. If the path is empty,
    /// nothing is kept.
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

    /// Starts the LED sequencer if another host drove the LEDs and has ended. An event reports the
    /// start. While the other host runs, a call costs only a few system calls. Returns true if the
    /// sequencer was started.
    bool lookAtLeds();

    /// Starts the button monitor if the button's device has appeared, or is another file than
    /// before. An event reports a start, or that the monitor could not be started again.
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
    std::optional<FileIdentity> m_buttonFile; ///< the device when the monitor was started
    std::unique_ptr<ButtonService> m_button;  // declared last, so that it ends first
};

} // namespace board
