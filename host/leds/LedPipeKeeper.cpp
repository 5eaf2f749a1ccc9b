#include "leds/LedPipeKeeper.h"

#include <utility>

namespace board {

LedPipeKeeper::LedPipeKeeper(EventQueue& events, const std::string& group, unsigned looksPerTry)
    : m_events(events), m_group(group), m_looksPerTry(looksPerTry) {
    try {
        keep(LedPipeClaim(m_group));
        return;
    } catch (const LedPipeInUse& error) {
        m_fault = error.what();
        m_isInUse = true;
    } catch (const Error& error) {
        m_fault = error.what();
    }
    m_rejected = tryIdentify(LED_PIPE);
}

void LedPipeKeeper::keep(LedPipeClaim claim) {
    m_claim = std::move(claim);
    if (!m_claim->correction().empty())
        m_events.push(event::FaultReport{"leds: " + m_claim->correction()});
}

std::optional<std::string> LedPipeKeeper::writers() const {
    return m_fault ? std::nullopt : std::optional(m_claim->writers());
}

bool LedPipeKeeper::isTimeToTry() {
    const std::optional<FileIdentity> found = tryIdentify(LED_PIPE);
    const bool isTurn = ++m_looks % m_looksPerTry == 0;
    if (!m_isInUse)
        return isTurn || found != m_rejected;
    // If the pipe is missing or new, the other service may be about to create or open it.
    return isTurn && std::exchange(m_rejected, found) == found;
}

bool LedPipeKeeper::look() {
    std::optional<std::string> loss;
    if (m_claim && !(loss = m_claim->loss())) {
        if (m_fault) { // somebody has put the claimed pipe back
            m_fault.reset();
            m_events.push(event::LedPipeBack{m_claim->writers()});
        }
        return false;
    }
    return (!m_fault || isTimeToTry()) && claim(loss);
}

bool LedPipeKeeper::claim(const std::optional<std::string>& loss) {
    std::string fault;
    bool isInUse = false;
    try {
        LedPipeClaim claim(m_group);
        if (!m_fault)
            m_events.push(event::LedPipeGone{loss.value()});
        keep(std::move(claim));
        m_fault.reset();
        m_events.push(event::LedPipeBack{m_claim->writers(), std::exchange(m_isInUse, false)});
        return true;
    } catch (const LedPipeInUse& error) {
        fault = error.what();
        isInUse = true;
    } catch (const Error& error) {
        fault = error.what();
    }
    m_isInUse = isInUse;
    m_rejected = tryIdentify(LED_PIPE);
    if (m_fault != fault)
        m_events.push(event::LedPipeGone{fault});
    m_fault = fault;
    return false;
}

} // namespace board
