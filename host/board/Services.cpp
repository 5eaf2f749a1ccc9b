#include "board/Services.h"

#include <algorithm>

#include "base/Error.h"

namespace board {

Services::Services(const Profile& profile, bool tellsLeds, EventQueue& events,
                   const std::string& ledMemory)
    : m_profile(profile), m_tellsLeds(tellsLeds), m_ledMemory(ledMemory), m_events(events) {
    if (profile.ledService)
        startLeds();
    if (const auto fault = startButton())
        m_failures.push_back({Kind::BUTTON, *fault});
}

void Services::startLeds() {
    m_ledInUse.reset();
    try {
        m_leds = std::make_unique<LedService>(*m_profile.ledService, m_tellsLeds, m_events,
                                              DeviceLocator(), m_ledMemory);
    } catch (const LedsInUse& error) {
        m_ledInUse = error.path;
        m_failures.push_back({Kind::LEDS, error.what()});
    } catch (const Error& error) {
        m_failures.push_back({Kind::LEDS, error.what()});
    }
    if (!m_leds)
        return;
    for (const std::string& fault : m_leds->faults())
        m_failures.push_back({Kind::LEDS, fault});
    if (m_leds->pipeFault())
        m_failures.push_back({Kind::PIPE, *m_leds->pipeFault()});
}

void Services::forget(Kind service) {
    m_failures.erase(
        std::remove_if(m_failures.begin(), m_failures.end(),
                       [&](const Failure& failure) { return failure.service == service; }),
        m_failures.end());
}

bool Services::lookAtLeds() {
    if (!m_ledInUse || !LedClaim::isFree(*m_ledInUse))
        return false;
    forget(Kind::LEDS);
    startLeds();
    if (m_leds)
        m_events.push(event::LedsTakenOver{});
    if (m_leds && m_leds->writers())
        m_events.push(event::LedPipeBack{*m_leds->writers(), true});
    if (!m_ledInUse)
        for (const Failure& failure : m_failures)
            if (failure.service != Kind::BUTTON)
                m_events.push(event::FaultReport{"leds: " + failure.text});
    return m_leds != nullptr;
}

std::optional<std::string> Services::startButton() {
    if (!m_profile.button)
        return std::nullopt;
    m_buttonFile = tryIdentify(m_profile.button->path);
    try {
        withPlaceInErrors(*m_profile.button, [&](const std::string&) {
            m_button = std::make_unique<ButtonService>(*m_profile.button, m_events);
        });
    } catch (const Error& error) {
        return error.what();
    }
    return std::nullopt;
}

void Services::lookAtButton() {
    // A monitor that has failed is not started again until the path leads to another file.
    if (!m_profile.button || (m_button && tryIdentify(m_profile.button->path) == m_buttonFile))
        return;
    const bool wasStarted = m_button != nullptr;
    m_button.reset();
    forget(Kind::BUTTON);
    const auto fault = startButton();
    if (fault)
        m_failures.push_back({Kind::BUTTON, *fault});
    if (fault && wasStarted)
        m_events.push(event::DeviceGone{"button", "button", *fault});
    if (!fault)
        m_events.push(event::DeviceBack{"button", "button"});
}

} // namespace board
