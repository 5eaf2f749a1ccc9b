#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/Events.h"
#include "button/ButtonService.h"
#include "leds/LedService.h"
#include "profile/Profile.h"

namespace board {

/// What runs by itself on a hosted board: the LED sequencer and the button monitor. What can't be
/// started is a fault and stops nothing else. With the object the button's thread ends first, then
/// the LEDs'.
class Services {
public:
    /// `profile` and `events` must outlive the object. `tellsLeds`: each change of a LED is an
    /// event.
    Services(const Profile& profile, bool tellsLeds, EventQueue& events);

    /// A service that does not work, or not wholly.
    struct Fault {
        std::string kind; ///< "leds" or "button"
        std::string text;
    };
    const std::vector<Fault>& faults() const { return m_faults; }

    /// Null where the board has no LED tables or the sequencer can't run.
    const LedService* leds() const { return m_leds.get(); }
    bool watchesButton() const { return m_button != nullptr; }

private:
    std::vector<Fault> m_faults;
    std::unique_ptr<LedService> m_leds;
    std::unique_ptr<ButtonService> m_button; // last: it ends first
};

} // namespace board
