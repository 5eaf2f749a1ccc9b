#include "board/Services.h"

#include "base/Error.h"

namespace board {

Services::Services(const Profile& profile, bool tellsLeds, EventQueue& events,
                   const std::string& ledMemory) {
    try {
        if (profile.ledService)
            m_leds = std::make_unique<LedService>(*profile.ledService, tellsLeds, events,
                                                  DeviceLocator(), ledMemory);
    } catch (const Error& error) {
        m_failures.push_back({Kind::LEDS, error.what()});
    }
    if (m_leds)
        for (const std::string& fault : m_leds->faults())
            m_failures.push_back({Kind::LEDS, fault});
    try {
        if (profile.button)
            withPlaceInErrors(*profile.button, [&](const std::string&) {
                m_button = std::make_unique<ButtonService>(*profile.button, events);
            });
    } catch (const Error& error) {
        m_failures.push_back({Kind::BUTTON, error.what()});
    }
}

} // namespace board
