#include "output/Progress.h"

#include <algorithm>
#include <cmath>
#include <iostream>

#include <unistd.h>

#include "String.h"
#include "output/Terminal.h"

namespace boardctl {

Progress::Progress(double span) : m_isShown(canRedraw(STDERR_FILENO)), m_span(span) {}

bool Progress::waitUntil(StopSignals::Clock::time_point end, const std::string& what) {
    constexpr auto STEP = std::chrono::seconds(1);
    if (!m_isShown)
        return StopSignals::waitUntil(end);
    for (;;) {
        const auto now = StopSignals::Clock::now();
        const double left =
            std::ceil(m_span - std::chrono::duration<double>(now - m_start).count());
        if (now - m_start >= STEP && now < end && StopSignals::waitWritable(STDERR_FILENO)) {
            std::cerr << "\r\x1b[Kboardctl: " << what
                      << String::format(", %.0f s left", std::max(left, 0.0)).c_str() << std::flush;
            m_isDirty = true;
        }
        const auto next = std::min(end, now + STEP);
        if (StopSignals::waitUntil(next))
            return true;
        if (next == end)
            return false;
    }
}

void Progress::clear() {
    if (m_isDirty && StopSignals::waitWritable(STDERR_FILENO))
        std::cerr << "\r\x1b[K" << std::flush;
    m_isDirty = false;
}

} // namespace boardctl
