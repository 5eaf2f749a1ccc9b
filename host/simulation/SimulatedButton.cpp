#include "simulation/SimulatedButton.h"

#include <chrono>
#include <thread>

#include "base/Error.h"

namespace board {

void SimulatedButton::awaitReader() const {
    using Clock = std::chrono::steady_clock;
    constexpr auto PATIENCE = std::chrono::seconds(1);
    constexpr auto NEXT_LOOK = std::chrono::microseconds(200);
    const auto end = Clock::now() + PATIENCE;
    while (!m_pipe.isEmpty()) {
        if (Clock::now() > end)
            throw Error(m_pipe.path() +
                        ": nobody watches the button (start `boardctl run` on this board)");
        std::this_thread::sleep_for(NEXT_LOOK);
    }
}

void SimulatedButton::press() const {
    m_pipe.lock();
    awaitReader();
    m_pipe.writePressed();
    awaitReader();
}

void SimulatedButton::release() const {
    awaitReader();
    m_pipe.writeReleased();
    awaitReader();
    m_pipe.unlock();
}

bool SimulatedButton::isHeld() const {
    if (!m_pipe.tryLock())
        return true;
    m_pipe.unlock();
    return false;
}

} // namespace board
